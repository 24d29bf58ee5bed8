#ifndef VOR_SOCKET_RECEIVEDWORDS_H
#define VOR_SOCKET_RECEIVEDWORDS_H

#include <map>
#include <string>
#include <vector>

namespace vor {

/// The words that the peer of a connection has defined, by identifier.
///
/// A peer numbers its words from 0 on, and these are found by position.  Other identifiers are kept
/// in a tree, so a hostile choice of identifiers does not make look-ups slow.
class ReceivedWords {
 public:
  /// Keeps \a word under \a id, unless a word was defined under it before.
  void Define(int id, std::string word);

  /// The word of \a id; null if it was never defined.
  const std::string* Find(int id) const;

  void Clear();

 private:
  std::vector<std::string> _inOrder;    // 0 and up without a gap
  std::map<int, std::string> _outside;  // the others
};

}  // namespace vor

#endif  // VOR_SOCKET_RECEIVEDWORDS_H
