#include "containers/TAIndexB.h"

#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <cstdint>

#include "containers/SortedArray.h"
#include "foundation/Tracing.h"

namespace {

constexpr int kFirstCapacity = 1000;

std::int32_t WordAt(const void* key, std::size_t word) {
  std::int32_t value;
  memcpy(&value, static_cast<const char*>(key) + word * sizeof value, sizeof value);
  return value;
}

// The order of a key against stored keys.
struct ByWords {
  const TAIndexB& index;
  const void* key;

  void Prefetch(const void* stored) const { __builtin_prefetch(stored); }
  int operator()(void* stored) const { return index.compare(key, stored); }
};

}  // namespace

TAIndexB::TAIndexB(int keyWords)
    : keys(nullptr),
      values(nullptr),
      sizeofkey(keyWords),
      count(0),
      capacity(0),
      step(kFirstCapacity),
      _room(0) {
  FATAL(keyWords <= 0, "Unable to create TAIndexB with sizeofkey < 0 ");
  capacity = _room = vor::AllocateArrays(keys, values, kFirstCapacity);
}

TAIndexB::~TAIndexB() {
  Reset();
  free(keys);
  free(values);
}

const void* TAIndexB::Append(const void* key, void* value) {
  if (key == nullptr) return nullptr;
  const vor::SortedPlace place = vor::FindPlaceToAdd(keys, count, ByWords{*this, key});
  if (place.isPresent) return keys[place.position];
  const std::size_t size = static_cast<std::size_t>(sizeofkey) * sizeof(std::int32_t);
  void* copy = malloc(size);
  if (copy == nullptr) return nullptr;
  memcpy(copy, key, size);
  increaseAllocSize();
  vor::InsertAt(*this, place.position, copy, value);
  return copy;
}

int TAIndexB::IsIn(const void* key) const {
  if (key == nullptr) return -1;
  return vor::PositionOrMinusOne(vor::FindPlace(keys, count, ByWords{*this, key}));
}

int TAIndexB::IsIn(const void* key, int) const {
  return IsIn(key);
}

void* TAIndexB::operator[](const void* key) const {
  const int position = IsIn(key);
  return position < 0 ? nullptr : values[position];
}

int TAIndexB::RemovePosition(int position) {
  if (position < 0 || position >= count) return 1;
  free(keys[position]);
  vor::RemoveAt(*this, position);
  return 0;
}

int TAIndexB::Reset() {
  std::for_each(keys, keys + count, free);
  count = 0;
  return 0;
}

int TAIndexB::increaseAllocSize() {
  vor::GrowForOneMore(*this, _room);
  return 0;
}

int TAIndexB::compare(const void* key, void* stored) const {
  for (std::size_t word = 0; word < static_cast<std::size_t>(sizeofkey); ++word) {
    const std::int32_t left = WordAt(key, word);
    const std::int32_t right = WordAt(stored, word);
    if (left != right) return left < right ? 1 : -1;
  }
  return 0;
}
