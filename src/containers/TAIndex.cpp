#include "containers/TAIndex.h"

#include <stdlib.h>
#include <string.h>

#include <algorithm>

#include "containers/SortedArray.h"

namespace {

constexpr int kMinStep = 10;

// The order of a text against stored keys.
struct ByText {
  const char* text;

  int operator()(const char* stored) const { return strcmp(text, stored); }
};

// The same for the first bytes of a text, which hold no NUL.
struct ByFirstBytes {
  const char* text;
  std::size_t length;

  int operator()(const char* stored) const {
    const int sign = strncmp(text, stored, length);
    if (sign != 0) return sign;
    return stored[length] == '\0' ? 0 : -1;
  }
};

}  // namespace

TAIndex::TAIndex() : TAIndex(kMinStep) {}

TAIndex::TAIndex(int growthStep)
    : keys(_inlineKeys),
      values(_inlineValues),
      count(0),
      capacity(kInlineSlots),
      step(std::max(growthStep, kMinStep)),
      _room(kInlineSlots) {}

TAIndex::~TAIndex() {
  Reset();
  if (keys != _inlineKeys) free(keys);
  if (values != _inlineValues) free(values);
}

const char* TAIndex::Append(const char* key, void* value) {
  if (key == nullptr) return nullptr;
  const vor::SortedPlace place = vor::FindPlaceToAdd(keys, count, ByText{key});
  if (place.isPresent) return keys[place.position];
  char* copy = strdup(key);
  if (copy == nullptr) return nullptr;
  increaseAllocSize();
  vor::InsertAt(*this, place.position, copy, value);
  return copy;
}

int TAIndex::IsIn(const char* key) const {
  if (key == nullptr) return -1;
  return vor::PositionOrMinusOne(vor::FindPlace(keys, count, ByText{key}));
}

int TAIndex::IsIn(const char* key, int length) const {
  if (key == nullptr || length < 0) return -1;
  const std::size_t size = static_cast<std::size_t>(length);
  if (strnlen(key, size) < size) return -1;
  return vor::PositionOrMinusOne(vor::FindPlace(keys, count, ByFirstBytes{key, size}));
}

void* TAIndex::operator[](const char* key) const {
  const int position = IsIn(key);
  return position < 0 ? nullptr : values[position];
}

int TAIndex::RemovePosition(int position) {
  if (position < 0 || position >= count) return 1;
  free(keys[position]);
  vor::RemoveAt(*this, position);
  return 0;
}

int TAIndex::Reset() {
  std::for_each(keys, keys + count, free);
  count = 0;
  capacity = std::min(capacity, step);
  return 0;
}

int TAIndex::increaseAllocSize() {
  vor::GrowForOneMore(*this, _room, _inlineKeys, _inlineValues);
  return 0;
}
