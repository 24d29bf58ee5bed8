#ifndef VOR_BASE_MERGESORT_H
#define VOR_BASE_MERGESORT_H

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace vor {

/// Sorts \a items stably with \a compare, which returns a negative, zero or positive int.
///
/// A natural merge sort: it merges the runs that are already in order, so sorted input costs one
/// comparison per element.  The caller's comparison may contradict itself.  Every loop is bounded
/// by counts, so the worst result is a wrong order.
template <typename T, typename Compare>
void MergeSort(std::vector<T>& items, Compare compare) {
  const std::size_t size = items.size();
  std::vector<std::size_t> ends;  // one after the last element of each run
  for (std::size_t i = 1; i <= size; ++i) {
    if (i == size || compare(items[i - 1], items[i]) > 0) ends.push_back(i);
  }
  std::vector<T> merged(ends.size() > 1 ? size : 0);
  while (ends.size() > 1) {
    std::vector<std::size_t> mergedEnds;
    std::size_t begin = 0;
    for (std::size_t run = 0; run < ends.size(); run += 2) {
      const std::size_t middle = ends[run];
      const std::size_t end = run + 1 < ends.size() ? ends[run + 1] : middle;
      std::size_t left = begin;
      std::size_t right = middle;
      for (std::size_t out = begin; out < end; ++out) {
        const bool takeRight =
            left == middle || (right < end && compare(items[left], items[right]) > 0);
        merged[out] = std::move(items[takeRight ? right++ : left++]);
      }
      mergedEnds.push_back(end);
      begin = end;
    }
    items.swap(merged);
    ends.swap(mergedEnds);
  }
}

}  // namespace vor

#endif  // VOR_BASE_MERGESORT_H
