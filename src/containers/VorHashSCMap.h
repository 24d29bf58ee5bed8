#ifndef VOR_CONTAINERS_VORHASHSCMAP_H
#define VOR_CONTAINERS_VORHASHSCMAP_H

#include <cstddef>
#include <cstdint>

#include "base/Export.h"
#include "base/VorMap.h"

class VorStringPool;

/// A hash map from NUL-terminated keys to untyped pointers.
///
/// Keys that share a bucket form a chain, the newest in front.  When the number of pairs reaches
/// load factor x buckets, the buckets double: the old ones are walked in order and each pair goes
/// to the front of its new bucket.  A walk follows the buckets and their chains, so its order is
/// the same in all maps that were made alike and changed alike, in the same order.
///
/// Ownership: copies the keys, into the pool if it was given one, which must outlive it; never owns
///            the values.  A key copy lives until its pair is removed, in a pool until the pool is
///            cleared, which only an empty map survives.
/// Errors:    null results as told below; a message on standard output tells of a pair or buckets
///            that there was no memory for.  Without memory to double, the buckets stay as many.
/// Threads:   distinct maps are independent, whoever uses them; one map must not be changed by one
///            thread while another uses it.  Maps that share a pool count as one.
class VOR_API VorHashSCMap : public VorMap {
 public:
  /// A pair in its chain.
  struct node {
    char* key;             // the map's copy; null if there was no memory for it
    void* value;           // not owned
    node* next;            // the next one in its chain, or in the list of free nodes
    std::uint64_t digest;  // hash and length of the key, compared before the key itself
  };

  /// 8 buckets, load factor 0.75; the keys are copied into \a pool, or by malloc if it is null.
  explicit VorHashSCMap(VorStringPool* pool);

  /// \a size buckets, 8 at least.  A \a loadFactor that is not between 0 and 1 counts as 0.75.  The
  /// process ends with FATAL if there is no memory for the buckets.
  VorHashSCMap(int size, float loadFactor, VorStringPool* pool);

  ~VorHashSCMap() override;

  /// Removes all pairs, by clear, and makes the map anew, as the constructor does.
  void Init(int size, float loadFactor);

  /// The number of pairs.
  int getSize() override;

  /// 1, with the value of \a key in *value, if the key is present; else 0.  With a null \a value
  /// the answer is 0, also for a key that is present.  The key must not be null.
  int search(const char* key, void** value) override;

  /// Adds a pair in front of its chain and gives the map's copy of the key.  Null, with nothing
  /// changed, if \a key is null or already present, or if there is no memory for another node.  A
  /// key that cannot be copied (no memory, too long for the pool) also gives null, but its pair
  /// counts, as one with a null key that walks show and nothing finds.
  const char* insert(const char* key, void* value) override;

  /// Removes the pair of \a key, if there is one; a null key is ignored.
  void remove(const char* key) override;

  /// Removes all pairs; the buckets stay as many as they are.
  void clear() override;

  /// A walk over all pairs, a VorHashSCMapIterator that the caller deletes; null without memory.
  VorMapIterator* getIterator() override;

  // The pieces that a map is made of.  Nodes come from a list of free nodes that all maps of the
  // process share; it is guarded, grows by 20,000 nodes at once and is never given back.

  /// Adds a block of nodes to the free ones.
  static void createBlocOfFreeNode();
  /// A node with a copy of \a key as \a map makes it, linked to \a next.  Null without memory for
  /// the node; its key is null without memory for the copy.
  static node* createNode(VorHashSCMap* map, const char* key, void* value, node* next);
  /// Gives a node of \a map back to the free ones, and its key copy with it; null is ignored.
  static void addFreeNode(VorHashSCMap* map, node* n);
  /// Looks \a key up in the chain that starts at \a head: 1, with its value in *value, or 0, also
  /// where \a head or \a value is null.  The digests of the nodes do not matter.
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
  void RemoveAll();

  static node* firstFree;  // head of the free nodes of the process

  // The first pair of each bucket stands in the table itself, so that most look-ups visit two
  // places: the bucket and the key.  The marks tell of most keys that they are absent without a
  // look at the table: bit b of a bucket's mark is set when a key of its chain has the number b.
  node* _table = nullptr;
  unsigned char* _marks = nullptr;  // behind the table, in the same memory; 0 for an empty bucket
  int _count = 0;
  int _maxSize = 0;  // buckets, 8 at least
  float _loadFactor = 0;
  VorStringPool* _pool;  // may be null
};

#endif  // VOR_CONTAINERS_VORHASHSCMAP_H
