#include "socket/ReceivedWords.h"

#include <utility>

namespace vor {

void ReceivedWords::Define(int id, std::string word) {
  if (Find(id) != nullptr) return;
  if (id >= 0 && static_cast<std::size_t>(id) == _inOrder.size()) {
    _inOrder.push_back(std::move(word));
  } else {
    _outside.emplace(id, std::move(word));
  }
}

const std::string* ReceivedWords::Find(int id) const {
  if (id >= 0 && static_cast<std::size_t>(id) < _inOrder.size()) {
    return &_inOrder[static_cast<std::size_t>(id)];
  }
  const auto found = _outside.find(id);
  return found == _outside.end() ? nullptr : &found->second;
}

void ReceivedWords::Clear() {
  _inOrder.clear();
  _outside.clear();
}

}  // namespace vor
