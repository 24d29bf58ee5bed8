#ifndef VOR_TESTS_SUPPORT_TREEOUTPUT_H
#define VOR_TESTS_SUPPORT_TREEOUTPUT_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PosixFile.h"
#include "base/VorString.h"
#include "support/TempDir.h"

/// A named pipe that is the output of a whole tree.
class TreeOutput {
 public:
  TreeOutput() {
    chmod(_dir.Path().c_str(), 0755);
    mkfifo((_dir / "pipe").c_str(), 0600);
    chmod((_dir / "pipe").c_str(), 0666);
    _pipe.Reset(open((_dir / "pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  }

  VorString Path() const { return VorString(_dir / "pipe"); }

  void ReadLines(int count) const {
    while (count > 0) {
      const char byte = Next();
      ASSERT_NE(byte, '\0') << "lines are missing";
      if (byte == '\n') --count;
    }
  }

  /// The next line, a number.
  int ReadNumber() const {
    int number = 0;
    for (char byte = Next(); byte != '\n' && byte != '\0'; byte = Next()) {
      number = 10 * number + (byte - '0');
    }
    return number;
  }

  /// Whether all processes of the tree end.
  bool Ends() const {
    while (Next() != '\0') continue;
    return _isAtEnd;
  }

 private:
  // NUL at the end, or if nothing comes for long.
  char Next() const {
    pollfd poll = {_pipe.Get(), POLLIN, 0};
    char byte = '\0';
    _isAtEnd = ::poll(&poll, 1, 15'000) == 1 && read(_pipe.Get(), &byte, 1) == 0;
    return byte;
  }

  const TempDir _dir;
  vor::FileDescriptor _pipe;
  mutable bool _isAtEnd = false;
};

#endif  // VOR_TESTS_SUPPORT_TREEOUTPUT_H
