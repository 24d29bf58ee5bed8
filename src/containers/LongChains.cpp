#include "containers/LongChains.h"

#include <string.h>

#include <new>
#include <utility>

#include "containers/PositionHints.h"
#include "containers/TextWords.h"

namespace vor {

LongChains::Key::Key(const char* key)
    : tag(PositionHints::TagOf(TextWords(key, strlen(key)))), text(key) {}

bool LongChains::Key::operator<(const Key& other) const {
  return tag != other.tag ? tag < other.tag : strcmp(text, other.text) < 0;
}

// A pair whose key could not be copied is in its chain and cannot be found.
void LongChains::Set(Chain& chain, Node* pair, Node* before) {
  if (pair != nullptr && pair->key != nullptr) chain.insert_or_assign(Key(pair->key), before);
}

void LongChains::Add(std::size_t bucket, Node* head) noexcept {
  try {
    Chain chain;
    Node* before = nullptr;
    for (Node* pair = head; pair != nullptr; before = std::exchange(pair, pair->next)) {
      Set(chain, pair, before);
    }
    _chains.emplace(bucket, std::move(chain));
  } catch (const std::bad_alloc&) {
    Drop(bucket);
  }
}

LongChains::Node* LongChains::Find(std::size_t bucket, Node* head, const char* key) const {
  const Chain& chain = _chains.at(bucket);
  const auto found = chain.find(Key(key));
  if (found == chain.end()) return nullptr;
  return found->second == nullptr ? head : found->second->next;
}

void LongChains::AddFront(std::size_t bucket, Node* head) noexcept {
  try {
    Chain& chain = _chains.at(bucket);
    Set(chain, head, nullptr);
    // The pair that was the head moved to another node.
    Node* const second = head->next;
    Set(chain, second, head);
    Set(chain, second->next, second);
  } catch (const std::bad_alloc&) {
    Drop(bucket);
  }
}

LongChains::Node* LongChains::Remove(std::size_t bucket, Node* head, Node* pair) {
  Chain& chain = _chains.at(bucket);
  const auto entry = chain.find(Key(pair->key));
  Node* const before = entry->second;
  chain.erase(entry);
  Node* const next = pair->next;
  if (before != nullptr) {
    Set(chain, next, before);
  } else if (next != nullptr) {
    Set(chain, next, nullptr);
    Set(chain, next->next, head);
  }
  return before;
}

}  // namespace vor
