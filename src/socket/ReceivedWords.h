#ifndef VOR_SOCKET_RECEIVEDWORDS_H
#define VOR_SOCKET_RECEIVEDWORDS_H

#include <map>
#include <string>
#include <vector>

namespace vor {

/// The words that the peer of a connection has defined, by identifier.
///
/// A peer numbers its words from 0 on, and these are found by position.  Whatever else arrives is
/// kept in a tree, so that no choice of identifiers makes the dictionary slow.
class ReceivedWords {
 public:
  /// Keeps \a word under \a id; the first word that was defined under it stays.
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
