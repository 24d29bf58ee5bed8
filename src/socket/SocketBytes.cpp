#include "socket/SocketBytes.h"

#include <algorithm>

#include "socket/BlockFormat.h"
#include "socket/SocketIo.h"

using vor::kBlank;
using vor::kNegative;

int GetSize(unsigned char (&header)[4]) {
  int size = 0;
  int marks = 0;
  for (int k = 3; k >= 0; --k) {
    const int digit = header[k] - kBlank;
    size = size * 64 + digit;
    marks |= digit;
  }
  return (marks & kNegative) != 0 ? -size : size;
}

void SetSize(unsigned char (&header)[4], int n) {
  const int mark = n < 0 ? kNegative : 0;
  for (unsigned char& byte : header) {
    byte = static_cast<unsigned char>(((n & 63) | mark) + kBlank);
    n /= 64;
  }
}

int socketsaferead(int fd, char* buffer, int n) {
  int got = 0;
  while (got < n) {
    const auto wanted = static_cast<std::size_t>(std::min(n - got, vor::kLargestPiece));
    const auto received = static_cast<int>(vor::ReceiveSome(fd, buffer + got, wanted));
    if (received <= 0) break;
    got += received;
  }
  return got;
}
