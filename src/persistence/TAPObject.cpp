#include "persistence/TAPObject.h"

#include <fstream>
#include <memory>
#include <utility>

#include "foundation/Tracing.h"
#include "persistence/Owners.h"
#include "persistence/SaveLine.h"
#include "persistence/TAPObjectSaveContext.h"

namespace {

const TAPAttr* ValueAt(const TAIndex& attributes, int position) {
  return position < 0 ? nullptr : static_cast<const TAPAttr*>(attributes.values[position]);
}

// Stores \a value under \a name and returns the value that it replaces, or null.
std::unique_ptr<TAPAttr> Store(TAIndex& attributes, const char* name, TAPAttr&& value) {
  auto stored = std::make_unique<TAPAttr>(std::move(value));
  const int position = attributes.IsIn(name);
  if (position >= 0) {
    void*& slot = attributes.values[position];
    return std::unique_ptr<TAPAttr>(static_cast<TAPAttr*>(std::exchange(slot, stored.release())));
  }
  const char* const key = attributes.Append(name, stored.release());
  FATAL(key == nullptr, "TAPObject::SetAttribute failed, memory allocation failed");
  return nullptr;
}

// The path of the attribute \a name of an object whose path is \a parent, which may be null.
vor::Reference<TAPPath> PathOf(const TAPPath* parent, const char* name) {
  const auto step = vor::Reference<TAPName>::Adopt(new TAPName(name));
  return vor::Reference<TAPPath>::Adopt(parent == nullptr ? new TAPPath(step.Get())
                                                          : new TAPPath(parent, step.Get()));
}

}  // namespace

TAPObject::~TAPObject() {
  for (int i = 0; i < _attributes.count; ++i) delete ValueAt(_attributes, i);
}

void TAPObject::SetPath(TAPPath* path) {
  _path = vor::Reference<TAPPath>::To(path);
}

TAPPath* TAPObject::GetPath() const {
  return vor::Reference<TAPPath>(_path).Leave();
}

const TAPAttr* TAPObject::Find(const char* name) const {
  return ValueAt(_attributes, _attributes.IsIn(name));
}

int TAPObject::HasAttribute(const char* name) const {
  return Find(name) != nullptr;
}

int TAPObject::HasAttribute(const char* name, int length) const {
  return ValueAt(_attributes, _attributes.IsIn(name, length)) != nullptr;
}

int TAPObject::RemoveAttribute(const char* name) {
  const int position = _attributes.IsIn(name);
  if (position < 0) return 1;
  const std::unique_ptr<const TAPAttr> removed(ValueAt(_attributes, position));
  return _attributes.RemovePosition(position);
}

void TAPObject::SetAttribute(const char* name, TAPAttr value) noexcept {
  if (name == nullptr) return;
  const auto child = vor::Reference<TAPObject>::Adopt(value.GetObject(nullptr));
  // The old value is kept until after the last use of the name, which may belong to it.
  const std::unique_ptr<const TAPAttr> replaced = Store(_attributes, name, std::move(value));
  if (child.Get() != nullptr) child->SetPath(PathOf(_path.Get(), name).Get());
}

TAPAttr TAPObject::GetAttribute(const char* name) const {
  const TAPAttr* const value = Find(name);
  return value == nullptr ? TAPAttr::Null : *value;
}

int TAPObject::AppendToAttribute(const char* name, TAPAttr value) noexcept {
  if (name == nullptr) return 1;
  if (HasAttribute(name) == 0) SetAttribute(name, VorListValTAPAttr());
  return static_cast<TAPAttr*>(_attributes[name])->Add(value);
}

int TAPObject::GetFirstAttributePosition() const {
  return _attributes.count > 0 ? 1 : 0;
}

TAPAttr TAPObject::GetNextAttribute(int& position) const {
  const char* unused;
  return GetNextAttribute(position, unused);
}

TAPAttr TAPObject::GetNextAttribute(int& position, const char*& name) const {
  name = nullptr;
  const int current = std::exchange(position, 0);
  if (current < 1 || current > _attributes.count) return TAPAttr::Null;
  if (current < _attributes.count) position = current + 1;
  name = _attributes.keys[current - 1];
  const TAPAttr* const value = ValueAt(_attributes, current - 1);
  return value == nullptr ? TAPAttr::Null : *value;
}

TAPObject* TAPObject::GetObject(TAPPath* path) {
  if (path == nullptr || path->Size() == 0) return nullptr;
  auto current = vor::Reference<TAPObject>::To(this);
  for (int i = 1; i <= path->Size(); ++i) {
    const auto name = vor::Reference<TAPName>::Adopt((*path)[i]);
    const TAPAttr* const value = current->Find(name->GetName());
    auto next =
        vor::Reference<TAPObject>::Adopt(value == nullptr ? nullptr : value->GetObject(nullptr));
    if (next.Get() == nullptr) return nullptr;
    current = std::move(next);
  }
  current.Leave();  // adds the reference of the walk, see the header
  return nullptr;
}

int TAPObject::SaveToFile(TAFileName directory) const noexcept {
  TAPObjectSaveContext context(directory);
  const int uid = context.GetNewUID();
  return SaveToFile(uid, context);
}

int TAPObject::SaveToFile(int uid, TAPObjectSaveContext& context) const noexcept {
  std::fstream& file = *context.GetStream("Objects");  // opened even if there are no attributes
  for (int i = 0; i < _attributes.count; ++i) {
    const int valueUid = context.GetNewUID();
    const TAPAttr* const value = ValueAt(_attributes, i);
    const VorString type =
        (value == nullptr ? TAPAttr::Null : *value).SaveToFile(valueUid, context);
    (vor::SaveLine(uid) << _attributes.keys[i] << ":" << type.View() << ":" << valueUid)
        .WriteTo(file);
  }
  return 0;
}
