#ifndef VOR_SOCKET_BLOCKFORMAT_H
#define VOR_SOCKET_BLOCKFORMAT_H

#include <cstddef>

namespace vor {

// The bytes between two sockets.  There is no handshake and no version: both ends follow this page.
//
//   block            a header, then a body
//   header           4 bytes: the size of the body in digits of base 64, the least significant
//                    first, each with 32 added, so that all are printable; a negative size has 64
//                    added to each digit as well
//   integer record   4 bytes, the least significant first
//   string record    an integer record with the length, then the bytes of the text
//   text block       a block of text; the empty text is a header alone
//   binary block     a block of any bytes
//   file             blocks of its bytes, none larger than the write buffer of the sender; an empty
//                    block; a text block with the count of all bytes in decimal
//
// Word compression.  Each end numbers the words that it sends on a connection, from 0 in order of
// first use.  A compressed text block is
//
//   header           of any negative size, which marks the block as compressed
//   definitions      of words that are new to the receiver: an integer record with the number, a
//                    string record with the word
//   integer record   -1, which ends the definitions
//   integer record   the count of words in the text
//   integer records  the number of each word
//
// A single blank separates words, so that two blanks enclose an empty word.  In a list each element
// is a word, blanks included.  A sender compresses while TASocketCompress is set.  A receiver keeps
// the words by number until the connection is closed.  After its first compressed block it reads
// every text block as a compressed one and compresses every text block that it sends.  It accepts
// word numbers in any order and keeps the first word that is defined for a number.

constexpr std::size_t kHeaderSize = 4;  // bytes
constexpr int kBlank = 32;              // added to each digit of a header
constexpr int kNegative = 64;           // in each digit of a negative size
constexpr int kLargestSize = 16777215;  // of four digits
constexpr std::size_t kIntegerSize = 4;

constexpr int kEndOfDefinitions = -1;

constexpr int kLargestPiece = 10240;  // bytes: see GetBlock and socketsaferead

constexpr const char* kNoSize = "Unable to get block size";
constexpr const char* kNotFull = "Unable to get full block";

/// True if each byte is one that SetSize can write.  GetSize decodes other headers to sizes that no
/// block has.  The mark of a negative size may be on some digits only.
inline bool IsHeader(const unsigned char (&header)[kHeaderSize]) {
  for (const unsigned char byte : header) {
    if (byte < kBlank || byte >= kBlank + 2 * kNegative) return false;
  }
  return true;
}

}  // namespace vor

#endif  // VOR_SOCKET_BLOCKFORMAT_H
