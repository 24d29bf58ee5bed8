#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <sys/uio.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/VorListValVorString.h"
#include "foundation/FieldScan.h"
#include "foundation/TextUtilities.h"
#include "perfo/TAPerfo.h"
#include "socket/BlockFormat.h"
#include "socket/ReceivedWords.h"
#include "socket/SocketBytes.h"
#include "socket/SocketIo.h"
#include "socket/TASocket.h"

namespace {

using vor::kHeaderSize;
using vor::kIntegerSize;
using vor::kLargestSize;
using vor::kNoSize;
using vor::kNotFlushed;
using vor::kNotFull;

constexpr std::size_t kFirstRoom = 1 << 16;  // bytes allocated before any have arrived

constexpr const char* kNoTextSize = "Unable to get block size ";  // unlike that of records
constexpr const char* kNoMemory = "Unable to alloc memory for GetBinBlock";

std::string_view AsC(const VorString& text) {
  return text.CastToCharPtr();
}

void Count(TAPerfo* counter, std::size_t bytes) {
  if (counter != nullptr) counter->Count(static_cast<int>(bytes));
}

// Tools that log texts with NULs know them cut as here: each piece of 10,240 bytes by itself.
void CutAtNuls(std::string& text) {
  if (text.find('\0') == std::string::npos) return;
  std::string cut;
  constexpr std::size_t kPiece = vor::kLargestPiece;
  for (std::size_t at = 0; at < text.size(); at += kPiece) {
    cut.append(text.data() + at, strnlen(text.data() + at, std::min(kPiece, text.size() - at)));
  }
  text = std::move(cut);
}

}  // namespace

// Reading.

// What all reads begin with.  A request that was written before is sent, so that it can be
// answered.
int TASocket::BeginRead(int timeout) {
  if (!IsOpen()) return Fail("Socket not opened, unable to get data block");
  if (Flush() != 0) return 1;
  _received->BeginRead({_readSeconds, _readBytes, _stallLimit});
  if (_readSeconds > 0) timeout = timeout >= 1 ? std::min(timeout, _readSeconds) : _readSeconds;
  return timeout >= 1 ? CheckRecv(timeout) : 0;
}

// What all reads end with: that the time was over goes before what was missing then.
int TASocket::EndRead(int result) {
  return result != 0 && _received->IsLate() ? FailForTime() : result;
}

int TASocket::FailForTime() {
  Fail("Error reading from stream socket (select): Connection timed out");
  return 2;
}

int TASocket::CheckRecv(int timeout) {
  if (!_received->IsEmpty()) return 0;
  switch (vor::WaitForInput(_fd, timeout)) {
    case vor::Wait::kReady:
      return 0;
    case vor::Wait::kTimeOut:
      return FailForTime();
    case vor::Wait::kNotReady:
      Fail("Error reading from stream socket (select): File descriptor not ready");
      return 2;
    default:
      return Fail("Error reading from stream socket (select)");
  }
}

bool TASocket::Receive(void* out, std::size_t size) {
  return _received->Receive(_fd, out, size);
}

int TASocket::ReceiveSize(int& size, const char* message) {
  unsigned char header[kHeaderSize];
  if (!Receive(header, sizeof header)) return Fail(message);
  if (!vor::IsHeader(header)) return Fail(kNotFull);
  size = GetSize(header);
  return 0;
}

int TASocket::ReceiveInteger(int& value) {
  unsigned char bytes[kIntegerSize];
  if (!Receive(bytes, sizeof bytes)) return Fail(kNoSize);
  std::uint32_t assembled = 0;
  for (std::size_t i = kIntegerSize; i > 0; --i) assembled = assembled << 8 | bytes[i - 1];
  value = static_cast<int>(assembled);
  return 0;
}

// A size is only a promise: room is made for what arrives.
bool TASocket::ReceiveInto(std::string& text, std::size_t size) {
  if (!_received->Allows(size)) return false;
  text.clear();
  while (text.size() < size) {
    const std::size_t start = text.size();
    text.resize(std::min(size, start + std::max(start, kFirstRoom)));
    if (!Receive(text.data() + start, text.size() - start)) return false;
  }
  return true;
}

// The text ends at its first NUL, as the C strings of the peers do.
int TASocket::ReceiveString(std::string& text, std::size_t largest) {
  int length = 0;
  if (ReceiveInteger(length) != 0) return 1;
  if (length < 0 || static_cast<std::size_t>(length) > largest) return Fail(kNoSize);
  if (!ReceiveInto(text, static_cast<std::size_t>(length))) return Fail(kNoSize);
  text.resize(strlen(text.c_str()));
  return 0;
}

int TASocket::ReceiveRecord(VorString& text) try {
  std::string received;
  if (ReceiveString(received, INT_MAX) != 0) return 1;
  text = VorString(std::move(received));
  return 0;
} catch (const std::bad_alloc&) {
  return Fail(kNoSize);
}

// No text is longer than a header can tell, or than this end wants it.
std::size_t TASocket::LargestText() const {
  const int largest = _readBytes > 0 ? std::min(_readBytes, kLargestSize) : kLargestSize;
  return static_cast<std::size_t>(largest);
}

int TASocket::ReceivePlain(int size, std::string& text) {
  if (!ReceiveInto(text, static_cast<std::size_t>(size))) return Fail(kNotFull);
  CutAtNuls(text);
  Count(_readPerfo, static_cast<std::size_t>(size));
  return 0;
}

// Reads what follows the header of a compressed block, and calls use(word) for each word of it.
template <typename Use>
int TASocket::ReceiveWords(Use use) {
  // The new words are words of the text, and each goes with a blank but one.
  const std::size_t room = LargestText() + 1;
  std::size_t defined = 0;
  for (int id = 0;;) {
    if (ReceiveInteger(id) != 0) return 1;
    if (id == vor::kEndOfDefinitions) break;
    if (defined == room) return Fail(kNotFull);
    std::string word;
    if (ReceiveString(word, room - defined - 1) != 0) return 1;
    defined += word.size() + 1;
    _receivedWords->Define(id, std::move(word));
  }
  int count = 0;
  if (ReceiveInteger(count) != 0) return 1;
  // A few bytes could name long words again and again.
  if (count > kLargestSize) return Fail(kNotFull);
  std::size_t total = 0;
  for (; count > 0; --count) {
    int id = 0;
    if (ReceiveInteger(id) != 0) return 1;
    const std::string* const found = _receivedWords->Find(id);
    if (found == nullptr) return Fail(kNotFull);
    total += found->size() + 1;
    if (total > room) return Fail(kNotFull);
    use(*found);
  }
  return 0;
}

int TASocket::ReceiveText(VorString& text) try {
  text = VorString();
  int size = 0;
  if (ReceiveSize(size, kNoTextSize) != 0) return 1;
  if (size == 0) return 0;
  if (size < 0) _state = kCompressed;  // for what this end writes as well
  std::string received;
  if (_state != kCompressed) {
    if (ReceivePlain(size, received) != 0) return 1;
  } else {
    bool isFirst = true;
    const int result = ReceiveWords([&](const std::string& word) {
      if (!std::exchange(isFirst, false)) received += ' ';
      received += word;
    });
    if (result != 0) return 1;
  }
  text = VorString(std::move(received));
  return 0;
} catch (const std::bad_alloc&) {
  return Fail(kNotFull);
}

int TASocket::GetBlock(VorString& text, int timeout) noexcept {
  const int result = BeginRead(timeout);
  return result != 0 ? result : EndRead(ReceiveText(text));
}

int TASocket::ReceiveList(VorListValVorString& list) try {
  int size = 0;
  if (ReceiveSize(size, kNoTextSize) != 0) return 1;
  if (size == 0) return 0;
  if (size < 0) _state = kCompressed;
  // The copy is made where it can fail.
  const auto append = [&list](std::string_view word) { list.Append(VorString(std::string(word))); };
  if (_state == kCompressed) return ReceiveWords(append);
  std::string received;
  if (ReceivePlain(size, received) != 0) return 1;
  // As Split cuts it.
  vor::FieldScan words(received, " ");
  for (std::string_view word; words.Next(&word);) append(word);
  return 0;
} catch (const std::bad_alloc&) {
  return Fail(kNotFull);
}

int TASocket::GetBlock(VorListValVorString& list, int timeout) noexcept {
  list.RemoveAll(VorCollec::KeepMemory);
  int result = BeginRead(timeout);
  if (result == 0) result = EndRead(ReceiveList(list));
  if (result != 0) list.RemoveAll(VorCollec::ReleaseMemory);
  return result;
}

int TASocket::GetBinBlock(int* n, void** data, int timeout) noexcept {
  *n = 0;
  *data = nullptr;
  const int result = BeginRead(timeout);
  return result != 0 ? result : EndRead(ReceiveBinary(n, data));
}

int TASocket::ReceiveBinary(int* n, void** data) {
  int size = 0;
  if (ReceiveSize(size, kNoSize) != 0) return 1;
  if (size < 0) return Fail(kNoMemory);
  const auto wanted = static_cast<std::size_t>(size);
  if (!_received->Allows(wanted)) return Fail(kNotFull);
  std::size_t room = 0;
  std::size_t got = 0;
  char* bytes = nullptr;
  do {
    room = std::min(wanted, std::max(2 * room, kFirstRoom));
    char* const grown = static_cast<char*>(realloc(bytes, std::max<std::size_t>(room, 1)));
    if (grown == nullptr) {
      free(bytes);
      return Fail(kNoMemory);
    }
    bytes = grown;
    if (!Receive(bytes + got, room - got)) {
      free(bytes);
      return Fail(kNotFull);
    }
    got = room;
  } while (got < wanted);
  *n = size;
  *data = bytes;
  return 0;
}

int TASocket::Read(int& value, int timeout) noexcept {
  const int result = BeginRead(timeout);
  return result != 0 ? result : EndRead(ReceiveInteger(value));
}

int TASocket::Read(VorString& text, int timeout) noexcept {
  const int result = BeginRead(timeout);
  return result != 0 ? result : EndRead(ReceiveRecord(text));
}

// Writing.

int TASocket::BeginWrite() {
  return IsOpen() ? 0 : Fail("Socket not opened, unable to put data block");
}

int TASocket::Flush() {
  if (!IsOpen() || _pending == 0) return 0;
  iovec piece = {_writeBuffer.get(), std::exchange(_pending, 0)};
  return vor::SendAll(_fd, &piece, 1) ? 0 : Fail(kNotFlushed);
}

// There must be room.
void TASocket::AppendRaw(const void* bytes, std::size_t size) {
  if (size > 0) memcpy(_writeBuffer.get() + _pending, bytes, size);
  _pending += size;
}

int TASocket::AppendHeader(int size) {
  if (_pending + kHeaderSize >= _bufferSize && Flush() != 0) return 1;
  unsigned char header[kHeaderSize];
  SetSize(header, size);
  AppendRaw(header, sizeof header);
  return 0;
}

// Appends bytes that need not fit into the buffer.
int TASocket::AppendLong(std::string_view bytes) {
  while (!bytes.empty()) {
    if (_pending == _bufferSize && Flush() != 0) return 1;
    const std::size_t taken = std::min(bytes.size(), _bufferSize - _pending);
    AppendRaw(bytes.data(), taken);
    bytes.remove_prefix(taken);
  }
  return 0;
}

bool TASocket::MustCompress() const {
  return _state == kCompressed || getenv("TASocketCompress") != nullptr;
}

int TASocket::FailForSize(long long size) {
  _sizeMessage = "Unable to put block in buffer (block size is " + std::to_string(size) + ")";
  return Fail(_sizeMessage.c_str());
}

// Puts a compressed block.  \a next gives the words one by one: the definitions of those that are
// new on this connection go first, then the numbers of all of them.
template <typename NextWord>
int TASocket::PutWords(int mark, NextWord next) {
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
    if (Write(id) != 0 || Write(VorString(word)) != 0) return 1;
  }
  if (Write(vor::kEndOfDefinitions) != 0 || Write(static_cast<int>(ids.size())) != 0) return 1;
  for (const int id : ids) {
    if (Write(id) != 0) return 1;
  }
  return 0;
}

int TASocket::PutBlock(const char* text) noexcept {
  if (BeginWrite() != 0) return 1;
  const std::string_view bytes = text == nullptr ? "" : text;
  const std::size_t size = bytes.size();
  if (size > static_cast<std::size_t>(kLargestSize))
    return FailForSize(static_cast<long long>(size));
  if (_pending + size + kHeaderSize >= _bufferSize) {
    if (Flush() != 0) return 1;
    if (size + kHeaderSize >= _bufferSize) return FailForSize(static_cast<long long>(size));
  }
  const int length = static_cast<int>(size);
  if (!MustCompress()) {
    AppendHeader(length);
    AppendRaw(bytes.data(), size);
    Count(_writePerfo, size);
    return 0;
  }
  if (size == 0) return AppendHeader(0);
  // Every blank ends a word, so that blanks side by side enclose empty words.
  std::string word;
  std::size_t start = 0;
  return PutWords(-length, [&]() -> const char* {
    if (start > size) return nullptr;
    const std::size_t end = std::min(bytes.find(' ', start), size);
    word.assign(bytes, start, end - start);
    start = end + 1;
    return word.c_str();
  });
}

int TASocket::PutBlock(const VorString& text) noexcept {
  return PutBlock(text.CastToCharPtr());
}

int TASocket::PutBlock(const VorListValVorString& list) noexcept {
  if (BeginWrite() != 0) return 1;
  if (!MustCompress()) {
    VorString joined;
    ToLine(list, joined);
    return PutBlock(joined);
  }
  long long size = list.Size() - 1;  // blanks
  for (int i = 1; i <= list.Size(); ++i) size += static_cast<long long>(AsC(list[i]).size());
  if (size > kLargestSize) return FailForSize(size);
  int position = 0;
  return PutWords(-std::max(list.Size(), 1), [&]() -> const char* {
    return position < list.Size() ? list[++position].CastToCharPtr() : nullptr;
  });
}

int TASocket::Write(int value) {
  if (BeginWrite() != 0) return 1;
  if (_pending + kIntegerSize >= _bufferSize && Flush() != 0) return 1;
  unsigned char bytes[kIntegerSize];
  auto rest = static_cast<std::uint32_t>(value);
  for (unsigned char& byte : bytes) {
    byte = static_cast<unsigned char>(rest & 0xFF);
    rest >>= 8;
  }
  AppendRaw(bytes, sizeof bytes);
  Count(_writePerfo, sizeof bytes);
  return 0;
}

int TASocket::Write(const VorString& text) noexcept {
  const std::string_view bytes = AsC(text);
  if (bytes.size() > static_cast<std::size_t>(INT32_MAX))
    return FailForSize(static_cast<long long>(bytes.size()));
  if (Write(static_cast<int>(bytes.size())) != 0) return 1;
  if (_pending + bytes.size() >= _bufferSize && Flush() != 0) return 1;
  if (AppendLong(bytes) != 0) return 1;
  // The four bytes of the length are counted for the second time; reports have always had it so.
  Count(_writePerfo, bytes.size() + kIntegerSize);
  return 0;
}

int TASocket::PutBinBlock(int n, const void* data) noexcept {
  if (BeginWrite() != 0) return 1;
  if (n < 0 || n > kLargestSize) return FailForSize(n);
  if (AppendHeader(n) != 0) return 1;
  if (n > 0) {
    // The data follow what waits in the buffer without a detour through it.
    iovec pieces[] = {{_writeBuffer.get(), std::exchange(_pending, 0)},
                      {const_cast<void*>(data), static_cast<std::size_t>(n)}};
    if (!vor::SendAll(_fd, pieces, 2)) return Fail(kNotFlushed);
  }
  Count(_writePerfo, static_cast<std::size_t>(n));
  return 0;
}
