#ifndef VOR_SOURCEFILES_VORFILEPREPRO_H
#define VOR_SOURCEFILES_VORFILEPREPRO_H

#include <memory>

#include "base/Export.h"
#include "base/VorString.h"

/// The text of a source file of the C family without its comments, pre-processor lines or literals,
/// for tools that look for words in sources.
///
/// Newlines of what is removed are kept, so that lines keep their numbers; but callers rely on the
/// newlines behind a backslash, in literals and pre-processor lines, going with them.
///
/// What counts as what, read from left to right:
///  - comments begin in code only, not in a literal nor in a pre-processor line;
///  - "#" in code begins a pre-processor line, wherever it stands on the line;
///  - outside comments a backslash and the character behind it belong together and begin and end
///    nothing; so a backslash continues a pre-processor line but not a "//" comment.
///
/// Ownership: keeps the text of the file from the first preprocess on, even if the file changes.
/// Errors:    told by the result; nothing is printed.
/// Threads:   not synchronised; an object belongs to one thread at a time.
class VOR_API VorFilePrepro {
 public:
  // What to remove; to be combined with "|".
  static int REMOVE_SLCOMMENTS;  ///< 1: "//" to the end of the line
  static int REMOVE_MLCOMMENTS;  ///< 2: "/*" to "*/"
  static int REMOVE_PREPRO;      ///< 4: "#" to the end of the line
  static int REMOVE_SQSTRINGS;   ///< 8: single-quoted literals with their quotes
  static int REMOVE_DQSTRINGS;   ///< 16: double-quoted literals with their quotes

  explicit VorFilePrepro(VorString name);
  VorFilePrepro(const VorFilePrepro&) = delete;
  VorFilePrepro& operator=(const VorFilePrepro&) = delete;
  virtual ~VorFilePrepro();

  /// Stores in \a out the filtered text, which the caller releases with free(), and returns 0; 2 if
  /// the file ends in a literal or a comment, which a "//" comment without a newline does, too.
  /// Returns 1, and leaves \a out alone, if the file cannot be read.
  ///
  /// A file is read up to its first NUL.
  int preprocess(int flags, char*& out) noexcept;

 private:
  struct Text;

  VorString _name;
  std::unique_ptr<const Text> _text;  // null until it is loaded
};

#endif  // VOR_SOURCEFILES_VORFILEPREPRO_H
