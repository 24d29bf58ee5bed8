#ifndef VOR_TESTS_FOUNDATION_LISTS_H
#define VOR_TESTS_FOUNDATION_LISTS_H

#include <string>

#include "base/VorListValVorString.h"
#include "containers/TAIndex.h"
#include "foundation/TextUtilities.h"

/// The elements, each followed by '|'.
inline std::string Joined(const VorListValVorString& list) {
  std::string joined;
  for (int i = 1; i <= list.Size(); ++i) joined.append(list[i].View()) += '|';
  return joined;
}
inline std::string Joined(const TAIndex& index) {
  std::string joined;
  for (int i = 0; i < index.count; ++i) joined.append(index.keys[i]) += '|';
  return joined;
}

/// The list of the words of a text.
inline VorListValVorString ListOf(const char* words) {
  VorListValVorString list;
  Split(words, list);
  return list;
}

#endif  // VOR_TESTS_FOUNDATION_LISTS_H
