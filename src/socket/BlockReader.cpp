#include "socket/BlockReader.h"

#include <errno.h>
#include <limits.h>
#include <poll.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include "base/OwnedText.h"
#include "base/VorListValVorString.h"
#include "base/VorString.h"
#include "foundation/FieldScan.h"
#include "perfo/TAPerfo.h"
#include "socket/BlockFormat.h"
#include "socket/Connection.h"
#include "socket/SocketBytes.h"
#include "socket/SocketIo.h"

namespace vor {
namespace {

constexpr std::size_t kFirstRoom = 1 << 16;  // bytes allocated before any have arrived

constexpr const char* kNoTextSize = "Unable to get block size ";  // unlike that of records
constexpr const char* kNoMemory = "Unable to alloc memory for GetBinBlock";

// Cuts each piece of 10,240 bytes at its first NUL.  Tools that log texts with NULs rely on it.
void CutAtNuls(std::string& text) {
  if (text.find('\0') == std::string::npos) return;
  std::string cut;
  constexpr std::size_t kPiece = kLargestPiece;
  for (std::size_t at = 0; at < text.size(); at += kPiece) {
    cut.append(text.data() + at, strnlen(text.data() + at, std::min(kPiece, text.size() - at)));
  }
  text = std::move(cut);
}

}  // namespace

void BlockReader::SetLimits(int seconds, int bytes) {
  _seconds = std::max(seconds, 0);
  _bytes = std::max(bytes, 0);
}

void BlockReader::Clear() {
  _words.Clear();
  _buffer.Clear();
}

int BlockReader::Begin(int timeout) {
  _buffer.BeginRead({_seconds, _bytes, _connection.stallLimit});
  if (_seconds > 0) timeout = timeout >= 1 ? std::min(timeout, _seconds) : _seconds;
  return timeout >= 1 ? WaitForStart(timeout) : 0;
}

int BlockReader::End(int result) {
  return result != 0 && _buffer.IsLate() ? FailForTime() : result;
}

int BlockReader::FailForTime() {
  _connection.Fail("Error reading from stream socket (select): Connection timed out", ETIMEDOUT);
  return 2;
}

// Fails with the reason of the buffer.
int BlockReader::FailShort(const char* message) {
  return _connection.Fail(message, _buffer.Error());
}

int BlockReader::WaitForStart(int timeout) {
  if (!_buffer.IsEmpty()) return 0;
  const Clock::time_point end = Clock::now() + std::chrono::seconds(timeout);
  switch (WaitFor(_connection.fd.Get(), POLLIN, end)) {
    case Wait::kReady:
      return 0;
    case Wait::kTimeOut:
      return FailForTime();
    case Wait::kNotReady:
      _connection.Fail("Error reading from stream socket (select): File descriptor not ready",
                       EAGAIN);
      return 2;
    default:
      return _connection.Fail("Error reading from stream socket (select)", errno);
  }
}

bool BlockReader::Receive(void* out, std::size_t size) {
  return _buffer.Receive(_connection.fd.Get(), out, size);
}

// Memory grows with the bytes that arrive: an announced size may be false.
bool BlockReader::ReceiveInto(std::string& text, std::size_t size) {
  if (!_buffer.Allow(size)) return false;
  text.clear();
  while (text.size() < size) {
    const std::size_t start = text.size();
    text.resize(std::min(size, start + std::max(start, kFirstRoom)));
    if (!Receive(text.data() + start, text.size() - start)) return false;
  }
  return true;
}

int BlockReader::Size(int& size, const char* message) {
  unsigned char header[kHeaderSize];
  if (!Receive(header, sizeof header)) return FailShort(message);
  if (!IsHeader(header)) return _connection.Fail(kNotFull, EBADMSG);
  size = GetSize(header);
  return 0;
}

int BlockReader::Integer(int& value) {
  unsigned char bytes[kIntegerSize];
  if (!Receive(bytes, sizeof bytes)) return FailShort(kNoSize);
  std::uint32_t assembled = 0;
  for (std::size_t i = kIntegerSize; i > 0; --i) assembled = assembled << 8 | bytes[i - 1];
  value = static_cast<int>(assembled);
  return 0;
}

// The text ends at its first NUL, as the C strings of the peers do.
int BlockReader::StringUpTo(std::size_t largest, std::string& text) {
  int length = 0;
  if (Integer(length) != 0) return 1;
  if (length < 0) return _connection.Fail(kNoSize, EBADMSG);
  const auto size = static_cast<std::size_t>(length);
  if (size > largest) return _connection.Fail(kNoSize, EMSGSIZE);
  if (!ReceiveInto(text, size)) return FailShort(kNoSize);
  text.resize(strlen(text.c_str()));
  return 0;
}

int BlockReader::String(VorString& text) try {
  std::string received;
  if (StringUpTo(INT_MAX, received) != 0) return 1;
  text = VorString(std::move(received));
  return 0;
} catch (const std::bad_alloc&) {
  return _connection.Fail(kNoSize, ENOMEM);
}

// The largest text that this end accepts.
std::size_t BlockReader::LargestText() const {
  return static_cast<std::size_t>(_bytes > 0 ? std::min(_bytes, kLargestSize) : kLargestSize);
}

int BlockReader::PlainText(int size, std::string& text) {
  if (!ReceiveInto(text, static_cast<std::size_t>(size))) return FailShort(kNotFull);
  CutAtNuls(text);
  if (_counter != nullptr) _counter->Count(size);
  return 0;
}

// Reads the definitions of a compressed block.  Each defined word occurs in the text with a blank
// after it, so together they have at most \a room bytes.
int BlockReader::Definitions(std::size_t room) {
  std::size_t defined = 0;
  for (int id = 0;;) {
    if (Integer(id) != 0) return 1;
    if (id == kEndOfDefinitions) return 0;
    if (defined == room) return _connection.Fail(kNotFull, EMSGSIZE);
    std::string word;
    if (StringUpTo(room - defined - 1, word) != 0) return 1;
    defined += word.size() + 1;
    _words.Define(id, std::move(word));
  }
}

// Reads what follows the header of a compressed block, and calls use(word) for each word of it.
template <typename Use>
int BlockReader::Words(Use use) {
  const std::size_t room = LargestText() + 1;
  if (Definitions(room) != 0) return 1;
  int count = 0;
  if (Integer(count) != 0) return 1;
  // Otherwise a few bytes could repeat long words many times.
  if (count > kLargestSize) return _connection.Fail(kNotFull, EMSGSIZE);
  std::size_t total = 0;
  for (; count > 0; --count) {
    int id = 0;
    if (Integer(id) != 0) return 1;
    const std::string* const found = _words.Find(id);
    if (found == nullptr) return _connection.Fail(kNotFull, EBADMSG);
    total += found->size() + 1;
    if (total > room) return _connection.Fail(kNotFull, EMSGSIZE);
    use(*found);
  }
  return 0;
}

int BlockReader::Text(VorString& text) try {
  text = VorString();
  int size = 0;
  if (Size(size, kNoTextSize) != 0) return 1;
  if (size == 0) return 0;
  if (size < 0) _connection.isCompressed = true;
  std::string received;
  if (!_connection.isCompressed) {
    if (PlainText(size, received) != 0) return 1;
  } else {
    bool isFirst = true;
    const int result = Words([&](const std::string& word) {
      if (!std::exchange(isFirst, false)) received += ' ';
      received += word;
    });
    if (result != 0) return 1;
  }
  text = VorString(std::move(received));
  return 0;
} catch (const std::bad_alloc&) {
  return _connection.Fail(kNotFull, ENOMEM);
}

int BlockReader::List(VorListValVorString& list) try {
  int size = 0;
  if (Size(size, kNoTextSize) != 0) return 1;
  if (size == 0) return 0;
  if (size < 0) _connection.isCompressed = true;
  // Copied by std::string, which throws if memory runs out; a copy of VorString would end the
  // process.
  const auto append = [&list](std::string_view word) { list.Append(VorString(std::string(word))); };
  if (_connection.isCompressed) return Words(append);
  std::string received;
  if (PlainText(size, received) != 0) return 1;
  // The same fields as those of Split.
  FieldScan words(received, " ");
  for (std::string_view word; words.Next(&word);) append(word);
  return 0;
} catch (const std::bad_alloc&) {
  return _connection.Fail(kNotFull, ENOMEM);
}

int BlockReader::Binary(int* n, void** data) {
  int size = 0;
  if (Size(size, kNoSize) != 0) return 1;
  if (size < 0) return _connection.Fail(kNoMemory, EBADMSG);
  const auto wanted = static_cast<std::size_t>(size);
  if (!_buffer.Allow(wanted)) return FailShort(kNotFull);
  OwnedText bytes;
  std::size_t got = 0;
  do {
    const std::size_t room = std::min(wanted, std::max(2 * got, kFirstRoom));
    void* const grown = realloc(bytes.get(), std::max<std::size_t>(room, 1));
    if (grown == nullptr) return _connection.Fail(kNoMemory, ENOMEM);
    static_cast<void>(bytes.release());  // realloc has freed or moved it
    bytes.reset(static_cast<char*>(grown));
    if (!Receive(bytes.get() + got, room - got)) return FailShort(kNotFull);
    got = room;
  } while (got < wanted);
  *n = size;
  *data = bytes.release();
  return 0;
}

}  // namespace vor
