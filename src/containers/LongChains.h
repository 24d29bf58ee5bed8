#ifndef VOR_CONTAINERS_LONGCHAINS_H
#define VOR_CONTAINERS_LONGCHAINS_H

#include <cstddef>
#include <cstdint>
#include <map>

#include "containers/VorHashSCMap.h"

namespace vor {

/// The side index of a hash map: finds keys in the chains that are too long to be walked.
///
/// For each pair of an indexed chain it keeps the node before the pair: it leads to the pair, and a
/// removal needs it.  The map reports each change of an indexed chain.  Look-ups take logarithmic
/// time, whatever the keys are: they are ordered by a number made of the text and then by the text
/// itself, so that no choice of keys makes them slow again.
///
/// Ownership: refers to the key copies of the map and owns none of them.
/// Errors:    a chain for which there is no memory is not indexed, and the map walks it.
/// Threads:   const operations may run in several threads at once while no thread calls another
///            operation.
class LongChains {
 public:
  using Node = VorHashSCMap::node;

  /// Whether the chain of \a bucket is indexed.
  bool Has(std::size_t bucket) const { return _chains.contains(bucket); }

  /// Indexes the chain of \a bucket, which starts at \a head.
  void Add(std::size_t bucket, Node* head) noexcept;
  /// Forgets the chain of \a bucket.
  void Drop(std::size_t bucket) { _chains.erase(bucket); }

  // The chain of the bucket must be indexed.

  /// The pair of \a key in the chain that starts at \a head; null if it is absent.
  Node* Find(std::size_t bucket, Node* head, const char* key) const;

  /// Adds a pair that has become the new \a head.
  void AddFront(std::size_t bucket, Node* head) noexcept;

  /// Removes \a pair; call it before the pair leaves the chain that starts at \a head.  If the pair
  /// is the head itself, the caller must then move the second pair to its node.  Returns the node
  /// before the pair; null for the head.
  Node* Remove(std::size_t bucket, Node* head, Node* pair);

  /// The number of keys in the chain.
  std::size_t Length(std::size_t bucket) const { return _chains.at(bucket).size(); }

 private:
  struct Key {
    explicit Key(const char* key);
    bool operator<(const Key& other) const;

    std::uint32_t tag;
    const char* text;
  };
  using Chain = std::map<Key, Node*>;  // the node before each pair, null for the head

  static void Set(Chain& chain, Node* pair, Node* before);

  std::map<std::size_t, Chain> _chains;  // by bucket
};

}  // namespace vor

#endif  // VOR_CONTAINERS_LONGCHAINS_H
