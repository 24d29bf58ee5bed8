#include "containers/VorHashSCMap.h"

#include <stdlib.h>
#include <string.h>

#include <climits>
#include <iostream>
#include <mutex>
#include <new>

#include "base/ZeroedMemory.h"
#include "containers/KeyHash.h"
#include "containers/VorHashSCMapIterator.h"
#include "containers/VorStringPool.h"
#include "foundation/Tracing.h"

namespace {

using Node = VorHashSCMap::node;

constexpr int kSmallestSize = 8;
constexpr float kDefaultLoadFactor = 0.75F;
constexpr int kNodesInBlock = 20000;

// What stands for the length in a digest: of keys too long to tell it, and of keys that are null.
constexpr std::uint64_t kLongKey = 0xFFFFFFFEU;
constexpr std::uint64_t kNoKey = 0xFFFFFFFFU;

constinit std::mutex freeNodesMutex;

std::size_t BytesOf(int buckets) {
  return static_cast<std::size_t>(buckets) * (sizeof(Node) + 1);
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

// A key with all that a look-up needs to know of it.
struct Key {
  explicit Key(const char* key) : text(key), length(strlen(key)) {
    const std::uint64_t told = length < kLongKey ? length : kLongKey;
    digest = told << 32 | vor::KeyHash(key, length);
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

Node* Find(const Buckets& buckets, const Key& key) {
  const std::size_t bucket = BucketOf(key.digest, buckets.size);
  Node* head = buckets.table + bucket;
  __builtin_prefetch(head);
  if ((buckets.marks[bucket] & MarkOf(key.digest)) == 0) return nullptr;
  while (head != nullptr && !Equals(*head, key)) head = head->next;
  return head;
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
  clear();  // through its slot: a map that keeps a walk of its own must hear of the change
  free(_table);
  _maxSize = size < kSmallestSize ? kSmallestSize : size;
  _loadFactor = loadFactor > 0.0F && loadFactor < 1.0F ? loadFactor : kDefaultLoadFactor;
  _table = static_cast<node*>(vor::AllocateZeroed(BytesOf(_maxSize)));
  if (_table == nullptr) {
    std::cout << "# Alloc failed in VorHashSCMap::VorHashSCMap: unable to malloc(_maxSize * "
                 "sizeof(link)) : "
              << BytesOf(_maxSize) << std::endl;
    FATAL(1, "VorHashSCMap without buckets");
  }
  _marks = reinterpret_cast<unsigned char*>(_table + _maxSize);
}

int VorHashSCMap::getSize() {
  return _count;
}

int VorHashSCMap::search(const char* key, void** value) {
  if (value == nullptr) return 0;  // callers count on this, also for a key that is present
  const node* found = Find({_table, _marks, _maxSize}, Key(key));
  if (found == nullptr) return 0;
  *value = found->value;
  return 1;
}

int VorHashSCMap::searchR(node* head, const char* key, void** value) {
  if (value == nullptr) return 0;
  for (; head != nullptr; head = head->next) {
    // The chain may be the caller's own, so its digests tell nothing.
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
  if (Find(buckets, text) != nullptr) return nullptr;

  node* spare = nullptr;  // for the pair that the new one takes the place of
  if (_marks[BucketOf(text.digest, _maxSize)] != 0) {
    spare = TakeNode();
    if (spare == nullptr) return nullptr;
  }
  node pair = {CopyOf(key), value, nullptr, text.digest};
  if (pair.key == nullptr) pair.digest |= kNoKey << 32;
  AddFront(buckets, pair, spare);
  ++_count;
  if (_loadFactor * static_cast<float>(_maxSize) <= static_cast<float>(_count)) Grow();
  return pair.key;
}

// Doubles the buckets.  The old ones are walked in order, each pair goes to the front of its new
// chain: that turns the order of those that stay together round, and walks over the map show it.
// The pairs keep their key copies, and each but the first of a chain brings the one node that its
// new chain may need.
void VorHashSCMap::Grow() {
  if (_maxSize > INT_MAX / 2) return;
  const int newSize = 2 * _maxSize;
  auto* table = static_cast<node*>(vor::AllocateZeroed(BytesOf(newSize)));
  if (table == nullptr) {
    std::cout << "# Alloc failed in VorHashSCMap::insert: unable to malloc(_maxSize * "
                 "sizeof(link)) : "
              << BytesOf(newSize) << std::endl;
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
}

void VorHashSCMap::remove(const char* key) {
  if (key == nullptr) return;
  node* found = Find({_table, _marks, _maxSize}, Key(key));
  if (found == nullptr) return;
  const std::size_t bucket = BucketOf(found->digest, _maxSize);
  node& head = _table[bucket];
  --_count;
  if (found == &head) {
    FreeCopy(head.key);
    node* second = head.next;
    if (second == nullptr) {
      _marks[bucket] = 0;
      return;
    }
    head = *second;
    GiveBack(second, second);
  } else {
    node* before = &head;
    while (before->next != found) before = before->next;
    before->next = found->next;
    addFreeNode(this, found);
  }
  unsigned char mark = 0;
  for (const node* pair = &head; pair != nullptr; pair = pair->next) mark |= MarkOf(pair->digest);
  _marks[bucket] = mark;
}

void VorHashSCMap::clear() {
  RemoveAll();
  if (_marks != nullptr) memset(_marks, 0, static_cast<std::size_t>(_maxSize));
}

// Lets go of all pairs; what the table then says of them is wrong.
void VorHashSCMap::RemoveAll() {
  if (_count == 0) return;
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
  auto* walk = new (std::nothrow) VorHashSCMapIterator(_count);
  if (walk == nullptr) return nullptr;
  if (walk->GetRoom() < _count) {
    delete walk;
    return nullptr;
  }
  FillIterator(*walk);
  return walk;
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
  const std::lock_guard<std::mutex> guard(freeNodesMutex);
  AddBlock();
}

VorHashSCMap::node* VorHashSCMap::TakeNode() {
  const std::lock_guard<std::mutex> guard(freeNodesMutex);
  if (firstFree == nullptr) AddBlock();
  node* taken = firstFree;
  if (taken != nullptr) firstFree = taken->next;
  return taken;
}

// Nodes from first to last, linked, whose keys and values are somebody else's by now.
void VorHashSCMap::GiveBack(node* first, node* last) {
  for (node* n = first; n != last; n = n->next) n->key = nullptr, n->value = nullptr;
  last->key = nullptr;
  last->value = nullptr;
  const std::lock_guard<std::mutex> guard(freeNodesMutex);
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
