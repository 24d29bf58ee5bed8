// The overloads of Split and ReadFile that fill a TAIndex.  Their declarations are with the other
// overloads, in src/foundation.

#include <string>
#include <string_view>

#include "containers/TAIndex.h"
#include "foundation/FieldSplitting.h"
#include "foundation/FileUtilities.h"
#include "foundation/LineReader.h"
#include "foundation/TextUtilities.h"

namespace {

// Adapts an index to the interface that Split and ReadFile fill.
class IndexFields {
 public:
  explicit IndexFields(TAIndex& index) : _index(index) {}

  void Clear() { _index.Reset(); }
  void Add(std::string_view field) {
    _key.assign(field);
    _index.Append(_key.c_str(), nullptr);
  }
  int Count() const { return _index.count; }

 private:
  TAIndex& _index;
  std::string _key;  // a field and its NUL
};

}  // namespace

int Split(const VorString& text, TAIndex& out) noexcept {
  return Split(text, out, vor::kBlank);
}

int Split(const VorString& text, TAIndex& out, const VorString& separator) noexcept {
  return vor::SplitAll(text.View(), IndexFields(out), separator.View());
}

int Split(const VorString& text, TAIndex& out, const VorString& separator, int count) noexcept {
  return vor::SplitUpTo(count, text.View(), IndexFields(out), separator.View());
}

int Split(const VorString& text, TAIndex& out, int count) noexcept {
  return vor::SplitPadded(count, text.View(), IndexFields(out));
}

int ReadFile(const VorString& path, TAIndex& lines) noexcept {
  vor::LineReader reader(path);
  IndexFields fields(lines);
  std::string_view line;
  while (reader.Next(&line)) fields.Add(line);
  return reader.IsOpen() ? 0 : 1;
}
