#ifndef VOR_SOCKET_SOCKETBYTES_H
#define VOR_SOCKET_SOCKETBYTES_H

#include "../base/Export.h"

// Every block of a TASocket begins with its size in four printable bytes: digits of base 64, the
// least significant first, each with 32 added.  Sizes from 0 to TASocket::kLargestBlock
// (16,777,215) are decoded unchanged.
//
// A negative size has 64 added to each digit as well.  Decoding keeps only its sign, which marks a
// compressed block.

/// Decodes \a header.  The result is negative if any byte has the mark of a negative size.  Bytes
/// that SetSize never writes are decoded to some number, which may exceed kLargestBlock.
VOR_API int GetSize(unsigned char (&header)[4]);

/// Encodes \a n into \a header.  A size above 16,777,215 loses its upper bits.
VOR_API void SetSize(unsigned char (&header)[4], int n);

/// Receives \a n bytes from the socket \a fd, in pieces of at most 10,240 bytes.  Returns the
/// number of bytes that arrived before the peer closed or an error occurred; 0 if \a n is less
/// than 1.
VOR_API int socketsaferead(int fd, char* buffer, int n);

#endif  // VOR_SOCKET_SOCKETBYTES_H
