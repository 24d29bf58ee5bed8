#include "socket/BlockWriter.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "base/VorListValVorString.h"
#include "base/VorString.h"
#include "foundation/TextUtilities.h"
#include "perfo/TAPerfo.h"
#include "socket/BlockFormat.h"
#include "socket/Connection.h"
#include "socket/SizeMessage.h"
#include "socket/SocketBytes.h"

namespace vor {
namespace {

constexpr int kSmallestBuffer = 5;  // a header, and one byte so that it is never full

constexpr const char* kNotFlushed = "Unable to flush buffer";

}  // namespace

BlockWriter::BlockWriter(Connection& connection, int bufferSize)
    : _connection(connection),
      _bufferSize(static_cast<std::size_t>(std::max(bufferSize, kSmallestBuffer))),
      _buffer(std::make_unique_for_overwrite<char[]>(_bufferSize)) {}

void BlockWriter::Count(long long bytes) {
  if (_counter != nullptr) _counter->Count(static_cast<int>(bytes));
}

void BlockWriter::Clear() {
  _sentWords.Reset();
  _sender.Clear();
}

int BlockWriter::Flush() {
  if (IsEmpty()) return 0;
  iovec piece = {_buffer.get(), std::exchange(_pending, 0)};
  return Send(&piece, 1);
}

int BlockWriter::Send(iovec* pieces, std::size_t count) {
  if (_sender.Send(_connection.fd.Get(), _connection.stallLimit, pieces, count)) return 0;
  return _connection.Fail(kNotFlushed, errno);
}

// The buffer must have room.
void BlockWriter::AppendRaw(const void* bytes, std::size_t size) {
  if (size > 0) memcpy(_buffer.get() + _pending, bytes, size);
  _pending += size;
}

int BlockWriter::AppendHeader(int size) {
  if (_pending + kHeaderSize >= _bufferSize && Flush() != 0) return 1;
  unsigned char header[kHeaderSize];
  SetSize(header, size);
  AppendRaw(header, sizeof header);
  return 0;
}

// Appends bytes, which may exceed the room in the buffer.
int BlockWriter::AppendLong(std::string_view bytes) {
  while (!bytes.empty()) {
    if (_pending == _bufferSize && Flush() != 0) return 1;
    const std::size_t taken = std::min(bytes.size(), _bufferSize - _pending);
    AppendRaw(bytes.data(), taken);
    bytes.remove_prefix(taken);
  }
  return 0;
}

bool BlockWriter::MustCompress() const {
  return _connection.isCompressed || getenv("TASocketCompress") != nullptr;
}

int BlockWriter::FailForSize(long long size) {
  return _connection.Fail(SizeMessage(size), EMSGSIZE);
}

// Writes a compressed block.  \a next returns the words one by one, then null.  The definitions of
// words that are new on this connection go first, then the numbers of all words.
template <typename NextWord>
int BlockWriter::Words(int mark, NextWord next) {
  if (AppendHeader(mark) != 0) return 1;
  std::vector<int> ids;
  for (const char* word = next(); word != nullptr; word = next()) {
    const int position = _sentWords.IsIn(word);
    if (position >= 0) {
      ids.push_back(static_cast<int>(reinterpret_cast<std::intptr_t>(_sentWords.values[position])));
      continue;
    }
    const int id = _sentWords.count;
    void* const value = reinterpret_cast<void*>(static_cast<std::intptr_t>(id));
    if (_sentWords.Append(word, value) == nullptr) return FailForSize(-mark);
    ids.push_back(id);
    if (Integer(id) != 0 || String(word) != 0) return 1;
  }
  if (Integer(kEndOfDefinitions) != 0 || Integer(static_cast<int>(ids.size())) != 0) return 1;
  for (const int id : ids) {
    if (Integer(id) != 0) return 1;
  }
  return 0;
}

int BlockWriter::Text(std::string_view text) {
  const std::size_t size = text.size();
  if (size > std::size_t{kLargestSize}) return FailForSize(static_cast<long long>(size));
  if (_pending + size + kHeaderSize >= _bufferSize) {
    if (Flush() != 0) return 1;
    if (size + kHeaderSize >= _bufferSize) return FailForSize(static_cast<long long>(size));
  }
  const int length = static_cast<int>(size);
  if (!MustCompress()) {
    AppendHeader(length);
    AppendRaw(text.data(), size);
    Count(length);
    return 0;
  }
  if (size == 0) return AppendHeader(0);
  // Every blank ends a word, so two adjacent blanks enclose an empty word.
  std::string word;
  std::size_t start = 0;
  return Words(-length, [&]() -> const char* {
    if (start > size) return nullptr;
    const std::size_t end = std::min(text.find(' ', start), size);
    word.assign(text, start, end - start);
    start = end + 1;
    return word.c_str();
  });
}

int BlockWriter::List(const VorListValVorString& list) {
  if (!MustCompress()) {
    VorString joined;
    ToLine(list, joined);
    return Text(joined.CastToCharPtr());
  }
  const auto element = [&list](int i) { return std::string_view(list[i].CastToCharPtr()); };
  long long size = list.Size() - 1;  // blanks
  for (int i = 1; i <= list.Size(); ++i) size += static_cast<long long>(element(i).size());
  if (size > kLargestSize) return FailForSize(size);
  int position = 0;
  return Words(-std::max(list.Size(), 1), [&]() -> const char* {
    return position < list.Size() ? list[++position].CastToCharPtr() : nullptr;
  });
}

int BlockWriter::Integer(int value) {
  if (_pending + kIntegerSize >= _bufferSize && Flush() != 0) return 1;
  unsigned char bytes[kIntegerSize];
  auto rest = static_cast<std::uint32_t>(value);
  for (unsigned char& byte : bytes) {
    byte = static_cast<unsigned char>(rest & 0xFF);
    rest >>= 8;
  }
  AppendRaw(bytes, sizeof bytes);
  Count(sizeof bytes);
  return 0;
}

int BlockWriter::String(std::string_view text) {
  const auto size = static_cast<long long>(text.size());
  if (size > INT32_MAX) return FailForSize(size);
  if (Integer(static_cast<int>(size)) != 0) return 1;
  if (_pending + text.size() >= _bufferSize && Flush() != 0) return 1;
  if (AppendLong(text) != 0) return 1;
  // The four bytes of the length are counted twice: reports of callers rely on it.
  Count(size + static_cast<long long>(kIntegerSize));
  return 0;
}

int BlockWriter::Binary(int n, const void* data) {
  if (n < 0 || n > kLargestSize) return FailForSize(n);
  if (AppendHeader(n) != 0) return 1;
  if (n > 0) {
    // The data is sent after the buffer, without being copied into it.
    iovec pieces[] = {{_buffer.get(), std::exchange(_pending, 0)},
                      {const_cast<void*>(data), static_cast<std::size_t>(n)}};
    if (Send(pieces, 2) != 0) return 1;
  }
  Count(n);
  return 0;
}

char* BlockWriter::BeginBlock(std::size_t* room) {
  if (_pending + kHeaderSize >= _bufferSize && Flush() != 0) return nullptr;
  *room = std::min<std::size_t>(_bufferSize - _pending - kHeaderSize, kLargestSize);
  return _buffer.get() + _pending + kHeaderSize;
}

void BlockWriter::EndBlock(std::size_t size) {
  AppendHeader(static_cast<int>(size));
  _pending += size;
}

}  // namespace vor
