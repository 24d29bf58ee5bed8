#ifndef VOR_SOCKET_BLOCKFORMAT_H
#define VOR_SOCKET_BLOCKFORMAT_H

#include <cstddef>

namespace vor {

// What travels between two sockets: blocks with a header in front, and records.

constexpr std::size_t kHeaderSize = 4;   // bytes, each a digit of base 64
constexpr int kBlank = 32;               // added to each digit
constexpr int kNegative = 64;            // in each digit of a negative size
constexpr int kLargestSize = 16777215;   // that four digits can tell
constexpr std::size_t kIntegerSize = 4;  // bytes of an integer record

constexpr int kEndOfDefinitions = -1;  // in the place of a word's number

constexpr int kLargestPiece = 10240;  // bytes of a text that a NUL can cut, and of one receive

constexpr const char* kNoSize = "Unable to get block size";
constexpr const char* kNotFull = "Unable to get full block";
constexpr const char* kNotFlushed = "Unable to flush buffer";

/// True if SetSize can have made the header.  GetSize takes others too, and gives sizes that no
/// block has.  Not all digits need the mark of a negative size: one is as good as four.
inline bool IsHeader(const unsigned char (&header)[kHeaderSize]) {
  for (const unsigned char byte : header) {
    if (byte < kBlank || byte >= kBlank + 2 * kNegative) return false;
  }
  return true;
}

}  // namespace vor

#endif  // VOR_SOCKET_BLOCKFORMAT_H
