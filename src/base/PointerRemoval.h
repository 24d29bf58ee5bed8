#ifndef VOR_BASE_POINTERREMOVAL_H
#define VOR_BASE_POINTERREMOVAL_H

namespace vor {

/// Removes the last occurrence of \a pointer from a list of pointers, if there is one.
template <typename List, typename X>
void RemoveFromList(List& list, const X* pointer) {
  for (int i = list.Size(); i > 0; --i) {
    if (list[i] == pointer) return list.RemovePosition(i);
  }
}

}  // namespace vor

#endif  // VOR_BASE_POINTERREMOVAL_H
