#ifndef VOR_BASE_VORLISTVALVORSTRING_H
#define VOR_BASE_VORLISTVALVORSTRING_H

#include <initializer_list>
#include <vector>

#include "Export.h"
#include "VorCollec.h"
#include "VorString.h"

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
  VorListValVorString() noexcept = default;
  VorListValVorString(std::initializer_list<VorString> values) noexcept : _values(values) {}
  VorListValVorString(const VorListValVorString& other) noexcept = default;
  VorListValVorString(VorListValVorString&& other) noexcept = default;
  VorListValVorString& operator=(const VorListValVorString& other) noexcept = default;
  VorListValVorString& operator=(VorListValVorString&& other) noexcept = default;

  void Append(const VorString& value) noexcept { _values.push_back(value); }
  void Append(VorString&& value) noexcept { _values.push_back(std::move(value)); }
  /// Appends all elements of \a other, which may be this list.
  void Append(const VorListValVorString& other) noexcept;

  /// Inserts \a value after \a position; position 0 inserts at the front.
  void InsertAfter(int position, const VorString& value) noexcept;
  /// Inserts \a value at \a position; position Size() + 1 appends.
  void InsertBefore(int position, const VorString& value) noexcept;

  /// The position of the first element equal to \a value at or after \a start; 0 if there is none.
  int Locate(const VorString& value, int start = 1) const;

  /// Sorts with a comparison that returns a negative, zero or positive int; see VorRawCollPV.
  void QuickSort(int (*compare)(VorString* left, VorString* right)) noexcept;

  /// Empties the list; \a handling selects whether its storage is freed.
  void RemoveAll(VorCollec::MemoryHandling handling) noexcept;
  /// Removes one element; later ones move down by one.
  void RemovePosition(int position);

  int Size() const;

  VorString& operator[](int position);
  const VorString& operator[](int position) const;

 private:
  void Insert(long long position, const VorString& value) noexcept;

  std::vector<VorString> _values;
};

#endif  // VOR_BASE_VORLISTVALVORSTRING_H
