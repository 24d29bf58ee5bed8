#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <deque>
#include <future>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "containers/VorHashRWMap.h"
#include "containers/VorHashRWMapIteratorRef.h"
#include "containers/VorHashSCMap.h"
#include "containers/VorHashSCMapIterator.h"
#include "containers/VorStringPool.h"
#include "support/InProcess.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

void* Value(std::size_t number) {
  return reinterpret_cast<void*>(number);
}

std::vector<std::string> Keys(VorMapIterator* walk) {
  std::vector<std::string> keys;
  while (walk->next() != 0) keys.emplace_back(walk->getKey());
  return keys;
}

std::vector<std::string> Keys(VorHashSCMap& map) {
  const std::unique_ptr<VorMapIterator> walk(map.getIterator());
  return Keys(walk.get());
}

// The map as one would describe it: chains as they are walked, one byte of a key after the other.
class NaiveMap {
 public:
  NaiveMap(int size, float loadFactor)
      : _chains(static_cast<std::size_t>(size)), _loadFactor(loadFactor) {}

  bool Insert(const std::string& key, void* value) {
    if (Search(key) != nullptr) return false;
    Chain(key).emplace_front(key, value);
    ++_count;
    if (_loadFactor * static_cast<float>(_chains.size()) <= static_cast<float>(_count)) {
      std::vector<std::deque<Pair>> old(2 * _chains.size());
      old.swap(_chains);
      for (const auto& chain : old) {
        for (const Pair& pair : chain) Chain(pair.first).push_front(pair);
      }
    }
    return true;
  }

  void* const* Search(const std::string& key) {
    for (const Pair& pair : Chain(key)) {
      if (pair.first == key) return &pair.second;
    }
    return nullptr;
  }

  void Remove(const std::string& key) {
    _count -= static_cast<int>(
        std::erase_if(Chain(key), [&](const Pair& pair) { return pair.first == key; }));
  }

  void Clear() {
    for (auto& chain : _chains) chain.clear();
    _count = 0;
  }

  int Count() const { return _count; }

  std::vector<std::string> Keys() const {
    std::vector<std::string> keys;
    for (const auto& chain : _chains) {
      for (const Pair& pair : chain) keys.push_back(pair.first);
    }
    return keys;
  }

 private:
  using Pair = std::pair<std::string, void*>;

  std::deque<Pair>& Chain(const std::string& key) {
    std::uint32_t hash = 0;
    for (const char c : key) hash = hash * 31 + static_cast<unsigned char>(c);
    const auto size = static_cast<std::int64_t>(_chains.size());
    const auto place = static_cast<std::int32_t>(hash) % size;
    return _chains[static_cast<std::size_t>(place < 0 ? place + size : place)];
  }

  std::vector<std::deque<Pair>> _chains;
  float _loadFactor;
  int _count = 0;
};

// Texts made of equally many of these pieces have one hash and one length.
constexpr const char* kSameHash[] = {"Aa", "BB", "C#"};

std::string CrowdedKey(std::mt19937& random) {
  std::string key;
  for (int i = 0; i < 5; ++i) key += kSameHash[random() % 3];
  return key;
}

// Few distinct characters, so that keys collide in hash, length and beginning; some key is longer
// than any piece that is evaluated at once.
std::string RandomKey(std::mt19937& random) {
  static const char kCharacters[] = {'a', 'b', 'B', '\xff', '\x80', '/'};
  const std::size_t length = random() % 8 != 0 ? random() % 4 : random() % 70;
  std::string key;
  while (key.size() < length) key += kCharacters[random() % sizeof kCharacters];
  return key;
}

TEST(VorHashSCMap, AgreesWithANaiveMap) {
  struct Shape {
    int size;
    float loadFactor;
    int realSize;
    float realLoadFactor;
    bool pooled;
    bool crowded;
  };
  for (const Shape& shape :
       {Shape{8, 0.75F, 8, 0.75F, false, false}, Shape{3, 0.5F, 8, 0.5F, true, true},
        Shape{30, 1.0F, 30, 0.75F, false, false}, Shape{-1, 0.0F, 8, 0.75F, true, false},
        Shape{17, -2.0F, 17, 0.75F, false, true}, Shape{8, 0.99F, 8, 0.99F, true, false}}) {
    SCOPED_TRACE(shape.size);
    VorStringPool pool;
    VorHashSCMap map(shape.size, shape.loadFactor, shape.pooled ? &pool : nullptr);
    NaiveMap naive(shape.realSize, shape.realLoadFactor);
    std::mt19937 random(static_cast<unsigned>(shape.size));
    for (std::size_t step = 1; step < 20000; ++step) {
      const auto draw = [&] {
        return shape.crowded && random() % 8 != 0 ? CrowdedKey(random) : RandomKey(random);
      };
      const std::string key = draw();
      const auto action = random() % 1000;
      if (action == 0) {
        map.clear();
        naive.Clear();
      } else if (action < (step / 1000 % 2 == 0 ? 700 : 250)) {  // grows, then shrinks
        const char* copy = map.insert(key.c_str(), Value(step));
        ASSERT_EQ(copy != nullptr, naive.Insert(key, Value(step)));
        if (copy != nullptr) {
          ASSERT_EQ(copy, key);
          ASSERT_NE(copy, key.c_str());
        }
      } else {
        map.remove(key.c_str());
        naive.Remove(key);
      }
      const std::string asked = draw();
      void* found = &map;
      void* const* expected = naive.Search(asked);
      ASSERT_EQ(map.search(asked.c_str(), &found), expected != nullptr);
      ASSERT_EQ(found, expected == nullptr ? &map : *expected);
      ASSERT_EQ(map.getSize(), naive.Count());
      if (step % 50 == 0) {
        ASSERT_THAT(Keys(map), ElementsAreArray(naive.Keys()));
      }
    }
    map.remove(nullptr);
    EXPECT_EQ(map.insert(nullptr, &map), nullptr);
    EXPECT_EQ(map.search(naive.Keys().front().c_str(), nullptr), 0);
    EXPECT_EQ(map.getSize(), naive.Count());
  }
}

// Walking the one chain for each key would take minutes.
TEST(VorHashSCMap, HandlesManyKeysOfOneHash) {
  constexpr std::size_t kKeys = 1 << 18;
  std::vector<std::string> keys(kKeys);
  for (std::size_t i = 0; i < kKeys; ++i) {
    for (int bit = 0; bit < 18; ++bit) keys[i] += kSameHash[i >> bit & 1];
  }
  VorHashSCMap map(nullptr);
  for (std::size_t i = 0; i < kKeys; ++i) map.insert(keys[i].c_str(), Value(i));
  EXPECT_EQ(map.insert(keys[1].c_str(), nullptr), nullptr);
  std::size_t found = 0;
  for (std::size_t i = 0; i < kKeys; ++i) {
    void* value = nullptr;
    map.search(keys[i].c_str(), &value);
    found += value == Value(i);
  }
  EXPECT_EQ(found, kKeys);
  for (std::size_t i = 0; i < kKeys; i += 2) map.remove(keys[i].c_str());  // the oldest first
  EXPECT_EQ(map.getSize(), static_cast<int>(kKeys / 2));
}

TEST(VorHashSCMap, CountsAPairWhoseKeyThePoolCannotHold) {
  VorStringPool pool;
  VorHashSCMap map(&pool);
  const std::string key(65532, 'k');
  testing::internal::CaptureStdout();
  EXPECT_EQ(map.insert(key.c_str(), &map), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "# Error : unable to allocate in VorStringPoolAlloc (string too long: 65533)"
            "# Error : unable to create string in VorStringPoolCreate: " +
                key + "# Alloc failed in VorHashSCMap::createNode: unable to strdup()\n");
  void* value = nullptr;
  EXPECT_EQ(map.search(key.c_str(), &value), 0);
  for (const char* other : {"a", "b", "c", "d", "e", "f"}) map.insert(other, &map);
  EXPECT_EQ(map.getSize(), 7);
}

// A sanitizer ends the process before the map does.
TEST(VorHashSCMapDeathTest, ReportsMissingMemoryForBuckets) {
  const auto growAndConstruct = [] {
    dup2(STDERR_FILENO, STDOUT_FILENO);
    const rlimit limit = {1 << 30, 1 << 30};  // bytes
    setrlimit(RLIMIT_AS, &limit);
    VorHashSCMap map(1 << 24, 1e-9F, nullptr);
    map.insert("a", &map);
    map.insert("b", &map);  // grows on, with as many buckets
    map.insert("c", &map);  // not reported again before the pairs have doubled
    std::cout << map.getSize() << " pairs" << std::endl;
    const VorHashSCMap never(INT_MAX, 0.5F, nullptr);
  };
  const std::string message = ": unable to malloc\\(_maxSize \\* sizeof\\(link\\)\\) : ";
  const std::string grow = "# Alloc failed in VorHashSCMap::insert" + message + "268435456\n";
  EXPECT_DEATH(growAndConstruct(),
               "^" + grow + grow + "3 pairs\n# Alloc failed in VorHashSCMap::" + "VorHashSCMap" +
                   message + "17179869176\n|Sanitizer|Failed to mmap");
}

TEST(VorHashSCMap, ExposesItsNodesAndChains) {
  VorHashSCMap map(nullptr);
  VorHashSCMap::node* last = VorHashSCMap::createNode(&map, "last", Value(1), nullptr);
  VorHashSCMap::node* head = VorHashSCMap::createNode(&map, "head", Value(2), last);
  void* value = nullptr;
  EXPECT_EQ(map.searchR(head, "last", &value), 1);
  EXPECT_EQ(value, Value(1));
  char text[] = "own";
  VorHashSCMap::node own = {text, Value(3), head, 0};  // made without createNode
  EXPECT_EQ(map.searchR(&own, "own", &value), 1);
  EXPECT_EQ(value, Value(3));
  for (VorHashSCMap::node* node : {last, head}) VorHashSCMap::addFreeNode(&map, node);
}

TEST(VorHashSCMap, WorksInTheForkedChildOfAThreadedProcess) {
  const auto insertThree = [] {
    VorHashSCMap map(nullptr);
    for (const char* key : {"a", "i", "q"}) map.insert(key, nullptr);  // in one bucket
    return map.getSize();
  };
  std::atomic<bool> isDone{false};
  std::vector<std::future<void>> others(3);
  for (auto& other : others) {
    other = std::async(std::launch::async, [&] {
      while (!isDone) insertThree();
    });
  }
  int inChild = 3;
  for (int i = 0; i < 50 && inChild == 3; ++i) {
    inChild = InProcess([&] {
      alarm(20);  // ends a child that waits for a lock that nobody holds
      return insertThree();
    });
  }
  isDone = true;
  EXPECT_EQ(inChild, 3);
}

TEST(VorHashSCMapIterator, WalksItsRoomWhateverWasInserted) {
  VorHashSCMapIterator walk(2);
  walk.insert("a", Value(1));
  EXPECT_NE(walk.next(), 0);
  EXPECT_EQ(walk.getValue(), Value(1));
  EXPECT_NE(walk.next(), 0);
  EXPECT_EQ(walk.getKey(), nullptr);
  EXPECT_EQ(walk.next(), 0);
  walk.insert("b", Value(2));
  testing::internal::CaptureStdout();
  walk.insert("c", Value(3));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            " VorHashSCMapIterator::insert, _size too small: 2\n");
}

TEST(VorHashRWMap, KeepsItsWalkUntilAChange) {
  VorHashRWMap map(nullptr);
  VorHashRWMapIteratorRef* walk = map.getIteratorRef();
  EXPECT_EQ(walk->next(), 0);
  map.insert("a", nullptr);
  walk = map.getIteratorRef();
  EXPECT_THAT(Keys(walk), ElementsAre("a"));
  EXPECT_EQ(map.getIteratorRef(), walk);  // the same one, rewound
  EXPECT_THAT(Keys(walk), ElementsAre("a"));

  map.insert("b", nullptr);
  EXPECT_THAT(Keys(map.getIteratorRef()), ElementsAre("a", "b"));
  map.remove("a");
  EXPECT_THAT(Keys(map.getIteratorRef()), ElementsAre("b"));
  map.clear();
  EXPECT_THAT(Keys(map.getIteratorRef()), ElementsAre());

  map.insert("c", nullptr);
  EXPECT_THAT(Keys(map.getIteratorRef()), ElementsAre("c"));
  static_cast<VorHashSCMap&>(map).Init(8, 0.75F);
  EXPECT_THAT(Keys(map.getIteratorRef()), ElementsAre());
}

}  // namespace
