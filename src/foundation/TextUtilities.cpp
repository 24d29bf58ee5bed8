#include "foundation/TextUtilities.h"

#include <string.h>

#include <functional>
#include <string>
#include <string_view>

#include "base/VorListValVorString.h"
#include "containers/TAIndex.h"
#include "filenames/TAFileName.h"
#include "foundation/FieldScan.h"

namespace {

constexpr const char* kBlank = " ";

// What the splitting rules need of the list that takes the fields.
class ListFields {
 public:
  explicit ListFields(VorListValVorString& list) : _list(list) {}

  void Clear() { _list.RemoveAll(VorCollec::KeepMemory); }
  void Add(std::string_view field) { _list.Append(VorString(field)); }
  int Count() const { return _list.Size(); }

  // Whether clearing the list destroys this text.
  bool Owns(const VorString& text) const {
    const std::less<const VorString*> before;
    return _list.Size() > 0 && !before(&text, &_list[1]) && !before(&_list[_list.Size()], &text);
  }

 private:
  VorListValVorString& _list;
};

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
  std::string _key;  // a field with a NUL behind it
};

template <typename Fields>
int SplitAll(std::string_view text, Fields&& fields, std::string_view separator) {
  fields.Clear();
  vor::FieldScan scan(text, separator);
  std::string_view field;
  while (scan.Next(&field)) fields.Add(field);
  return fields.Count();
}

template <typename Fields>
int SplitUpTo(int count, std::string_view text, Fields&& fields, std::string_view separator) {
  fields.Clear();
  std::size_t start = 0;
  for (int found = 1; found < count; ++found) {
    const std::size_t position = vor::FindText(text, separator, start);
    if (position == std::string_view::npos) break;
    if (start < position) fields.Add(text.substr(start, position - start));
    start = position + 1;  // callers rely on one byte and not the length of the separator
  }
  if (start < text.size()) fields.Add(text.substr(start));
  return fields.Count();
}

template <typename Fields>
int SplitPadded(int count, std::string_view text, Fields&& fields) {
  int size = SplitUpTo(count, text, fields, kBlank);
  while (size < count) {
    fields.Add("");
    if (fields.Count() == size) break;  // an index takes the empty text once
    size = fields.Count();
  }
  return count;
}

bool BeginsWith(const VorString& text, const VorString& prefix) {
  return text.View().starts_with(prefix.View());
}

// The entity of an XML special character; empty for any other.
std::string_view EntityOf(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&apos;";
    default:
      return {};
  }
}

}  // namespace

int Split(const VorString& text, VorListValVorString& out) noexcept {
  return Split(text, out, kBlank);
}

int Split(const VorString& text, VorListValVorString& out, const VorString& separator) noexcept {
  ListFields fields(out);
  if (fields.Owns(text) || fields.Owns(separator)) {
    return SplitAll(VorString(text).View(), fields, VorString(separator).View());
  }
  return SplitAll(text.View(), fields, separator.View());
}

int Split(const VorString& text, VorListValVorString& out, const VorString& separator,
          int count) noexcept {
  ListFields fields(out);
  if (fields.Owns(text) || fields.Owns(separator)) {
    return SplitUpTo(count, VorString(text).View(), fields, VorString(separator).View());
  }
  return SplitUpTo(count, text.View(), fields, separator.View());
}

int Split(const VorString& text, VorListValVorString& out, int count) noexcept {
  ListFields fields(out);
  if (fields.Owns(text)) return SplitPadded(count, VorString(text).View(), fields);
  return SplitPadded(count, text.View(), fields);
}

int Split(const VorString& text, TAIndex& out) noexcept {
  return Split(text, out, kBlank);
}

int Split(const VorString& text, TAIndex& out, const VorString& separator) noexcept {
  return SplitAll(text.View(), IndexFields(out), separator.View());
}

int Split(const VorString& text, TAIndex& out, const VorString& separator, int count) noexcept {
  return SplitUpTo(count, text.View(), IndexFields(out), separator.View());
}

int Split(const VorString& text, TAIndex& out, int count) noexcept {
  return SplitPadded(count, text.View(), IndexFields(out));
}

int ToLine(const VorListValVorString& words, VorString& line) noexcept {
  return ToLine(words, line, kBlank);
}

int ToLine(const VorListValVorString& words, VorString& line, const VorString& separator) noexcept {
  if (words.Size() == 0) return 0;
  // Joined apart from line, which may be the separator or one of the words.
  std::string joined(words[1].View());
  for (int i = 2; i <= words.Size(); ++i) {
    joined += separator.View();
    joined += words[i].View();
  }
  line = VorString(std::move(joined));
  return 0;
}

int IsComment(const char* line) {
  while (*line == ' ') ++line;
  return *line == '\0' || *line == '#';
}

int IsComment(const VorString& line) {
  return IsComment(line.CastToCharPtr());
}

int SearchInStringList(const VorString& key, const VorListValVorString& sorted) {
  return rSearchInStringList(key, sorted, 1, sorted.Size());
}

int rSearchInStringList(const VorString& key, const VorListValVorString& sorted, int low,
                        int high) {
  if (high < low) return 0;
  while (low < high - 1) {
    const int middle = low + (high - low) / 2;
    // The middle element stays in both halves.
    (key < sorted[middle] ? high : low) = middle;
  }
  if (BeginsWith(key, sorted[low])) return low;
  return BeginsWith(key, sorted[high]) ? high : 0;
}

void InsertInList(const VorString& value, VorListValVorString& sorted) noexcept {
  if (sorted.Size() == 0) {
    sorted.Append(value);
  } else {
    rInsertInList(value, sorted, 1, sorted.Size());
  }
}

void rInsertInList(const VorString& value, VorListValVorString& sorted, int low,
                   int high) noexcept {
  if (high < low) return;
  while (low < high - 1) {
    const int middle = low + (high - low) / 2;
    (value < sorted[middle] ? high : low) = middle;
  }
  if (value == sorted[low] || value == sorted[high]) return;
  if (value < sorted[low]) {
    sorted.InsertBefore(low, value);
  } else {
    sorted.InsertAfter(value > sorted[high] ? high : low, value);
  }
}

const char* Q_strstr(const char* text, const char* pattern, int limit) {
  if (pattern == nullptr || text == nullptr) return nullptr;
  if (*pattern == '\0') return *text == '\0' ? text : nullptr;
  const char* next = pattern;  // what of the pattern is to be met next
  for (int consumed = 0; consumed < limit && *text != '\0' && *text != '\n';) {
    if (*text == *next) {
      ++next;
      if (*next == '\0') return text + 1 - (next - pattern);
    } else if (next != pattern) {
      next = pattern;
      continue;  // the same character once more; the text never moves back
    }
    ++text;
    ++consumed;
  }
  return nullptr;
}

VorString substituteEntities(const VorString& text) noexcept {
  // An ampersand once took the detour over this word, so that later replacements did not touch
  // the entities; stored files show that the word itself came out as an ampersand.
  constexpr std::string_view kPlaceholder = "toreplace";
  const std::string_view rest = text.View();
  std::string escaped;
  escaped.reserve(rest.size());
  std::size_t plain = 0;  // start of what is still to be copied as it is
  for (std::size_t i = 0; i < rest.size();) {
    const bool isPlaceholder = rest[i] == 't' && rest.substr(i).starts_with(kPlaceholder);
    const std::string_view entity = EntityOf(isPlaceholder ? '&' : rest[i]);
    const std::size_t length = isPlaceholder ? kPlaceholder.size() : 1;
    if (!entity.empty()) {
      escaped.append(rest, plain, i - plain).append(entity);
      plain = i + length;
    }
    i += length;
  }
  escaped.append(rest, plain);
  return VorString(std::move(escaped));
}

int CompareTAStrings(VorString* left, VorString* right) {
  return strcmp(*left, *right);
}

int CompareTAStrings(TAFileName* left, TAFileName* right) {
  return TAFileName::Compare(left, right);
}
