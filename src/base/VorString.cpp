#include "base/VorString.h"

#include <string.h>

#include <algorithm>
#include <climits>
#include <ostream>

#include "base/AsciiCase.h"
#include "base/NullText.h"

namespace {

int ToInt(std::size_t size) {
  return size > static_cast<std::size_t>(INT_MAX) ? INT_MAX : static_cast<int>(size);
}

std::weak_ordering CompareAsC(const char* left, const char* right) {
  return strcmp(left, right) <=> 0;
}

}  // namespace

VorString& VorString::operator=(const char* text) noexcept {
  // assign() accepts a text that points into this string.
  if (text == nullptr) {
    _text.clear();
  } else {
    _text.assign(text);
  }
  return *this;
}

VorString& VorString::operator+=(const char* text) noexcept {
  if (text != nullptr) _text.append(text);
  return *this;
}

VorString& VorString::operator+=(const VorString& text) noexcept {
  _text.append(text._text);
  return *this;
}

int VorString::GetLengthInChar() const {
  return ToInt(_text.size());
}

int VorString::FindPosition(const VorString& text, int start) const {
  const std::size_t found = _text.find(text._text, start < 0 ? 0 : static_cast<std::size_t>(start));
  return found == std::string::npos || found > static_cast<std::size_t>(INT_MAX)
             ? -1
             : static_cast<int>(found);
}

VorString VorString::SubString(unsigned start, unsigned count) const noexcept {
  return start >= _text.size() ? VorString() : VorString(_text.substr(start, count));
}

void VorString::Remove(int start, int count) {
  const long long first = std::max(start, 0);
  const long long last = static_cast<long long>(start) + count;  // one after the removed bytes
  if (last <= first || static_cast<unsigned long long>(first) >= _text.size()) return;
  _text.erase(static_cast<std::size_t>(first), static_cast<std::size_t>(last - first));
}

void VorString::ReplaceSubString(const VorString& oldText, const VorString& newText) noexcept {
  if (oldText._text.empty()) return;
  const std::size_t found = _text.find(oldText._text);
  if (found != std::string::npos) _text.replace(found, oldText._text.size(), newText._text);
}

void VorString::ToUpper() {
  for (char& c : _text) c = vor::AsciiUpper(c);
}

VorString operator+(const VorString& left, const VorString& right) noexcept {
  VorString sum(left);
  sum += right;
  return sum;
}

VorString operator+(const VorString& left, const char* right) noexcept {
  VorString sum(left);
  sum += right;
  return sum;
}

VorString operator+(const char* left, const VorString& right) noexcept {
  VorString sum(left);
  sum += right;
  return sum;
}

std::weak_ordering operator<=>(const VorString& left, const VorString& right) {
  return CompareAsC(left, right);
}

std::weak_ordering operator<=>(const VorString& left, const char* right) {
  return CompareAsC(left, vor::TextOrEmpty(right));
}

std::ostream& operator<<(std::ostream& stream, const VorString& text) {
  return stream << text.View();
}
