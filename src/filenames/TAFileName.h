#ifndef VOR_FILENAMES_TAFILENAME_H
#define VOR_FILENAMES_TAFILENAME_H

#include <compare>
#include <memory>
#include <string_view>

#include "../base/Export.h"
#include "../base/VorListVal.h"
#include "../base/VorString.h"

/// The name of a file or directory.
///
/// A name keeps its text in a normal form.  Fixed rules on the text alone, which never look at the
/// file system, turn backslashes into slashes and fold doubled slashes, "." and ".." steps and one
/// slash at the end (see Normalize).  Names are compared as texts, byte by byte.
///
/// The null name has no text.  A null or empty text makes it, and so does dirname for a parent that
/// a path does not have.  As a text, the null name counts as the empty text.
///
/// Ownership: keeps a copy of its text.  Copies of a name share one text until one of them changes.
///            The text of a name is valid until the name changes or is destroyed.
/// Errors:    prints and throws nothing; each operation on the file system documents its results.
///            Running out of memory ends the process.
/// Threads:   distinct names are independent, even if one is a copy of the other; copies may be
///            used by other threads.  One name must not be changed by one thread while another uses
///            it.
class VOR_API TAFileName {
 public:
  /// The null name.
  TAFileName() = default;
  /// The name of \a text in normal form; the null name for a null or empty text.
  TAFileName(const char* text);
  /// The same for the first \a length bytes of \a text, or for all of it if it is shorter.  A
  /// \a length of 0 or less makes the null name.
  TAFileName(const char* text, int length);
  TAFileName(const VorString& text);

  TAFileName(const TAFileName& other);
  /// \a other becomes the null name.
  TAFileName(TAFileName&& other) noexcept;
  TAFileName& operator=(const TAFileName& other);
  TAFileName& operator=(TAFileName&& other) noexcept;
  /// \a text may be a part of the text of this name.
  TAFileName& operator=(const char* text);
  TAFileName& operator=(const VorString& text);
  ~TAFileName();

  /// Brings the text into normal form, in this order:
  ///  1. every backslash becomes a slash;
  ///  2. of a run of k slashes (k + 1) / 2 stay: "a//b" becomes "a/b" and "a///b" becomes "a//b";
  ///  3. "/./" becomes "/";
  ///  4. in a text longer than two bytes "/." is cut off the end, then "./" off the start;
  ///  5. "name/../" goes, and "name/.." at the end, unless the name before it is empty or made of
  ///     dots only; a ".." step at the very start stays;
  ///  6. one slash at the end is cut off; the root "/" stays.
  ///
  /// Callers that compare stored names rely on the partial folding of slash runs.  Constructors,
  /// joins and assignments from text normalise; AddExtension and SetExtension do not.  A name may
  /// fold to an empty text, which is not the null name.
  ///
  /// The text is changed in place, unless other names share it.  If there is nothing to fold, it
  /// stays shared and keeps its address.  The cached full path is dropped in any case.
  void Normalize();

  /// 1 for the null name, else 0.
  int IsNull() const { return _text == nullptr; }

  /// The NUL-terminated text; "" for the null name.
  operator const char*() const;

  /// 1 if the path exists and is a regular file, else 0.  Links are followed.  Tests the bit 0x8000
  /// of the file mode, which sockets have too.
  int IsFile() const;
  /// 1 if the path exists and is a directory, else 0.  Links are followed.  Tests the bit 0x4000 of
  /// the file mode, which sockets and block devices have too.
  int IsDirectory() const;

  /// 1 if the texts are equal, else 0.
  int IsEqual(const TAFileName& other) const;

  /// Orders two names as strcmp of their texts: negative, zero or positive.  For QuickSort.
  static int Compare(TAFileName* left, TAFileName* right);

  /// 1 if \a directory is this name or one of its parents, as repeated dirname(1) returns them,
  /// else 0.  0 if either name is null.
  int IsUnderDirectory(const TAFileName& directory) const noexcept;

  /// This name, a slash and \a name, in normal form.  The null name plus \a name is the name of
  /// \a name.
  TAFileName operator+(const char* name) const;
  TAFileName operator+(const VorString& name) const;
  // Without these, a number would compile as pointer arithmetic on the text.
  template <VorOffset Offset>
  void operator+(Offset offset) const = delete;
  template <VorOffset Offset>
  void operator-(Offset offset) const = delete;
  /// Joins in place.  \a name may be a part of the text of this name.
  TAFileName& operator+=(const char* name);

  /// The \a n-th component counted from the end.  1 is the last one; a number below 1 counts as 1.
  /// If the text contains fewer than \a n slashes, the whole name.
  TAFileName basename(int n) const;

  /// The name without its last \a n components; for \a n below 1 and for the null name, the name
  /// itself.  A name without a slash after its first byte has the null name as its parent: both "a"
  /// and "/a" do.
  TAFileName dirname(int n) const;
  /// The text of dirname(n).
  VorString Getdirname(int n) const;

  /// The absolute name: this name if it begins with a slash, else the working directory joined with
  /// it if that path exists, else this relative name as it is.  For the null name, the working
  /// directory.
  ///
  /// The first result is kept until the text of this name changes or is normalised, even if the
  /// working directory changes.
  TAFileName GetFullPath();

  /// The text after the last dot of the whole name; empty if there is no dot.  The search does not
  /// stop at a slash, and callers rely on it: the extension of "dir.d/file" is "d/file".
  VorString GetExtension() const;
  /// 1 if GetExtension() is exactly \a extension, which is given without the dot; else 0, also for
  /// null.
  int HasExtension(const char* extension) const;
  /// Appends \a extension, which must include the dot: ".bak" turns "f.c" into "f.c.bak".
  void AddExtension(const VorString& extension);
  /// Replaces the text after the last dot: "o" turns "f.c" into "f.o".  Without a dot \a extension
  /// is appended and no dot is inserted; callers rely on "txt" turning "Makefile" into
  /// "Makefiletxt".
  void SetExtension(const VorString& extension);

  /// Adds the owner's execute permission to those of the file.  Errors are ignored.
  void SetAsExecutable() const;

  /// Removes the file.  Returns 0, also for the null name, or -1.
  int Delete() const;

  /// Makes the directory with mode 0777, reduced by the umask.  Returns 0 if it was made, -1 on
  /// failure, 1 for the null name.
  int CreateDirectory() const;
  /// The same with other results: 0 if the directory was made, 1 if the path exists already, -1 if
  /// a parent is missing or on another failure, -2 for the null name.
  int CreateNotExistingDirectory() const;
  /// Makes the directory and every missing parent.  Returns 0 if it existed or was made, 1 if a
  /// parent could not be made, -1 if the directory itself could not.  For a name without a parent
  /// the result is always 0.
  int CreateRecursiveDirectory() const noexcept;

  /// The value of the environment variable PWD if it is set, else what getcwd returns; the null
  /// name if that has 1024 bytes or more.  PWD belongs to the shell: SetWorkDir does not change it.
  static TAFileName GetWorkDir();
  /// Makes \a directory the working directory of the process.  Returns 0, or -1.
  static int SetWorkDir(const TAFileName& directory);

  /// A name in /tmp that this process has not generated before: "/tmp/TABase_", the process
  /// identifier, "_" and a number that counts from 1.  The file is not made.  May be called from
  /// any thread.
  static TAFileName GetTemporaryFileName() noexcept;

 private:
  struct TextBlock;

  static TAFileName Part(std::string_view text);
  std::string_view View() const;
  void SetText(TextBlock* block);

  TextBlock* _text = nullptr;             // shared by reference count; null for the null name
  std::unique_ptr<TAFileName> _fullPath;  // the result of GetFullPath, or null
};

// A name is compared with a text as it is, not normalised; a null text counts as "".  There is one
// operator for each kind of operand, because the conversion to const char* would otherwise compare
// addresses or be ambiguous.

inline bool operator==(const TAFileName& left, const TAFileName& right) {
  return left.IsEqual(right) != 0;
}
VOR_API bool operator==(const TAFileName& left, const char* right);
inline bool operator==(const TAFileName& left, const VorString& right) {
  return left == right.CastToCharPtr();
}

/// The order of Compare.
VOR_API std::weak_ordering operator<=>(const TAFileName& left, const TAFileName& right);
VOR_API std::weak_ordering operator<=>(const TAFileName& left, const char* right);

/// A list of file names, of which it owns copies.
class VOR_API VorListValTAFileName : public VorListVal<TAFileName> {
 public:
  using VorListVal::VorListVal;
};

#endif  // VOR_FILENAMES_TAFILENAME_H
