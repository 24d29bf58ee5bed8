#include "foundation/TextUtilities.h"

#include <string.h>

#include <functional>
#include <string>
#include <string_view>

#include "base/VorListValVorString.h"
#include "foundation/FieldSplitting.h"
#include "foundation/XmlEntities.h"

namespace {

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

bool BeginsWith(const VorString& text, const VorString& prefix) {
  return text.View().starts_with(prefix.View());
}

}  // namespace

int Split(const VorString& text, VorListValVorString& out) noexcept {
  return Split(text, out, vor::kBlank);
}

int Split(const VorString& text, VorListValVorString& out, const VorString& separator) noexcept {
  ListFields fields(out);
  if (fields.Owns(text) || fields.Owns(separator)) {
    return vor::SplitAll(VorString(text).View(), fields, VorString(separator).View());
  }
  return vor::SplitAll(text.View(), fields, separator.View());
}

int Split(const VorString& text, VorListValVorString& out, const VorString& separator,
          int count) noexcept {
  ListFields fields(out);
  if (fields.Owns(text) || fields.Owns(separator)) {
    return vor::SplitUpTo(count, VorString(text).View(), fields, VorString(separator).View());
  }
  return vor::SplitUpTo(count, text.View(), fields, separator.View());
}

int Split(const VorString& text, VorListValVorString& out, int count) noexcept {
  ListFields fields(out);
  if (fields.Owns(text)) return vor::SplitPadded(count, VorString(text).View(), fields);
  return vor::SplitPadded(count, text.View(), fields);
}

int ToLine(const VorListValVorString& words, VorString& line) noexcept {
  return ToLine(words, line, vor::kBlank);
}

int ToLine(const VorListValVorString& words, VorString& line, const VorString& separator) noexcept {
  if (words.Size() == 0) return 0;
  // Joined in another string: line may be the separator or one of the words.
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
  const char* next = pattern;  // the character of the pattern to compare next
  for (int consumed = 0; consumed < limit && *text != '\0' && *text != '\n';) {
    if (*text == *next) {
      ++next;
      if (*next == '\0') return text + 1 - (next - pattern);
    } else if (next != pattern) {
      next = pattern;
      continue;  // compare the same character of the text again, never an earlier one
    }
    ++text;
    ++consumed;
  }
  return nullptr;
}

VorString substituteEntities(const VorString& text) noexcept {
  // An ampersand was once replaced by this word first, so that later replacements did not change
  // the entities.  Therefore stored files contain "&amp;" for the word itself.
  constexpr std::string_view kPlaceholder = "toreplace";
  const std::string_view rest = text.View();
  std::string escaped;
  escaped.reserve(rest.size());
  std::size_t plain = 0;  // start of the text that is not copied yet
  for (std::size_t i = 0; i < rest.size();) {
    const bool isPlaceholder = rest[i] == 't' && rest.substr(i).starts_with(kPlaceholder);
    const auto byte = static_cast<unsigned char>(rest[i]);
    const std::string_view entity = vor::XmlEntityOf(isPlaceholder ? '&' : byte);
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
