#ifndef VOR_BASE_LISTSEARCH_H
#define VOR_BASE_LISTSEARCH_H

namespace vor {

/// Removes \a pointer, where it stands last, from a list of pointers, if it is there.
template <typename List, typename X>
void RemoveFromList(List& list, const X* pointer) {
  for (int i = list.Size(); i > 0; --i) {
    if (list[i] == pointer) return list.RemovePosition(i);
  }
}

}  // namespace vor

#endif  // VOR_BASE_LISTSEARCH_H
