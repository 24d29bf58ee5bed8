#include "persistence/TAPAttr.h"

#include <string.h>

#include <memory>
#include <utility>
#include <vector>

#include "foundation/Tracing.h"
#include "persistence/SaveLine.h"
#include "persistence/TAPObject.h"
#include "persistence/TAPObjectSaveContext.h"
#include "persistence/TAPPath.h"

namespace {

// How many nested objects and lists are released recursively.
constexpr int kDeepestRelease = 64;

// The order of texts depends on the exact number that strcmp of the C library returns.  A compiler
// may replace a direct call by code that returns another number of the same sign.  It cannot
// replace this call.
int (*const volatile compareTexts)(const char*, const char*) = strcmp;

void SavePath(const TAPPath* path, int uid, TAPObjectSaveContext& context) {
  vor::SaveLine line(uid);
  for (int i = 1; path != nullptr && i <= path->Size(); ++i) {
    const auto name = vor::Reference<TAPName>::Adopt((*path)[i]);
    line << name->GetName() << ";";
  }
  line.WriteTo(*context.GetStream("AttrPath"));
}

void SaveObject(TAPObject* object, int uid, TAPObjectSaveContext& context) {
  std::fstream& file = *context.GetStream("AttrObject");
  const int objectUid = context.GetNewUID();
  (vor::SaveLine(uid) << objectUid).WriteTo(file);
  if (object != nullptr) object->SaveToFile(objectUid, context);
}

void SaveList(const VorListValTAPAttr& list, int uid, TAPObjectSaveContext& context) {
  std::fstream& file = *context.GetStream("AttrList");  // opened even for an empty list
  for (int i = 1; i <= list.Size(); ++i) {
    const int elementUid = context.GetNewUID();
    (vor::SaveLine(uid) << i << ":" << elementUid).WriteTo(file);
    list[i].SaveToFile(elementUid, context);
  }
}

}  // namespace

struct TAPAttr::Nothing {};

constexpr TAPAttr::TAPAttr(Nothing) noexcept {}

constinit const TAPAttr TAPAttr::Null{Nothing{}};

TAPAttr::TAPAttr() noexcept = default;

TAPAttr::TAPAttr(const TAFileName& name) noexcept
    : _value(vor::Owned(std::make_unique<TAFileName>(name))) {}

TAPAttr::TAPAttr(const char* text) noexcept
    : _value(vor::Owned(std::make_unique<VorString>(text))) {}

TAPAttr::TAPAttr(const VorString& text) noexcept : TAPAttr(text.CastToCharPtr()) {}

TAPAttr::TAPAttr(int number) noexcept : _value(number) {}

TAPAttr::TAPAttr(const VorListValTAPAttr& list) noexcept
    : _value(vor::Owned(std::make_unique<VorListValTAPAttr>(list))) {}

TAPAttr::TAPAttr(TAPObject* object) noexcept : _value(vor::Reference<TAPObject>::To(object)) {}

TAPAttr::TAPAttr(TAPPath* path) noexcept : _value(vor::Reference<TAPPath>::To(path)) {}

TAPAttr::TAPAttr(const TAPAttr& other) noexcept = default;

TAPAttr::TAPAttr(TAPAttr&& other) noexcept
    : _value(std::exchange(other._value, std::monostate())) {}

TAPAttr& TAPAttr::operator=(const TAPAttr& other) noexcept {
  return *this = TAPAttr(other);
}

TAPAttr& TAPAttr::operator=(TAPAttr&& other) noexcept {
  TAPAttr taken(std::move(other));  // other may be a part of the old value, which is destroyed
  std::swap(_value, taken._value);
  return *this;
}

TAPAttr::~TAPAttr() {
  if (IsType(ObjectType) != 0 || IsType(ListType) != 0) ReleaseNested();
}

// An object or a list may hold others to any depth.  Those that are too deep for recursion are
// queued and released after the outermost one.
void TAPAttr::ReleaseNested() {
  thread_local constinit int depth = 0;
  thread_local constinit std::vector<Value>* waiting = nullptr;
  if (depth == kDeepestRelease) {
    waiting->push_back(std::exchange(_value, std::monostate()));
    return;
  }
  std::vector<Value> own;
  if (depth == 0) waiting = &own;
  ++depth;
  _value = std::monostate();
  while (!own.empty()) {
    const Value next = std::move(own.back());
    own.pop_back();
  }
  --depth;
}

void TAPAttr::Require(Type code, const char* message) const {
  FATAL(IsType(code) == 0, message);
}

int TAPAttr::GetInteger() const {
  Require(IntegerType, "TAPAttr::GetInteger : bad type for get");
  return std::get<IntegerType>(_value);
}

int TAPAttr::GetInteger(int otherwise) const {
  return IsType(IntegerType) != 0 ? std::get<IntegerType>(_value) : otherwise;
}

VorString TAPAttr::GetString() const {
  Require(StringType, "TAPAttr::GetString : bad type for get");
  return *std::get<StringType>(_value);
}

VorString TAPAttr::GetString(const char* otherwise) const {
  return IsType(StringType) != 0 ? *std::get<StringType>(_value) : VorString(otherwise);
}

TAFileName TAPAttr::GetFileName() const {
  Require(FileNameType, "TAPAttr::GetFileName : bad type for get");
  return *std::get<FileNameType>(_value);
}

TAFileName TAPAttr::GetFileName(TAFileName otherwise) const {
  return IsType(FileNameType) != 0 ? *std::get<FileNameType>(_value) : otherwise;
}

TAPObject* TAPAttr::GetObject() const {
  Require(ObjectType, "TAPAttr::GetObject : bad type for get");
  return GetObject(nullptr);
}

TAPObject* TAPAttr::GetObject(TAPObject* otherwise) const {
  const bool isObject = IsType(ObjectType) != 0;
  TAPObject* const object = isObject ? std::get<ObjectType>(_value).Get() : otherwise;
  return vor::Reference<TAPObject>::To(object).Leave();
}

TAPPath* TAPAttr::GetPath() const {
  Require(PathType, "TAPAttr::GetPath : bad type for get");
  return GetPath(nullptr);
}

TAPPath* TAPAttr::GetPath(TAPPath* otherwise) const {
  TAPPath* const path = IsType(PathType) != 0 ? std::get<PathType>(_value).Get() : otherwise;
  return vor::Reference<TAPPath>::To(path).Leave();
}

VorListValTAPAttr& TAPAttr::GetList() {
  Require(ListType, "TAPAttr::GetList : bad type for get");
  return *std::get<ListType>(_value);
}

VorListValTAPAttr& TAPAttr::GetList(VorListValTAPAttr& otherwise) {
  return IsType(ListType) != 0 ? *std::get<ListType>(_value) : otherwise;
}

int TAPAttr::Add(const TAPAttr& value) {
  switch (_value.index()) {
    case ListType:
      std::get<ListType>(_value)->Append(value);
      return 0;
    case StringType:
      *std::get<StringType>(_value) += value.GetString();
      return 0;
    case IntegerType:
      _value = static_cast<int>(static_cast<unsigned>(GetInteger()) +
                                static_cast<unsigned>(value.GetInteger()));
      return 0;
    default:
      return 1;
  }
}

const char* TAPAttr::Text() const {
  return IsType(StringType) != 0 ? std::get<StringType>(_value)->CastToCharPtr()
                                 : static_cast<const char*>(*std::get<FileNameType>(_value));
}

std::uintptr_t TAPAttr::Address() const {
  return IsType(ObjectType) != 0
             ? reinterpret_cast<std::uintptr_t>(std::get<ObjectType>(_value).Get())
             : reinterpret_cast<std::uintptr_t>(std::get<PathType>(_value).Get());
}

bool TAPAttr::operator!=(const TAPAttr& other) const {
  if (_value.index() != other._value.index()) return true;
  switch (_value.index()) {
    case StringType:
    case FileNameType:
      return strcmp(Text(), other.Text()) != 0;
    case ObjectType:
    case PathType:
      return Address() != other.Address();
    case ListType:
      return std::get<ListType>(_value)->Size() != std::get<ListType>(other._value)->Size();
    case IntegerType:
      return std::get<IntegerType>(_value) != std::get<IntegerType>(other._value);
    default:
      return false;
  }
}

bool TAPAttr::operator<(const TAPAttr& other) const {
  if (_value.index() != other._value.index()) return _value.index() < other._value.index();
  switch (_value.index()) {
    case StringType:
    case FileNameType:
      return compareTexts(Text(), other.Text()) == -1;
    case ObjectType:
    case PathType:
      return Address() < other.Address();
    case IntegerType:
      return std::get<IntegerType>(_value) < std::get<IntegerType>(other._value);
    default:
      return false;
  }
}

bool TAPAttr::operator>(const TAPAttr& other) const {
  const bool isText = IsType(StringType) != 0 || IsType(FileNameType) != 0;
  if (!isText || _value.index() != other._value.index()) return other < *this;
  return compareTexts(Text(), other.Text()) == 1;
}

VorString TAPAttr::SaveToFile(int uid, TAPObjectSaveContext& context) const noexcept {
  switch (_value.index()) {
    case StringType:
      (vor::SaveLine(uid) << Text()).WriteTo(*context.GetStream("AttrString"));
      return "AttrString";
    case FileNameType:
      (vor::SaveLine(uid) << Text()).WriteTo(*context.GetStream("AttrFileName"));
      return "AttrFileName";
    case ObjectType:
      SaveObject(std::get<ObjectType>(_value).Get(), uid, context);
      return "AttrObject";
    case ListType:
      SaveList(*std::get<ListType>(_value), uid, context);
      return "AttrList";
    case IntegerType:
      (vor::SaveLine(uid) << std::get<IntegerType>(_value))
          .WriteTo(*context.GetStream("AttrInteger"));
      return "AttrInteger";
    case PathType:
      SavePath(std::get<PathType>(_value).Get(), uid, context);
      return "AttrPath";
    default:
      return "Null";
  }
}
