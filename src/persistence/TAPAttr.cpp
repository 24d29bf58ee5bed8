#include "persistence/TAPAttr.h"

#include <stdlib.h>
#include <string.h>

#include <cstdint>
#include <utility>

#include "foundation/Tracing.h"
#include "persistence/Held.h"
#include "persistence/SaveLine.h"
#include "persistence/TAPObject.h"
#include "persistence/TAPObjectSaveContext.h"
#include "persistence/TAPPath.h"

namespace {

char* CopyText(const char* text) {
  char* const copy = strdup(text == nullptr ? "" : text);
  FATAL(copy == nullptr, "TAPAttr : out of memory");
  return copy;
}

// The order of texts depends on the very number that strcmp of the C library returns.  A compiler
// may replace a call by code that returns another number of the same sign; it cannot replace this
// one, which it does not see through.
int (*const volatile compareTexts)(const char*, const char*) = strcmp;

std::uintptr_t AddressOf(const void* pointer) {
  return reinterpret_cast<std::uintptr_t>(pointer);
}

void SavePath(const TAPPath* path, int uid, TAPObjectSaveContext& context) {
  vor::SaveLine line(uid);
  for (int i = 1; path != nullptr && i <= path->Size(); ++i) {
    const vor::Held<TAPName> name((*path)[i]);
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
  std::fstream& file = *context.GetStream("AttrList");  // made for an empty list too
  for (int i = 1; i <= list.Size(); ++i) {
    const int elementUid = context.GetNewUID();
    (vor::SaveLine(uid) << i << ":" << elementUid).WriteTo(file);
    list[i].SaveToFile(elementUid, context);
  }
}

}  // namespace

constinit const TAPAttr TAPAttr::Null;

TAPAttr::TAPAttr(const TAFileName& name) noexcept
    : _value{.name = new TAFileName(name)}, _type(FileNameType) {}

TAPAttr::TAPAttr(const char* text) noexcept : _value{.text = CopyText(text)}, _type(StringType) {}

TAPAttr::TAPAttr(const VorString& text) noexcept : TAPAttr(text.CastToCharPtr()) {}

TAPAttr::TAPAttr(int number) noexcept : _value{.number = number}, _type(IntegerType) {}

TAPAttr::TAPAttr(const VorListValTAPAttr& list) noexcept
    : _value{.list = new VorListValTAPAttr(list)}, _type(ListType) {}

TAPAttr::TAPAttr(TAPObject* object) noexcept
    : _value{.object = vor::AddRefTo(object)}, _type(ObjectType) {}

TAPAttr::TAPAttr(TAPPath* path) noexcept : _value{.path = vor::AddRefTo(path)}, _type(PathType) {}

TAPAttr::TAPAttr(const TAPAttr& other) noexcept : _value(CopyOf(other)), _type(other._type) {}

TAPAttr::TAPAttr(TAPAttr&& other) noexcept
    : _value(other._value), _type(std::exchange(other._type, NullType)) {}

TAPAttr& TAPAttr::operator=(const TAPAttr& other) noexcept {
  return *this = TAPAttr(other);
}

TAPAttr& TAPAttr::operator=(TAPAttr&& other) noexcept {
  TAPAttr taken(std::move(other));  // before the old value goes, of which it may be a part
  std::swap(_value, taken._value);
  std::swap(_type, taken._type);
  return *this;
}

TAPAttr::~TAPAttr() {
  switch (_type) {
    case StringType:
      free(_value.text);
      break;
    case FileNameType:
      delete _value.name;
      break;
    case ObjectType:
      vor::ReleaseRefOn(_value.object);
      break;
    case ListType:
      delete _value.list;
      break;
    case PathType:
      vor::ReleaseRefOn(_value.path);
      break;
    default:
      break;
  }
}

TAPAttr::Value TAPAttr::CopyOf(const TAPAttr& other) noexcept {
  switch (other._type) {
    case StringType:
      return {.text = CopyText(other._value.text)};
    case FileNameType:
      return {.name = new TAFileName(*other._value.name)};
    case ObjectType:
      return {.object = vor::AddRefTo(other._value.object)};
    case ListType:
      return {.list = new VorListValTAPAttr(*other._value.list)};
    case PathType:
      return {.path = vor::AddRefTo(other._value.path)};
    default:
      return other._value;
  }
}

void TAPAttr::Require(Type code, const char* message) const {
  FATAL(_type != code, message);
}

int TAPAttr::GetInteger() const {
  Require(IntegerType, "TAPAttr::GetInteger : bad type for get");
  return _value.number;
}

int TAPAttr::GetInteger(int otherwise) const {
  return _type == IntegerType ? _value.number : otherwise;
}

VorString TAPAttr::GetString() const {
  Require(StringType, "TAPAttr::GetString : bad type for get");
  return _value.text;
}

VorString TAPAttr::GetString(const char* otherwise) const {
  return _type == StringType ? _value.text : otherwise;
}

TAFileName TAPAttr::GetFileName() const {
  Require(FileNameType, "TAPAttr::GetFileName : bad type for get");
  return *_value.name;
}

TAFileName TAPAttr::GetFileName(TAFileName otherwise) const {
  return _type == FileNameType ? *_value.name : otherwise;
}

TAPObject* TAPAttr::GetObject() const {
  Require(ObjectType, "TAPAttr::GetObject : bad type for get");
  return vor::AddRefTo(_value.object);
}

TAPObject* TAPAttr::GetObject(TAPObject* otherwise) const {
  return vor::AddRefTo(_type == ObjectType ? _value.object : otherwise);
}

TAPPath* TAPAttr::GetPath() const {
  Require(PathType, "TAPAttr::GetPath : bad type for get");
  return vor::AddRefTo(_value.path);
}

TAPPath* TAPAttr::GetPath(TAPPath* otherwise) const {
  return vor::AddRefTo(_type == PathType ? _value.path : otherwise);
}

VorListValTAPAttr& TAPAttr::GetList() {
  Require(ListType, "TAPAttr::GetList : bad type for get");
  return *_value.list;
}

VorListValTAPAttr& TAPAttr::GetList(VorListValTAPAttr& otherwise) {
  return _type == ListType ? *_value.list : otherwise;
}

bool TAPAttr::operator!=(const TAPAttr& other) const {
  if (_type != other._type) return true;
  switch (_type) {
    case StringType:
      return strcmp(_value.text, other._value.text) != 0;
    case FileNameType:
      return strcmp(*_value.name, *other._value.name) != 0;
    case ObjectType:
      return _value.object != other._value.object;
    case ListType:
      return _value.list->Size() != other._value.list->Size();
    case IntegerType:
      return _value.number != other._value.number;
    case PathType:
      return _value.path != other._value.path;
    default:
      return false;
  }
}

bool TAPAttr::operator<(const TAPAttr& other) const {
  if (_type != other._type) return _type < other._type;
  switch (_type) {
    case StringType:
      return compareTexts(_value.text, other._value.text) == -1;
    case FileNameType:
      return compareTexts(*_value.name, *other._value.name) == -1;
    case ObjectType:
      return AddressOf(_value.object) < AddressOf(other._value.object);
    case IntegerType:
      return _value.number < other._value.number;
    case PathType:
      return AddressOf(_value.path) < AddressOf(other._value.path);
    default:
      return false;
  }
}

bool TAPAttr::operator>(const TAPAttr& other) const {
  if (_type != other._type) return _type > other._type;
  switch (_type) {
    case StringType:
      return compareTexts(_value.text, other._value.text) == 1;
    case FileNameType:
      return compareTexts(*_value.name, *other._value.name) == 1;
    default:
      return other < *this;  // the mirror
  }
}

VorString TAPAttr::SaveToFile(int uid, TAPObjectSaveContext& context) const noexcept {
  switch (_type) {
    case StringType:
      (vor::SaveLine(uid) << _value.text).WriteTo(*context.GetStream("AttrString"));
      return "AttrString";
    case FileNameType:
      (vor::SaveLine(uid) << static_cast<const char*>(*_value.name))
          .WriteTo(*context.GetStream("AttrFileName"));
      return "AttrFileName";
    case ObjectType:
      SaveObject(_value.object, uid, context);
      return "AttrObject";
    case ListType:
      SaveList(*_value.list, uid, context);
      return "AttrList";
    case IntegerType:
      (vor::SaveLine(uid) << _value.number).WriteTo(*context.GetStream("AttrInteger"));
      return "AttrInteger";
    case PathType:
      SavePath(_value.path, uid, context);
      return "AttrPath";
    default:
      return "Null";
  }
}
