#include "containers/TAIndex.h"

#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <new>

#include "containers/PositionHints.h"
#include "containers/SortedArray.h"
#include "containers/TextWords.h"

namespace {

constexpr int kMinStep = 10;

// The order of a text against stored keys.  A bisection narrows the text between two neighbours.
// All keys between them begin with what both share with the text, so comparisons start after that.
class ByText {
 public:
  explicit ByText(const vor::TextWords& text) : _text(text) {}

  int operator()(const char* stored) {
    std::size_t word = Shared();
    const char* bytes = stored + word * sizeof(vor::TextWord);
    vor::TextWord mine = _text[word];
    vor::TextWord other = vor::LoadTextWord(bytes);
    while (mine == other && word < _text.Last()) {
      bytes += sizeof(vor::TextWord);
      mine = _text[++word];
      other = vor::LoadTextWord(bytes);
    }
    (mine < other ? _sharedAfter : _sharedBefore) = word;
    return (mine > other) - (mine < other);
  }

  void Prefetch(const char* stored) const {
    __builtin_prefetch(stored + Shared() * sizeof(vor::TextWord));
  }

 private:
  std::size_t Shared() const { return std::min(_sharedBefore, _sharedAfter); }

  const vor::TextWords& _text;
  std::size_t _sharedBefore = 0;  // words shared with the nearest key known to be before the text
  std::size_t _sharedAfter = 0;   // and with the nearest one after it
};

std::uint32_t TagOf(const char* key) {
  return vor::PositionHints::TagOf(vor::TextWords(key, strlen(key)));
}

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
  if (keys == _inlineKeys) return;
  free(keys);
  free(values);
}

const char* TAIndex::Append(const char* key, void* value) {
  if (key == nullptr) return nullptr;
  const std::size_t length = strlen(key);
  const vor::TextWords text(key, length);
  const vor::SortedPlace place = vor::FindPlaceToAdd(keys, count, ByText(text));
  if (place.isPresent) return keys[place.position];
  char* copy = vor::CopyInWords(key, length);
  if (copy == nullptr) return nullptr;
  increaseAllocSize();
  vor::InsertAt(*this, place.position, copy, value);
  AddHint(text, place.position);
  return copy;
}

int TAIndex::IsIn(const char* key) const {
  return key == nullptr ? -1 : Find(vor::TextWords(key, strlen(key)));
}

int TAIndex::IsIn(const char* key, int length) const {
  if (key == nullptr || length < 0) return -1;
  const std::size_t size = static_cast<std::size_t>(length);
  return strnlen(key, size) == size ? Find(vor::TextWords(key, size)) : -1;
}

void* TAIndex::operator[](const char* key) const {
  const int position = key == nullptr ? -1 : Find(vor::TextWords(key, strlen(key)));
  return position < 0 ? nullptr : values[position];
}

int TAIndex::RemovePosition(int position) {
  if (position < 0 || position >= count) return 1;
  char* key = keys[position];
  if (_hints != nullptr) _hints->Remove(TagOf(key));
  free(key);
  vor::RemoveAt(*this, position);
  return 0;
}

int TAIndex::Reset() {
  std::for_each(keys, keys + count, free);
  _hints.reset();
  count = 0;
  capacity = std::min(capacity, step);
  return 0;
}

int TAIndex::increaseAllocSize() {
  vor::GrowForOneMore(*this, _room, keys == _inlineKeys);
  return 0;
}

int TAIndex::Find(const vor::TextWords& text) const {
  if (_hints == nullptr) return vor::PositionOrMinusOne(vor::FindPlace(keys, count, ByText(text)));
  const std::uint32_t tag = vor::PositionHints::TagOf(text);
  const int hint = _hints->Find(
      tag, [&](int position) { return position < count && ByText(text)(keys[position]) == 0; });
  if (hint != vor::PositionHints::kUnknown) return hint;
  const vor::SortedPlace place = vor::FindPlace(keys, count, ByText(text));
  if (place.isPresent) _hints->Correct(tag, place.position);
  return vor::PositionOrMinusOne(place);
}

void TAIndex::AddHint(const vor::TextWords& key, int position) {
  bool isComplete = true;
  if (_hints != nullptr) {
    isComplete = _hints->Add(vor::PositionHints::TagOf(key), position);
  } else if (count == kInlineSlots) {  // fewer are found as fast by bisection
    _hints.reset(new (std::nothrow) vor::PositionHints);
    isComplete = _hints != nullptr;
    for (int i = 0; i < count && isComplete; ++i) isComplete = _hints->Add(TagOf(keys[i]), i);
  }
  if (!isComplete) _hints.reset();
}
