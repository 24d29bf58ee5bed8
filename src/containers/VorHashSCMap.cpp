#include "containers/VorHashSCMap.h"

#include <stdlib.h>
#include <string.h>

#include <climits>
#include <iostream>
#include <mutex>
#include <new>

#include "base/ForkSafeLock.h"
#include "base/ZeroedMemory.h"
#include "containers/KeyHash.h"
#include "containers/LongChains.h"
#include "containers/VorHashSCMapIterator.h"
#include "containers/VorStringPool.h"
#include "foundation/Tracing.h"

// Buckets.  A bucket is a node in the table itself.  It holds the first pair of its chain, so most
// look-ups read two places in memory, the bucket and the key.  Further pairs are in nodes of the
// free list, linked from the bucket.  A new pair takes the place in the table, and the pair that
// was there moves to a node: nodes move, key copies never do.
//
// Digests.  A node holds the hash and the length of its key in one number, so that keys are
// compared byte by byte only if they are probably equal, and a larger table is filled without
// reading the keys.
//
// Marks.  A Bloom filter of 8 bits a bucket: bit b is set if a key of the chain has the number b.
// The marks are stored after the table, in the same memory.  Most absent keys are rejected without
// reading the table.  A mark of 0 means an empty bucket, whose node in the table has no meaning.
//
// Free nodes.  One list serves all maps of the process, because a map may be filled on one thread
// and destroyed on another.  It grows by blocks that are never freed.  Its lock is a leaf that
// forks take, so a child finds the list whole.
//
// Growth.  When count >= load factor x buckets, the buckets double.  Old buckets are walked in
// order, each chain from its head, and each pair goes to the front of its new chain.  That order is
// visible in walks, and callers have recorded it, so no change may alter it.
//
// Long chains.  Keys with one hash stay together however many buckets there are.  A chain of
// kLongChain pairs and more gets a side index (LongChains), made by the insertion that walked over
// so many pairs and again after each growth.  Look-ups walk the first pairs and then search the
// index; a chain that becomes short loses it.  Unless keys are chosen to collide, no chain comes
// near that length, and the index costs only a counter.

namespace {

using Node = VorHashSCMap::node;
using vor::LongChains;

constexpr int kSmallestSize = 8;
constexpr float kDefaultLoadFactor = 0.75F;
constexpr int kNodesInBlock = 20000;
constexpr int kLongChain = 16;  // pairs

// In place of the length in a digest: of keys that are too long for it, and of keys that are null.
constexpr std::uint64_t kLongKey = 0xFFFFFFFEU;
constexpr std::uint64_t kNoKey = 0xFFFFFFFFU;

constinit vor::ForkSafeMutex freeNodesMutex(vor::ForkStage::kLeaf);
const vor::ForkRegistration registration(freeNodesMutex);

std::size_t BytesOf(int buckets) {
  return static_cast<std::size_t>(buckets) * (sizeof(Node) + 1);
}

void ReportNoMemoryFor(int buckets, const char* where) {
  std::cout << "# Alloc failed in VorHashSCMap::" << where
            << ": unable to malloc(_maxSize * sizeof(link)) : "
            << static_cast<std::size_t>(buckets) * sizeof(Node*) << std::endl;
}

std::size_t BucketOf(std::uint64_t digest, int buckets) {
  const auto hash = static_cast<std::int32_t>(static_cast<std::uint32_t>(digest));
  if ((buckets & (buckets - 1)) == 0) return static_cast<std::size_t>(hash & (buckets - 1));
  const int remainder = hash % buckets;
  return static_cast<std::size_t>(remainder < 0 ? remainder + buckets : remainder);
}

// The bit of a bucket's mark that stands for the number of a key, which is independent of its
// bucket.
unsigned char MarkOf(std::uint64_t digest) {
  return static_cast<unsigned char>(1U << (static_cast<std::uint32_t>(digest) * 0x9E3779B1U >> 29));
}

// A key with all that a look-up needs of it.
struct Key {
  explicit Key(const char* key) : text(key), length(strlen(key)) {
    const std::uint64_t known = length < kLongKey ? length : kLongKey;
    digest = known << 32 | vor::KeyHash(key, length);
  }

  const char* text;
  std::size_t length;
  std::uint64_t digest;
};

// The buckets of a map, or those that it grows to.
struct Buckets {
  Node* table;
  unsigned char* marks;
  int size;
};

bool Equals(const Node& pair, const Key& key) {
  if (pair.digest != key.digest) return false;
  if (key.length >= kLongKey) return strcmp(pair.key, key.text) == 0;
  return vor::IsSameText(pair.key, key.text, key.length);
}

// The pair of a key, and whether the look-up has walked over a long chain.
struct Found {
  Node* pair;
  bool isLong;
};

// The result of a look-up that has walked over the first pairs of a chain, up to \a rest, without a
// match.
[[gnu::noinline]] Found FindInLong(const Buckets& buckets, const LongChains* index, const Key& key,
                                   Node* rest) {
  const std::size_t bucket = BucketOf(key.digest, buckets.size);
  if (index != nullptr && index->Has(bucket)) {
    return {index->Find(bucket, buckets.table + bucket, key.text), true};
  }
  while (rest != nullptr && !Equals(*rest, key)) rest = rest->next;
  return {rest, true};
}

Found Find(const Buckets& buckets, const LongChains* index, const Key& key) {
  const std::size_t bucket = BucketOf(key.digest, buckets.size);
  Node* pair = buckets.table + bucket;
  __builtin_prefetch(pair);
  if ((buckets.marks[bucket] & MarkOf(key.digest)) == 0) return {nullptr, false};
  for (int left = kLongChain; left > 0; --left) {
    if (Equals(*pair, key)) return {pair, false};
    pair = pair->next;
    if (pair == nullptr) return {nullptr, left == 1};
  }
  return FindInLong(buckets, index, key, pair);
}

bool IsLong(const Node* pair) {
  int length = 0;
  while (pair != nullptr && length < kLongChain) ++length, pair = pair->next;
  return length == kLongChain;
}

// Puts a pair in front of its chain.  The pair that stood in the table moves to the spare node; an
// empty bucket needs none.
void AddFront(const Buckets& buckets, const Node& pair, Node* spare) {
  const std::size_t bucket = BucketOf(pair.digest, buckets.size);
  Node& head = buckets.table[bucket];
  Node* next = nullptr;
  if (buckets.marks[bucket] != 0) {
    *spare = head;
    next = spare;
  }
  head = pair;
  head.next = next;
  buckets.marks[bucket] |= MarkOf(pair.digest);
}

}  // namespace

VorHashSCMap::node* VorHashSCMap::firstFree = nullptr;

VorHashSCMap::VorHashSCMap(VorStringPool* pool) : _pool(pool) {
  Init(kSmallestSize, kDefaultLoadFactor);
}

VorHashSCMap::VorHashSCMap(int size, float loadFactor, VorStringPool* pool) : _pool(pool) {
  Init(size, loadFactor);
}

VorHashSCMap::~VorHashSCMap() {
  RemoveAll();
  free(_table);
}

void VorHashSCMap::Init(int size, float loadFactor) {
  clear();  // virtual: a map that keeps a walk must discard it
  free(_table);
  _maxSize = size < kSmallestSize ? kSmallestSize : size;
  _loadFactor = loadFactor > 0.0F && loadFactor < 1.0F ? loadFactor : kDefaultLoadFactor;
  _table = static_cast<node*>(vor::AllocateZeroed(BytesOf(_maxSize)));
  if (_table == nullptr) {
    ReportNoMemoryFor(_maxSize, "VorHashSCMap");
    FATAL(1, "VorHashSCMap without buckets");
  }
  _marks = reinterpret_cast<unsigned char*>(_table + _maxSize);
}

int VorHashSCMap::getSize() {
  return _count;
}

int VorHashSCMap::search(const char* key, void** value) {
  if (value == nullptr) return 0;  // callers count on this, also for a key that is present
  const node* found = Find({_table, _marks, _maxSize}, _longChains.get(), Key(key)).pair;
  if (found == nullptr) return 0;
  *value = found->value;
  return 1;
}

int VorHashSCMap::searchR(node* head, const char* key, void** value) {
  if (value == nullptr) return 0;
  for (; head != nullptr; head = head->next) {
    // The chain may be the caller's own, so its digests may be wrong.
    if (head->key == nullptr || strcmp(head->key, key) != 0) continue;
    *value = head->value;
    return 1;
  }
  return 0;
}

const char* VorHashSCMap::insert(const char* key, void* value) {
  if (key == nullptr) return nullptr;
  const Key text(key);
  const Buckets buckets = {_table, _marks, _maxSize};
  const Found found = Find(buckets, _longChains.get(), text);
  if (found.pair != nullptr) return nullptr;

  const std::size_t bucket = BucketOf(text.digest, _maxSize);
  node* spare = nullptr;  // for the pair that the new one displaces
  if (_marks[bucket] != 0) {
    spare = TakeNode();
    if (spare == nullptr) return nullptr;
  }
  node pair = {CopyOf(key), value, nullptr, text.digest};
  if (pair.key == nullptr) pair.digest |= kNoKey << 32;
  AddFront(buckets, pair, spare);
  if (found.isLong || _longChains != nullptr) IndexFront(bucket, found.isLong);
  ++_count;
  if (_loadFactor * static_cast<float>(_maxSize) <= static_cast<float>(_count) &&
      _count >= _growthPause) {
    Grow();
  }
  return pair.key;
}

// Keeps the side index after an insertion.
void VorHashSCMap::IndexFront(std::size_t bucket, bool isLong) {
  if (_longChains == nullptr) _longChains.reset(new (std::nothrow) LongChains);
  if (_longChains == nullptr) return;
  if (_longChains->Has(bucket)) {
    _longChains->AddFront(bucket, _table + bucket);
  } else if (isLong) {
    _longChains->Add(bucket, _table + bucket);
  }
}

// Doubles the buckets.  Each pair but the first of a chain brings the one node that its new chain
// may need.
void VorHashSCMap::Grow() {
  if (_maxSize > INT_MAX / 2) return;
  const int newSize = 2 * _maxSize;
  auto* table = static_cast<node*>(vor::AllocateZeroed(BytesOf(newSize)));
  if (table == nullptr) {
    ReportNoMemoryFor(newSize, "insert");
    _growthPause = _count > INT_MAX / 2 ? INT_MAX : 2 * _count;
    return;
  }
  const Buckets grown = {table, reinterpret_cast<unsigned char*>(table + newSize), newSize};
  node* unused = nullptr;  // nodes that no chain needs any more
  node* lastUnused = nullptr;
  for (int i = 0; i < _maxSize; ++i) {
    if (_marks[i] == 0) continue;
    node* next = _table[i].next;
    AddFront(grown, _table[i], nullptr);
    while (next != nullptr) {
      node* current = next;
      next = current->next;
      const node pair = *current;
      const bool needed = grown.marks[BucketOf(pair.digest, newSize)] != 0;
      AddFront(grown, pair, current);
      if (needed) continue;
      current->next = unused;
      unused = current;
      if (lastUnused == nullptr) lastUnused = current;
    }
  }
  if (unused != nullptr) GiveBack(unused, lastUnused);
  free(_table);
  _table = grown.table;
  _marks = grown.marks;
  _maxSize = newSize;
  if (_longChains == nullptr) return;
  // Only a chain that was long can be long now.  Finding these chains costs less than recording
  // them.
  *_longChains = LongChains();
  for (int i = 0; i < _maxSize; ++i) {
    if (_marks[i] != 0 && IsLong(_table + i)) {
      _longChains->Add(static_cast<std::size_t>(i), _table + i);
    }
  }
}

void VorHashSCMap::remove(const char* key) {
  if (key == nullptr) return;
  node* found = Find({_table, _marks, _maxSize}, _longChains.get(), Key(key)).pair;
  if (found == nullptr) return;
  const std::size_t bucket = BucketOf(found->digest, _maxSize);
  node& head = _table[bucket];
  node* before = &head;
  const bool isIndexed = _longChains != nullptr && _longChains->Has(bucket);
  if (isIndexed) {
    before = _longChains->Remove(bucket, &head, found);
  } else if (found != &head) {
    while (before->next != found) before = before->next;
  }
  --_count;
  if (found != &head) {
    before->next = found->next;
    addFreeNode(this, found);
  } else {
    FreeCopy(head.key);
    node* second = head.next;
    if (second == nullptr) {
      _marks[bucket] = 0;
      return;
    }
    head = *second;
    GiveBack(second, second);
  }
  if (isIndexed) {
    if (_longChains->Length(bucket) > kLongChain / 2) return;  // superfluous bits are harmless
    _longChains->Drop(bucket);
  }
  unsigned char mark = 0;
  for (const node* pair = &head; pair != nullptr; pair = pair->next) mark |= MarkOf(pair->digest);
  _marks[bucket] = mark;
}

void VorHashSCMap::clear() {
  RemoveAll();
  if (_marks != nullptr) memset(_marks, 0, static_cast<std::size_t>(_maxSize));
  _growthPause = 0;
}

// Frees all pairs.  The table and the marks must not be read before they are cleared.
void VorHashSCMap::RemoveAll() {
  if (_count == 0) return;
  _longChains.reset();
  node* first = nullptr;
  node* last = nullptr;
  for (int i = 0; i < _maxSize; ++i) {
    if (_marks[i] == 0) continue;
    FreeCopy(_table[i].key);
    for (node* pair = _table[i].next; pair != nullptr;) {
      node* next = pair->next;
      FreeCopy(pair->key);
      pair->next = first;
      first = pair;
      if (last == nullptr) last = pair;
      pair = next;
    }
  }
  if (first != nullptr) GiveBack(first, last);
  _count = 0;
}

VorMapIterator* VorHashSCMap::getIterator() {
  std::unique_ptr<VorHashSCMapIterator> walk(new (std::nothrow) VorHashSCMapIterator(_count));
  if (walk == nullptr || walk->GetRoom() < _count) return nullptr;
  FillIterator(*walk);
  return walk.release();
}

void VorHashSCMap::FillIterator(VorMapIterator& walk) const {
  for (int i = 0; i < _maxSize; ++i) {
    if (_marks[i] == 0) continue;
    for (const node* pair = _table + i; pair != nullptr; pair = pair->next) {
      walk.insert(pair->key, pair->value);
    }
  }
}

char* VorHashSCMap::CopyOf(const char* key) const {
  char* copy = _pool == nullptr ? strdup(key) : _pool->create(key);
  if (copy == nullptr) {
    std::cout << "# Alloc failed in VorHashSCMap::createNode: unable to strdup()" << std::endl;
  }
  return copy;
}

void VorHashSCMap::FreeCopy(char* key) const {
  if (_pool == nullptr) free(key);
}

// The caller holds the mutex of the free nodes.
void VorHashSCMap::AddBlock() {
  auto* block = new (std::nothrow) node[kNodesInBlock]();
  if (block == nullptr) {
    std::cout << "# Alloc failed in VorHashSCMap::createBlocOfFreeNode: unable to create new node["
              << kNodesInBlock << "]" << std::endl;
    return;
  }
  for (int k = 0; k + 1 < kNodesInBlock; ++k) block[k].next = block + k + 1;
  block[kNodesInBlock - 1].next = firstFree;
  firstFree = block;
}

void VorHashSCMap::createBlocOfFreeNode() {
  const std::lock_guard guard(freeNodesMutex);
  AddBlock();
}

VorHashSCMap::node* VorHashSCMap::TakeNode() {
  const std::lock_guard guard(freeNodesMutex);
  if (firstFree == nullptr) AddBlock();
  node* taken = firstFree;
  if (taken != nullptr) firstFree = taken->next;
  return taken;
}

// Adds the linked nodes from first to last, which no longer own their keys, to the free ones.
void VorHashSCMap::GiveBack(node* first, node* last) {
  for (node* n = first; n != last; n = n->next) n->key = nullptr, n->value = nullptr;
  last->key = nullptr;
  last->value = nullptr;
  const std::lock_guard guard(freeNodesMutex);
  last->next = firstFree;
  firstFree = first;
}

VorHashSCMap::node* VorHashSCMap::createNode(VorHashSCMap* map, const char* key, void* value,
                                             node* next) {
  node* made = TakeNode();
  if (made == nullptr) return nullptr;
  *made = {map->CopyOf(key), value, next, Key(key).digest};
  if (made->key == nullptr) made->digest |= kNoKey << 32;
  return made;
}

void VorHashSCMap::addFreeNode(VorHashSCMap* map, node* n) {
  if (n == nullptr) return;
  map->FreeCopy(n->key);
  GiveBack(n, n);
}
