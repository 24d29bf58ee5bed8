#include "containers/TAComponent.h"

#include <memory>

#include "base/VorListValVorString.h"
#include "base/VorMap.h"
#include "containers/VorHashRWMapIteratorRef.h"
#include "foundation/TextUtilities.h"
#include "foundation/Tracing.h"

namespace {

constexpr int kBuckets = 30;
constexpr float kLoadFactor = 0.75F;

}  // namespace

TAComponent::TAComponent() : _map(kBuckets, kLoadFactor, nullptr) {}

TAComponent::~TAComponent() = default;

void TAComponent::SetName(VorString name) {
  _name = std::move(name);
}

const VorString& TAComponent::GetName() const {
  return _name;
}

int TAComponent::Insert(const char* key, void* value) {
  if (key == nullptr || IsIn(key) == 1) return 1;
  _map.insert(key, value);
  return 0;
}

int TAComponent::Insert(const VorString& key, void* value) {
  return Insert(static_cast<const char*>(key), value);
}

void TAComponent::Remove(const char* key) {
  _map.remove(key);
}

void TAComponent::Remove(const VorString& key) {
  Remove(static_cast<const char*>(key));
}

void TAComponent::Clear() {
  _map.clear();
}

int TAComponent::IsIn(const char* key) {
  void* value = nullptr;
  return key == nullptr ? 0 : _map.search(key, &value);
}

int TAComponent::IsIn(const VorString& key) {
  return IsIn(static_cast<const char*>(key));
}

void* TAComponent::GetValue(const char* key) {
  void* value = nullptr;
  if (key != nullptr) _map.search(key, &value);
  return value;
}

void* TAComponent::GetValue(const VorString& key) {
  return GetValue(static_cast<const char*>(key));
}

int TAComponent::GetSize() {
  return _map.getSize();
}

VorMapIterator* TAComponent::GetIterator() {
  return _map.getIterator();
}

VorHashRWMapIteratorRef* TAComponent::GetIteratorRef() {
  return _map.getIteratorRef();
}

int TAComponent::GetList(VorListValVorString& keys) {
  keys.RemoveAll(VorCollec::KeepMemory);
  const std::unique_ptr<VorMapIterator> walk(_map.getIterator());
  while (walk != nullptr && walk->next() != 0) keys.Append(VorString(walk->getKey()));
  keys.QuickSort(CompareTAStrings);
  return keys.Size();
}

void TAComponent::DumpKeys() {
  const std::unique_ptr<VorMapIterator> walk(_map.getIterator());
  while (walk != nullptr && walk->next() != 0) Trace(walk->getKey(), 0);
}
