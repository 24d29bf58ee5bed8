#ifndef VOR_FOUNDATION_TRACING_H
#define VOR_FOUNDATION_TRACING_H

#include "base/Export.h"
#include "base/VorString.h"

// Fatal errors, trace lines and the small formatters they are built from.
//
// Nothing here keeps state or fails.  Every line is flushed.  Threads: every function may be
// called from any thread; lines written by different threads at once may interleave.

/// Ends the process if \a condition is non-zero, so callers write FATAL(something-went-wrong,
/// text): a banner with \a message on standard error, the stack trace of the calling thread on
/// standard output, then abort().  No destructor runs.  With condition 0 nothing happens.
VOR_API void FATAL(int condition, const char* message);

/// Writes a progress line on standard output: with \a header 0 the message behind three blanks,
/// otherwise a heading with the time, two empty lines before and one behind it.
VOR_API void Trace(const char* message, int header);
VOR_API void Trace(const VorString& message, int header);

/// Writes "   ERROR :" and at once the message as a line on standard output, not standard error.
VOR_API void TraceErr(const VorString& message);

/// Writes the message as a line on standard error.
VOR_API void TraceStdErr(const char* message);
VOR_API void TraceStdErr(const VorString& message);

/// Local time as "Fri Jan  2 03:04:05 2026".
VOR_API VorString GetDate();

/// Local time as "2026-01-02-03-04-05"; as plain text it sorts in the order of time.
VOR_API VorString GetSortDate();

/// Local date as "02/01/2026", day first.
VOR_API VorString GetDay();

/// Local time as "01-02.03:04", month and day first.
VOR_API VorString GetShortDate();

/// The node name of this machine, without any look-up in the network.
VOR_API VorString GetHostName();

/// \a value in decimal.
VOR_API VorString toString(int value);

#endif  // VOR_FOUNDATION_TRACING_H
