#include "sourcefiles/VorFilePrepro.h"

#include <stdlib.h>
#include <string.h>

#include <cstddef>
#include <utility>

#include "base/OwnedText.h"
#include "foundation/Tracing.h"
#include "sourcefiles/ByteScan.h"
#include "sourcefiles/VorFileBuffer.h"

// One pass from left to right.  It stops only at the bytes that mean something where it is, and
// there is one operation for each place where it can be.

namespace {

// What stays in the text; newlines always do.
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

  /// Behind the last byte written.
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

  // To the next stop; of what is removed, newlines are stops as well.
  template <char... Stops>
  void PassTo(bool isKept) {
    if (isKept) {
      vor::PassTo<true, Stops...>(_in, _end, _out);
    } else {
      vor::PassTo<false, '\n', Stops...>(_in, _end, _out);
    }
  }

  // A backslash that is not the last byte, with what is behind it.
  bool TakeEscape(bool isKept) {
    if (*_in != '\\' || _end - _in < 2) return false;
    Take(2, isKept);
    return true;
  }

  // What begins at a stop of the code.  False if the text ends in it.
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

  // One that the text ends in is as good as any.
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
    auto* const file = new VorFileBuffer(_name);
    const char* const text = file->getBuffer();
    vor::OwnedText copy(text == nullptr ? nullptr : strdup(text));
    file->destroy();
    if (copy == nullptr) return 1;
    const std::size_t size = strlen(copy.get());
    _text.reset(new Text{std::move(copy), size});
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
