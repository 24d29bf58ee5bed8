#ifndef VOR_BASE_VORLISTVALVORUNICODESTRING_H
#define VOR_BASE_VORLISTVALVORUNICODESTRING_H

#include <vector>

#include "Export.h"
#include "VorCollec.h"
#include "VorUnicodeString.h"

/// A list of Unicode strings.
///
/// Positions are 1-based: 1 to Size().  A reference to an element is valid until the list changes.
///
/// Ownership: keeps copies.
/// Errors:    a position outside the list is a bug of the caller: a message on standard error,
///            then abort.  Running out of memory ends the process.
/// Threads:   distinct lists are independent; one list must not be changed by one thread while
///            another uses it.
class VOR_API VorListValVorUnicodeString : public VorCollecRoot {
 public:
  VorListValVorUnicodeString() noexcept = default;
  VorListValVorUnicodeString(const VorListValVorUnicodeString& other) noexcept = default;
  VorListValVorUnicodeString(VorListValVorUnicodeString&& other) noexcept = default;
  VorListValVorUnicodeString& operator=(const VorListValVorUnicodeString& other) noexcept = default;
  VorListValVorUnicodeString& operator=(VorListValVorUnicodeString&& other) noexcept = default;

  void Append(const VorUnicodeString& value) noexcept { _values.push_back(value); }

  /// Empties the list; \a handling selects whether its storage is freed.
  void RemoveAll(VorCollec::MemoryHandling handling) noexcept;

  int Size() const;

  VorUnicodeString& operator[](int position);
  const VorUnicodeString& operator[](int position) const;

 private:
  std::vector<VorUnicodeString> _values;
};

#endif  // VOR_BASE_VORLISTVALVORUNICODESTRING_H
