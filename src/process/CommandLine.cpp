#include "process/CommandLine.h"

#include <string_view>

#include "base/VorListValVorString.h"
#include "foundation/TextUtilities.h"

namespace vor {
namespace {

constexpr char kQuote = '"';

std::string_view WithoutFirst(std::string_view text) {
  return text.substr(1);
}

// The first byte may also be the last one, which is removed already.
std::string_view WithoutLast(std::string_view text) {
  return text.substr(0, text.empty() ? 0 : text.size() - 1);
}

}  // namespace

std::vector<std::string> ParseCommandLine(const VorString& command) {
  VorListValVorString words;
  Split(command, words);
  std::vector<std::string> arguments;
  if (words.Size() == 0) return arguments;
  arguments.reserve(static_cast<std::size_t>(words.Size()));
  arguments.emplace_back(words[1].View());  // the program is taken as it is, quotes and all

  bool inPhrase = false;
  std::string phrase;
  for (int position = 2; position <= words.Size(); ++position) {
    const std::string_view word = words[position].View();
    const bool closes = word.back() == kQuote;
    if (word.front() == kQuote && closes) {
      // Does not change an open phrase.  A single quote opens and closes one: an empty argument.
      arguments.emplace_back(WithoutLast(WithoutFirst(word)));
    } else if (word.front() == kQuote) {
      phrase = WithoutFirst(word);
      inPhrase = true;
    } else if (inPhrase) {
      phrase += ' ';
      phrase += closes ? WithoutLast(word) : word;
      if (closes) {
        arguments.push_back(phrase);
        phrase.clear();
        inPhrase = false;
      }
    } else {
      arguments.emplace_back(word);
    }
  }
  return arguments;
}

}  // namespace vor
