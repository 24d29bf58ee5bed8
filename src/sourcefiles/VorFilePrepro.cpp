#include "sourcefiles/VorFilePrepro.h"

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>

#include <cstddef>
#include <utility>

#include "base/OwnedText.h"
#include "base/PosixFile.h"
#include "foundation/Tracing.h"
#include "sourcefiles/ByteScan.h"
#include "sourcefiles/WholeFile.h"

// One pass over the text, from left to right, that writes what is kept.
//
// The states are code, block comment, line comment, preprocessor line, double-quoted and
// single-quoted literal.  Each state but code has one function, which runs from the bytes that
// begin the construct to those that end it; Run is the code between constructs.  So the active
// function is the state, and no variable holds it.
//
// In each state only a few bytes have a meaning: the stops.  PassTo (ByteScan.h) runs from one stop
// to the next, 16 bytes at a time, and copies the bytes before the stop if they are kept.  In
// removed parts a newline is a stop as well, because newlines are kept.
//
// A backslash and the byte after it are one unit in every state but the comments.  In a removed
// construct the whole unit is removed, even an escaped newline.
//
// The text is read once for an object, into the block of memory in which it stays; the result is
// the only other block.  The result is never longer than the text.

namespace {

// The parts that are kept.  Newlines always are.
struct Kept {
  bool lineComments, blockComments, preproLines, singleQuoted, doubleQuoted;
};

class Filter {
 public:
  /// \a out has room for all of the input.
  Filter(const char* in, const char* end, char* out, const Kept& kept)
      : _in(in), _end(end), _out(out), _kept(kept) {}

  /// Returns true if the text ends in a literal or a comment.
  bool Run() {
    for (;;) {
      vor::PassTo<true, '/', '"', '\'', '#', '\\'>(_in, _end, _out);
      if (_in == _end) return false;
      if (!PassConstruct()) return true;
    }
  }

  /// The end of what was written.
  char* End() const { return _out; }

 private:
  bool IsPair(char first, char second) const {
    return _end - _in > 1 && _in[0] == first && _in[1] == second;
  }

  void Take(int count, bool isKept) {
    for (; count > 0; --count, ++_in) {
      if (isKept) *_out++ = *_in;
    }
  }

  // Moves to the next stop.
  template <char... Stops>
  void PassTo(bool isKept) {
    if (isKept) {
      vor::PassTo<true, Stops...>(_in, _end, _out);
    } else {
      vor::PassTo<false, '\n', Stops...>(_in, _end, _out);
    }
  }

  // Passes a backslash and the byte after it.  False if no escape begins here.
  bool TakeEscape(bool isKept) {
    if (*_in != '\\' || _end - _in < 2) return false;
    Take(2, isKept);
    return true;
  }

  // Passes the construct that begins at a stop in code.  False if the text ends in it.
  bool PassConstruct() {
    if (TakeEscape(true)) return true;
    if (IsPair('/', '*')) return PassBlockComment(_kept.blockComments);
    if (IsPair('/', '/')) return PassLineComment(_kept.lineComments);
    switch (*_in) {
      case '"':
        return PassLiteral<'"'>(_kept.doubleQuoted);
      case '\'':
        return PassLiteral<'\''>(_kept.singleQuoted);
      case '#':
        PassPreproLine(_kept.preproLines);
        return true;
      default:
        Take(1, true);
        return true;
    }
  }

  bool PassBlockComment(bool isKept) {
    Take(2, isKept);
    for (;;) {
      PassTo<'*'>(isKept);
      if (_in == _end) return false;
      if (IsPair('*', '/')) break;
      Take(1, isKept || *_in == '\n');
    }
    Take(2, isKept);
    return true;
  }

  bool PassLineComment(bool isKept) {
    PassTo<'\n'>(isKept);
    if (_in == _end) return false;
    Take(1, true);
    return true;
  }

  // A preprocessor line at the end of the text counts as complete.
  void PassPreproLine(bool isKept) {
    for (;;) {
      PassTo<'\\', '\n'>(isKept);
      if (_in == _end) return;
      if (TakeEscape(isKept)) continue;
      const bool isLast = *_in == '\n';
      Take(1, isKept || isLast);
      if (isLast) return;
    }
  }

  template <char quote>
  bool PassLiteral(bool isKept) {
    Take(1, isKept);
    for (;;) {
      PassTo<'\\', quote>(isKept);
      if (_in == _end) return false;
      if (TakeEscape(isKept)) continue;
      const bool isLast = *_in == quote;
      Take(1, isKept || *_in == '\n');
      if (isLast) return true;
    }
  }

  const char* _in;
  const char* const _end;
  char* _out;
  const Kept _kept;
};

}  // namespace

struct VorFilePrepro::Text {
  vor::OwnedText bytes;
  std::size_t size;
};

int VorFilePrepro::REMOVE_SLCOMMENTS = 1;
int VorFilePrepro::REMOVE_MLCOMMENTS = 2;
int VorFilePrepro::REMOVE_PREPRO = 4;
int VorFilePrepro::REMOVE_SQSTRINGS = 8;
int VorFilePrepro::REMOVE_DQSTRINGS = 16;

VorFilePrepro::VorFilePrepro(VorString name) : _name(std::move(name)) {}

VorFilePrepro::~VorFilePrepro() = default;

int VorFilePrepro::preprocess(int flags, char*& out) noexcept {
  if (_text == nullptr) {
    const vor::FileDescriptor file = vor::OpenFile(_name, O_RDONLY);
    vor::OwnedText text = vor::ReadWholeFile(file).text;
    if (text == nullptr) return 1;
    const std::size_t size = strlen(text.get());
    vor::DropSpareRoom(text, size);
    _text.reset(new Text{std::move(text), size});
  }

  const Kept kept = {(flags & REMOVE_SLCOMMENTS) == 0, (flags & REMOVE_MLCOMMENTS) == 0,
                     (flags & REMOVE_PREPRO) == 0, (flags & REMOVE_SQSTRINGS) == 0,
                     (flags & REMOVE_DQSTRINGS) == 0};
  const char* const in = _text->bytes.get();
  auto* const result = static_cast<char*>(malloc(_text->size + 1));
  FATAL(result == nullptr, "VorFilePrepro::preprocess: no memory for the text");
  Filter filter(in, in + _text->size, result, kept);
  const bool isCutOff = filter.Run();
  *filter.End() = '\0';
  out = result;
  return isCutOff ? 2 : 0;
}
