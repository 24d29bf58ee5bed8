#include "containers/TAIndexI.h"

#include <stdlib.h>

#include "containers/SortedArray.h"

namespace {

constexpr int kFirstCapacity = 10;

// The order of an int against stored ones.
struct ByNumber {
  int key;

  void Prefetch(int) const {}
  int operator()(int stored) const { return (key > stored) - (key < stored); }
};

}  // namespace

TAIndexI::TAIndexI()
    : keys(nullptr), values(nullptr), count(0), capacity(0), step(kFirstCapacity), _room(0) {
  capacity = _room = vor::AllocateArrays(keys, values, kFirstCapacity);
}

TAIndexI::~TAIndexI() {
  free(keys);
  free(values);
}

int TAIndexI::Append(int key, void* value) {
  const vor::SortedPlace place = vor::FindPlaceToAdd(keys, count, ByNumber{key});
  if (place.isPresent) return key;
  increaseAllocSize();
  vor::InsertAt(*this, place.position, key, value);
  return key;
}

int TAIndexI::IsIn(int key) const {
  return vor::PositionOrMinusOne(vor::FindPlace(keys, count, ByNumber{key}));
}

void* TAIndexI::operator[](int key) const {
  const int position = IsIn(key);
  return position < 0 ? nullptr : values[position];
}

int TAIndexI::RemovePosition(int position) {
  if (position < 0 || position >= count) return 1;
  vor::RemoveAt(*this, position);
  return 0;
}

int TAIndexI::Reset() {
  count = 0;
  return 0;
}

int TAIndexI::increaseAllocSize() {
  vor::GrowForOneMore(*this, _room);
  return 0;
}
