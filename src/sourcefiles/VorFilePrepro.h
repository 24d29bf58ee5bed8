#ifndef VOR_SOURCEFILES_VORFILEPREPRO_H
#define VOR_SOURCEFILES_VORFILEPREPRO_H

#include <memory>

#include "../base/Export.h"
#include "../base/VorString.h"

/// The text of a source file of the C family without its comments, preprocessor lines or literals,
/// for tools that look for words in sources.
///
/// The newlines of removed parts are kept, so that lines keep their numbers.  There is one
/// exception, on which callers rely: in a removed literal or preprocessor line, a newline after a
/// backslash is removed too.
///
/// The text is read from left to right:
///  - Comments begin in code only, not in literals or preprocessor lines.
///  - A "#" in code begins a preprocessor line, at any position in the line.
///  - Outside comments, a backslash and the character after it form one unit, which neither begins
///    nor ends anything.  So a backslash continues a preprocessor line, but not a "//" comment.
///
/// Memory:    one copy of the text of the file, and the results that the caller holds.
/// Ownership: keeps the text of the file from the first call of preprocess on, even if the file
///            changes.
/// Errors:    reported by the result; nothing is printed.
/// Threads:   not synchronised; an object belongs to one thread at a time.
class VOR_API VorFilePrepro {
 public:
  // The parts to remove; combine them with "|".
  static int REMOVE_SLCOMMENTS;  ///< 1: "//" to the end of the line
  static int REMOVE_MLCOMMENTS;  ///< 2: "/*" to "*/"
  static int REMOVE_PREPRO;      ///< 4: "#" to the end of the line
  static int REMOVE_SQSTRINGS;   ///< 8: single-quoted literals with their quotes
  static int REMOVE_DQSTRINGS;   ///< 16: double-quoted literals with their quotes

  explicit VorFilePrepro(VorString name);
  VorFilePrepro(const VorFilePrepro&) = delete;
  VorFilePrepro& operator=(const VorFilePrepro&) = delete;
  virtual ~VorFilePrepro();

  /// Stores the filtered text in \a out; the caller releases it with free().  Returns 0, or 2 if
  /// the file ends in a literal or a comment.  A "//" comment without a newline is such an end.
  /// Returns 1 and does not change \a out if the file cannot be read.
  ///
  /// Text after the first NUL of the file is ignored.
  int preprocess(int flags, char*& out) noexcept;

 private:
  struct Text;

  VorString _name;
  std::unique_ptr<const Text> _text;  // null until it is loaded
};

#endif  // VOR_SOURCEFILES_VORFILEPREPRO_H
