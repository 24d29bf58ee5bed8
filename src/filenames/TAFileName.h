#ifndef VOR_FILENAMES_TAFILENAME_H
#define VOR_FILENAMES_TAFILENAME_H

#include <compare>
#include <memory>
#include <string_view>

#include "base/Export.h"
#include "base/VorString.h"

/// The name of a file or directory.
///
/// A name keeps its text in a normal form that is found by fixed rules on the text alone, without
/// looking at the file system: backslashes become slashes, and doubled slashes, "." and ".." steps
/// and one slash at the end are folded (see Normalize).  Names are compared as texts, byte by byte.
///
/// The null name has no text.  It is what a null or empty text makes, and what is left when a path
/// has no further parent.  Where a text is wanted it counts as the empty one.
///
/// Ownership: keeps a copy of what it is given.  Copies of a name share one text until one of them
///            changes.  The characters handed out stay valid while the name lives unchanged.
/// Errors:    nothing is printed or thrown; each operation on the file system says what it
///            returns.  Running out of memory ends the process.
/// Threads:   not synchronised, and copies share a text with a plain count: a name and its copies
///            belong to one thread.  Hand the text of a name to another thread, not a copy of it.
///            Names that are no copies of one another are independent.
class VOR_API TAFileName {
 public:
  /// The null name.
  TAFileName() = default;
  /// The name of \a text in normal form; the null name for a null or empty text.
  TAFileName(const char* text);
  /// The same for the first \a length bytes of \a text, fewer where it ends before; 0 or less
  /// gives the null name.
  TAFileName(const char* text, int length);
  TAFileName(const VorString& text);

  TAFileName(const TAFileName& other);
  /// Leaves the null name behind in \a other.
  TAFileName(TAFileName&& other) noexcept;
  TAFileName& operator=(const TAFileName& other);
  TAFileName& operator=(TAFileName&& other) noexcept;
  /// \a text may be a part of this very name's.
  TAFileName& operator=(const char* text);
  TAFileName& operator=(const VorString& text);
  ~TAFileName();

  /// Brings the text into normal form, in this order:
  ///  1. every backslash becomes a slash;
  ///  2. of a run of k slashes (k + 1) / 2 stay, so "a//b" gives "a/b" and "a///b" gives "a//b";
  ///  3. "/./" becomes "/";
  ///  4. in a text longer than two bytes "/." is cut off the end, then "./" off the start;
  ///  5. "name/../" goes, and "name/.." at the end, unless the name before it is empty or made of
  ///     dots only; a ".." step at the very start stays;
  ///  6. one slash at the end is cut off; the root "/" stays.
  ///
  /// The partial folding of slash runs is relied on by callers that compare stored names.
  /// Constructors, joins and assignments from text call it; AddExtension and SetExtension do not.
  /// A name may fold to an empty text, which is not the null name.
  void Normalize();

  /// 1 for the null name, else 0.
  int IsNull() const { return _text == nullptr; }

  /// The NUL-terminated text; "" for the null name.
  operator const char*() const;

  /// 1 if the path exists and is a regular file, else 0.  Asks for the file mode bit 0x8000, which
  /// sockets have too; links are followed.
  int IsFile() const;
  /// 1 if the path exists and is a directory, else 0.  Asks for the file mode bit 0x4000, which
  /// sockets and block devices have too; links are followed.
  int IsDirectory() const;

  /// 1 if the texts are equal, else 0.
  int IsEqual(const TAFileName& other) const;

  /// Orders two names as strcmp of their texts: negative, zero or positive.  For QuickSort.
  static int Compare(TAFileName* left, TAFileName* right);

  /// 1 if \a directory is this name or one of its parents as dirname(1) gives them, else 0; 0 if
  /// one of them is null.
  int IsUnderDirectory(const TAFileName& directory) const noexcept;

  /// This name, a slash and \a name, in normal form; for the null name the name of \a name.
  TAFileName operator+(const char* name) const;
  TAFileName operator+(const VorString& name) const;
  // These would be pointer arithmetic.
  template <VorOffset Offset>
  void operator+(Offset offset) const = delete;
  template <VorOffset Offset>
  void operator-(Offset offset) const = delete;
  /// Joins in place.  \a name may be a part of this very name's text.
  TAFileName& operator+=(const char* name);

  /// The \a n-th component counted from the end, 1 being the last; a number below 1 counts as 1.
  /// With fewer than \a n slashes in the text, the whole name.
  TAFileName basename(int n) const;

  /// The name without its last \a n components; itself for the null name and for \a n below 1.
  /// What has no further slash, except as first byte, has the null name as parent: so has "/a", as
  /// well as "a".
  TAFileName dirname(int n) const;
  /// The text of dirname(n).
  VorString Getdirname(int n) const;

  /// The absolute name: this name if it begins with a slash, else the working directory joined
  /// with it if that path exists, else this relative name as it is.  The null name gives the
  /// working directory.  The answer is kept until the text of this name changes, also when the
  /// working directory changes meanwhile.
  TAFileName GetFullPath();

  /// What follows the last dot of the whole text, or the empty text without a dot.  The search
  /// does not stop at a slash, and callers rely on it: "dir.d/file" gives "d/file".
  VorString GetExtension() const;
  /// 1 if GetExtension() is exactly \a extension, without the dot, else 0; 0 for null.
  int HasExtension(const char* extension) const;
  /// Appends \a extension as it is, so it brings its dot along: "f.c" with ".bak" gives "f.c.bak".
  void AddExtension(const VorString& extension);
  /// Replaces what follows the last dot of the text: "f.c" with "o" gives "f.o".  A text without a
  /// dot gets \a extension appended as it is, no dot inserted: callers rely on "Makefile" with
  /// "txt" giving "Makefiletxt".
  void SetExtension(const VorString& extension);

  /// Adds the owner's execute permission to those of the file.  Errors are ignored.
  void SetAsExecutable() const;

  /// Removes the file.  Returns 0, also for the null name, or -1.
  int Delete() const;

  /// Makes the directory with mode 0777 less the umask.  Returns 0, -1 on failure, 1 for the null
  /// name.
  int CreateDirectory() const;
  /// The same; returns 0 when made, 1 when the path exists already, -1 when a parent is missing or
  /// for another failure, -2 for the null name.
  int CreateNotExistingDirectory() const;
  /// Makes the directory and every missing parent.  Returns 0 if it is there or was made, 1 if a
  /// parent could not be made, -1 if the directory itself could not.  For a name without a parent
  /// it always returns 0.
  int CreateRecursiveDirectory() const noexcept;

  /// The value of the environment variable PWD if it is set, else what the system says; the null
  /// name if that is 1024 bytes or longer.  PWD is the shell's: SetWorkDir does not change it.
  static TAFileName GetWorkDir();
  /// Makes \a directory the working directory of the process.  Returns 0, or -1.
  static int SetWorkDir(const TAFileName& directory);

  /// A name in /tmp that this process has not used before: "/tmp/TABase_", the process id, "_" and
  /// a number that starts at 1.  The file is not made; may be called from any thread.
  static TAFileName GetTemporaryFileName() noexcept;

 private:
  struct TextBlock;

  static TAFileName Part(std::string_view text);
  std::string_view View() const;
  void SetText(TextBlock* block);

  TextBlock* _text = nullptr;             // shared by reference count; null for the null name
  std::unique_ptr<TAFileName> _fullPath;  // the answer of GetFullPath, or null
};

// Comparison with a text takes that text as it is, not normalised; a null one counts as "".
// Spelt out for each kind of operand, since the conversion to const char* would otherwise compare
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

#endif  // VOR_FILENAMES_TAFILENAME_H
