#ifndef VOR_SOCKET_SIZEMESSAGE_H
#define VOR_SOCKET_SIZEMESSAGE_H

namespace vor {

/// Returns the message that a block of \a size bytes does not fit.  May be called by any thread.
///
/// The text is never freed; a repeated size returns the same text.  After 1,024 other sizes it is
/// overwritten in place, so that hostile sizes cannot exhaust memory.
const char* SizeMessage(long long size);

}  // namespace vor

#endif  // VOR_SOCKET_SIZEMESSAGE_H
