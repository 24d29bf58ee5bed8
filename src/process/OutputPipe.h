#ifndef VOR_PROCESS_OUTPUTPIPE_H
#define VOR_PROCESS_OUTPUTPIPE_H

#include <cstddef>
#include <memory>
#include <string>

#include "base/PosixFile.h"

namespace vor {

/// A pipe that collects the output of a child.  Its descriptors are above 2 and close-on-exec.
class OutputPipe {
 public:
  /// Keeps the first \a maxBytes.
  explicit OutputPipe(std::size_t maxBytes) : _maxBytes(maxBytes) {}
  OutputPipe(const OutputPipe&) = delete;
  OutputPipe& operator=(const OutputPipe&) = delete;

  /// Returns 0 or errno.
  int Open();

  /// The end for the child.
  int Writer() const { return _writer.Get(); }
  void CloseWriter() { _writer.Reset(-1); }

  /// Waits at most \a limitMs milliseconds until there is output, which it reads, or the process
  /// with the descriptor \a process has ended.  May return early.
  void Collect(const FileDescriptor& process, int limitMs);

  /// Reads what is in the pipe, and nothing that is written to it meanwhile.
  void Drain();

  /// Whether all that was read was kept.
  bool IsComplete() const { return !_hasDropped; }
  /// Moves the text to the caller.
  std::string Take() { return std::move(_text); }

 private:
  std::size_t Read(std::size_t most);

  const std::size_t _maxBytes;
  FileDescriptor _reader;  // not open: at the end of file
  FileDescriptor _writer;
  std::unique_ptr<char[]> _buffer;
  std::string _text;
  bool _hasDropped = false;
};

}  // namespace vor

#endif  // VOR_PROCESS_OUTPUTPIPE_H
