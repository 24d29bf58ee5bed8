#ifndef VOR_PERSISTENCE_TAPATTR_H
#define VOR_PERSISTENCE_TAPATTR_H

#include <concepts>
#include <cstdint>
#include <limits>
#include <variant>

#include "../base/Export.h"
#include "../base/VorListVal.h"
#include "../base/VorString.h"
#include "../filenames/TAFileName.h"
#include "Owners.h"

class TAPObject;
class TAPObjectSaveContext;
class VorListValTAPAttr;
class TAPPath;

namespace vor {
/// A number type with values that no int can hold: those would be cut silently.
template <typename X>
concept BeyondInt = std::floating_point<X> ||
    (std::integral<X>&& std::numeric_limits<X>::digits > std::numeric_limits<int>::digits);
}  // namespace vor

/// The value of an attribute of a TAPObject: an integer, a text, a file name, a list of values, an
/// object, a path, or nothing.
///
/// Each getter is for one type.  For a value of another type, a getter with an argument returns
/// that argument, and a getter without one ends the process.
///
/// Ownership: keeps copies of texts, file names and lists, and holds one reference on an object or
///            a path.  A copy of a value does the same.  Each object or path that a getter returns
///            carries one more reference, which the caller releases; a null pointer carries none.
/// Errors:    a getter without an argument ends the process with FATAL if the value is of another
///            type.  Running out of memory ends the process.
/// Limits:    lists may be nested to any depth, but copying one takes about 100 bytes of stack for
///            each level; for saving see TAPObjectSaveContext.
/// Threads:   not synchronised; values that share an object, a path or a file name belong to one
///            thread, as TARefCounter and TAFileName describe.
class VOR_API TAPAttr {
 public:
  /// The types of a value.
  enum Type : int {
    NullType = 0,
    StringType = 1,
    FileNameType = 2,
    ObjectType = 3,
    ListType = 4,
    IntegerType = 5,
    PathType = 6
  };

  /// A value of NullType; look-ups that find nothing return it.
  static const TAPAttr Null;

  TAPAttr() noexcept;
  TAPAttr(const TAFileName& name) noexcept;
  /// A null text counts as "".
  TAPAttr(const char* text) noexcept;
  /// Keeps the text up to its first NUL byte.
  TAPAttr(const VorString& text) noexcept;
  TAPAttr(int number) noexcept;
  template <vor::BeyondInt Number>
  TAPAttr(Number) = delete;  // cast the number to int if its value fits, else pass it as a text
  TAPAttr(const VorListValTAPAttr& list) noexcept;
  TAPAttr(TAPObject* object) noexcept;
  TAPAttr(TAPPath* path) noexcept;

  TAPAttr(const TAPAttr& other) noexcept;
  /// \a other becomes a value of NullType.
  TAPAttr(TAPAttr&& other) noexcept;
  /// \a other may be this very value or a part of it.
  TAPAttr& operator=(const TAPAttr& other) noexcept;
  TAPAttr& operator=(TAPAttr&& other) noexcept;
  ~TAPAttr();

  /// 1 if the value is of the type with that code (see Type), else 0.
  int IsType(int code) const { return static_cast<int>(_value.index()) == code; }

  int GetInteger() const;
  int GetInteger(int otherwise) const;
  VorString GetString() const;
  VorString GetString(const char* otherwise) const;
  TAFileName GetFileName() const;
  TAFileName GetFileName(TAFileName otherwise) const;
  TAPObject* GetObject() const;
  TAPObject* GetObject(TAPObject* otherwise) const;
  TAPPath* GetPath() const;
  TAPPath* GetPath(TAPPath* otherwise) const;
  /// The list itself, for reading and changing; valid until the value is changed or destroyed.
  VorListValTAPAttr& GetList();
  VorListValTAPAttr& GetList(VorListValTAPAttr& otherwise);

  /// Whether type or value differ.  Objects and paths are compared by identity.  Lists differ by
  /// their sizes only: callers rely on lists of one size being equal whatever they hold.
  bool operator!=(const TAPAttr& other) const;
  bool operator==(const TAPAttr& other) const { return !(*this != other); }

  /// Order by type code, then integers by value, objects and paths by address.  No list is less or
  /// greater than another.  A text or file name is less than another only if strcmp returns exactly
  /// -1, and greater only if it returns exactly 1; callers rely on all other results being neither.
  bool operator<(const TAPAttr& other) const;
  bool operator>(const TAPAttr& other) const;

  /// Writes the value under \a uid, and what it contains under new identifiers, to the files of
  /// \a context.  Returns the name of the type in "Objects.txt": "AttrString", "AttrFileName",
  /// "AttrObject", "AttrList", "AttrInteger", "AttrPath" or "Null".
  VorString SaveToFile(int uid, TAPObjectSaveContext& context) const noexcept;

 private:
  friend class TAPObject;

  // In the order of the type codes.
  using Value = std::variant<std::monostate, vor::Owned<VorString>, vor::Owned<TAFileName>,
                             vor::Reference<TAPObject>, vor::Owned<VorListValTAPAttr>, int,
                             vor::Reference<TAPPath>>;

  struct Nothing;
  constexpr explicit TAPAttr(Nothing) noexcept;

  void ReleaseNested();
  /// Ends the process with \a message unless the value is of type \a code.
  void Require(Type code, const char* message) const;
  /// Implements TAPObject::AppendToAttribute for an existing value.
  int Add(const TAPAttr& value);

  /// The characters of a text or file name.
  const char* Text() const;
  /// The address of an object or path, for comparisons.
  std::uintptr_t Address() const;

  Value _value;
};

/// A list of values, which it copies and owns.
class VOR_API VorListValTAPAttr : public VorListVal<TAPAttr> {
 public:
  using VorListVal::VorListVal;
};

#endif  // VOR_PERSISTENCE_TAPATTR_H
