#ifndef VOR_SOCKET_FILETRANSFER_H
#define VOR_SOCKET_FILETRANSFER_H

#include <cstddef>

namespace vor {

class BlockReader;
class BlockWriter;
struct Connection;

/// Sends the file \a path.  Returns 0, or 1 with the reason in \a connection.
int SendFile(Connection& connection, BlockWriter& writer, const char* path);

/// Receives into the file \a path, which is created or emptied.  Blocks have at most \a largest
/// bytes; \a dropsReturns removes carriage returns.  Returns 0, or 1 with the reason in
/// \a connection.
int ReceiveFile(Connection& connection, BlockReader& reader, const char* path, std::size_t largest,
                bool dropsReturns);

}  // namespace vor

#endif  // VOR_SOCKET_FILETRANSFER_H
