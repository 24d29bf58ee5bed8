#ifndef VOR_BASE_VORLISTVALVORSTRING_H
#define VOR_BASE_VORLISTVALVORSTRING_H

#include <vector>

#include "base/Export.h"
#include "base/VorCollec.h"
#include "base/VorString.h"

/// A list of strings.
///
/// Positions are 1-based: 1 to Size().  A reference to an element is valid until the list changes.
///
/// Ownership: keeps copies.
/// Errors:    a position outside the list is a bug of the caller: a message on standard error,
///            then abort.  Running out of memory ends the process.
/// Threads:   distinct lists are independent; one list must not be changed by one thread while
///            another uses it.
class VOR_API VorListValVorString : public VorCollecRoot {
 public:
  VorListValVorString() = default;

  void Append(const VorString& value) noexcept { _values.push_back(value); }
  void Append(VorString&& value) noexcept { _values.push_back(std::move(value)); }
  /// Appends all elements of \a other, which may be this list.
  void Append(const VorListValVorString& other) noexcept;

  /// Inserts \a value behind \a position; position 0 inserts at the front.
  void InsertAfter(int position, const VorString& value) noexcept;
  /// Inserts \a value at \a position; position Size() + 1 appends.
  void InsertBefore(int position, const VorString& value) noexcept;

  /// The position of the first element equal to \a value at or after \a start; 0 when absent.
  int Locate(const VorString& value, int start = 1) const;

  /// Sorts with a comparison that gives a negative, zero or positive int.  Equal elements keep
  /// their order; a comparison that contradicts itself gives some order, never an access out of
  /// bounds.
  void QuickSort(int (*compare)(VorString* left, VorString* right)) noexcept;

  /// Empties the list; \a handling says what becomes of its storage.
  void RemoveAll(VorCollec::MemoryHandling handling) noexcept;
  void RemovePosition(int position);

  int Size() const;

  VorString& operator[](int position);
  const VorString& operator[](int position) const;

 private:
  void Insert(long long position, const VorString& value) noexcept;

  std::vector<VorString> _values;
};

#endif  // VOR_BASE_VORLISTVALVORSTRING_H
