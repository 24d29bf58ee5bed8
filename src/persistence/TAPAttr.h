#ifndef VOR_PERSISTENCE_TAPATTR_H
#define VOR_PERSISTENCE_TAPATTR_H

#include "base/Export.h"
#include "base/NamedLists.h"
#include "base/VorString.h"
#include "filenames/TAFileName.h"

class TAPObject;
class TAPObjectSaveContext;
class TAPPath;

/// The value of an attribute of a TAPObject: an integer, a text, a file name, a list of values, an
/// object, a path, or nothing.
///
/// The getters without argument are for a caller who knows the type; those with an argument give
/// that argument where the type is another.
///
/// Ownership: keeps copies of texts, file names and lists, and holds one reference on an object or
///            a path.  A copy of a value copies and holds likewise.  Each object or path that a
///            getter gives carries one more reference, which the caller releases; a null pointer
///            carries none.
/// Errors:    asking for a type that the value does not have ends the process with FATAL, except
///            where a default is given.  Running out of memory ends the process.
/// Threads:   not synchronised; values that share an object, a path or a file name belong to one
///            thread, as TARefCounter and TAFileName say.
class VOR_API TAPAttr {
 public:
  /// What a value can be.
  enum Type : int {
    NullType = 0,
    StringType = 1,
    FileNameType = 2,
    ObjectType = 3,
    ListType = 4,
    IntegerType = 5,
    PathType = 6
  };

  /// A value of NullType, which look-ups give that find nothing.
  static const TAPAttr Null;

  constexpr TAPAttr() noexcept : _value{}, _type(NullType) {}
  TAPAttr(const TAFileName& name) noexcept;
  /// A null text counts as "".
  TAPAttr(const char* text) noexcept;
  /// Keeps the text up to its first NUL byte.
  TAPAttr(const VorString& text) noexcept;
  TAPAttr(int number) noexcept;
  TAPAttr(const VorListValTAPAttr& list) noexcept;
  TAPAttr(TAPObject* object) noexcept;
  TAPAttr(TAPPath* path) noexcept;

  TAPAttr(const TAPAttr& other) noexcept;
  /// Leaves nothing behind in \a other.
  TAPAttr(TAPAttr&& other) noexcept;
  /// \a other may be this very value or a part of it.
  TAPAttr& operator=(const TAPAttr& other) noexcept;
  TAPAttr& operator=(TAPAttr&& other) noexcept;
  ~TAPAttr();

  /// 1 if the value is of the type with that code (see Type), else 0.
  int IsType(int code) const { return _type == code; }

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

  /// Orders by type code, then integers by value, objects and paths by address.  Lists are never
  /// before or behind one another.  A text or file name is before another only where strcmp gives
  /// exactly -1, and behind it only where it gives exactly 1; callers rely on other results
  /// counting as neither.
  bool operator<(const TAPAttr& other) const;
  bool operator>(const TAPAttr& other) const;

  /// Writes the value under \a uid, and what it contains under identifiers of its own, to the files
  /// of \a context.  Gives the name of the type in the file of objects: "AttrString",
  /// "AttrFileName", "AttrObject", "AttrList", "AttrInteger", "AttrPath" or "Null".
  VorString SaveToFile(int uid, TAPObjectSaveContext& context) const noexcept;

 private:
  union Value {
    int number;
    char* text;               // by malloc, owned
    TAFileName* name;         // owned
    TAPObject* object;        // one reference held, or null
    VorListValTAPAttr* list;  // owned
    TAPPath* path;            // one reference held, or null
  };

  static Value CopyOf(const TAPAttr& other) noexcept;
  /// Ends the process with \a message unless the value is of type \a code.
  void Require(Type code, const char* message) const;

  Value _value;
  int _type;
};

#endif  // VOR_PERSISTENCE_TAPATTR_H
