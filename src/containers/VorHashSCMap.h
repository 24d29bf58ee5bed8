#ifndef VOR_CONTAINERS_VORHASHSCMAP_H
#define VOR_CONTAINERS_VORHASHSCMAP_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "../base/Export.h"
#include "../base/VorMap.h"

class VorStringPool;

namespace vor {
class LongChains;
}  // namespace vor

/// A hash map from NUL-terminated keys to untyped pointers.
///
/// Keys that share a bucket form a chain, the newest in front.  When the number of pairs reaches
/// load factor x buckets, the buckets double: the old ones are walked in order and each pair goes
/// to the front of its new bucket.  A walk follows the buckets and their chains, so its order is
/// the same in all maps that were constructed with the same arguments and changed by the same
/// calls.  Long chains, which arise only from keys with the same hash, are searched in logarithmic
/// time.
///
/// Ownership: copies the keys, into the pool if there is one; never owns the values.  A pool must
///            outlive the map, and must be cleared only while the map is empty.  A key copy lives
///            until its pair is removed; in a pool, until the pool is cleared.
/// Errors:    null results as documented below.  A message on standard output reports a pair or
///            buckets for which there was no memory.  Without memory to double, a map keeps its
///            buckets and tries again when its pairs have doubled.
/// Threads:   distinct maps are independent, and a forked child may use maps at once.  One map must
///            not be changed by one thread while another uses it.  Maps that share a pool count as
///            one.
class VOR_API VorHashSCMap : public VorMap {
 public:
  /// A pair in its chain.
  struct node {
    char* key;             // the map's copy; null if there was no memory for it
    void* value;           // not owned
    node* next;            // the next one in its chain, or in the list of free nodes
    std::uint64_t digest;  // hash and length of the key, compared before the key itself
  };

  /// Makes 8 buckets with load factor 0.75.  Keys are copied into \a pool, or by malloc if it is
  /// null.
  explicit VorHashSCMap(VorStringPool* pool);

  /// Makes \a size buckets, at least 8.  A \a loadFactor that is not between 0 and 1 counts as
  /// 0.75.  The process ends with FATAL if there is no memory for the buckets.
  VorHashSCMap(int size, float loadFactor, VorStringPool* pool);

  ~VorHashSCMap() override;

  /// Removes all pairs, by clear, and makes the map anew, as the constructor does.
  void Init(int size, float loadFactor);

  /// The number of pairs.
  int getSize() override;

  /// Returns 1 and stores the value of \a key in *value if the key is present; else returns 0.  If
  /// \a value is null, returns 0 even for a key that is present.  The key must not be null.
  int search(const char* key, void** value) override;

  /// Adds a pair in front of its chain and returns the map's copy of the key.  Returns null, with
  /// nothing changed, if \a key is null or already present, or if there is no memory for another
  /// node.  If the key cannot be copied (no memory, too long for the pool), the result is null too,
  /// but the pair is added with a null key: it counts, and walks show it, but no look-up finds it.
  const char* insert(const char* key, void* value) override;

  /// Removes the pair of \a key, if there is one; a null key is ignored.
  void remove(const char* key) override;

  /// Removes all pairs; the number of buckets does not change.
  void clear() override;

  /// A walk over all pairs, a VorHashSCMapIterator that the caller deletes; null without memory.
  VorMapIterator* getIterator() override;

  // The parts of a map.  Nodes come from a list of free nodes that all maps of the process share.
  // It has a lock, grows by 20,000 nodes at once and is never freed.

  /// Adds a block of nodes to the free ones.
  static void createBlocOfFreeNode();
  /// A node with a copy of \a key, from the pool of \a map if it has one, linked to \a next.  Null
  /// without memory for the node; its key is null without memory for the copy.
  static node* createNode(VorHashSCMap* map, const char* key, void* value, node* next);
  /// Frees the key copy of a node of \a map and adds the node to the free ones; null is ignored.
  static void addFreeNode(VorHashSCMap* map, node* n);
  /// Searches the chain that starts at \a head for \a key: 1, with its value in *value, or 0.  The
  /// result is also 0 if \a head or \a value is null.  The digests of the nodes are not used.
  int searchR(node* head, const char* key, void** value);

 protected:
  /// Inserts all pairs into \a walk, in order.
  void FillIterator(VorMapIterator& walk) const;

 private:
  static node* TakeNode();
  static void AddBlock();
  static void GiveBack(node* first, node* last);

  char* CopyOf(const char* key) const;
  void FreeCopy(char* key) const;
  void Grow();
  void IndexFront(std::size_t bucket, bool isLong);
  void RemoveAll();

  static node* firstFree;  // head of the free nodes of the process

  node* _table = nullptr;           // the first pair of each bucket
  unsigned char* _marks = nullptr;  // a Bloom filter for each bucket, in the memory of the table
  int _count = 0;
  int _maxSize = 0;  // buckets, at least 8
  float _loadFactor = 0;
  int _growthPause = 0;  // pairs below which growing is not tried again after it failed
  VorStringPool* _pool;  // may be null
  std::unique_ptr<vor::LongChains> _longChains;  // null for most maps
};

#endif  // VOR_CONTAINERS_VORHASHSCMAP_H
