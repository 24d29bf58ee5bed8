#ifndef VOR_FOUNDATION_TRACING_H
#define VOR_FOUNDATION_TRACING_H

#include <concepts>

#include "../base/Export.h"
#include "../base/VorString.h"

/// The number types that have values outside the range of int.
template <typename Number>
concept VorBeyondInt = std::floating_point<Number> ||
    (std::integral<Number> && sizeof(Number) >= sizeof(int) && !std::same_as<Number, int>);

// Fatal errors, trace lines, and the small formatters that they use.
//
// Nothing here keeps state or fails.  Every line is flushed.  A line that cannot be written is
// lost; later lines are still written.
//
// Threads: every function may be called from any thread; lines of different threads may interleave.

/// Ends the process if \a condition is non-zero; does nothing if it is 0.
///
/// Writes a banner with \a message on standard error and the stack trace of the calling thread on
/// standard output, then calls abort().  No destructor runs.
VOR_API void FATAL(int condition, const char* message);

/// Writes a progress line on standard output.  If \a header is 0, it is three blanks and the
/// message.  Otherwise it is a heading with the time, with two empty lines before it and one after
/// it.
VOR_API void Trace(const char* message, int header);
VOR_API void Trace(const VorString& message, int header);

/// Writes "   ERROR :" and the message, without a blank between them, as a line on standard output.
VOR_API void TraceErr(const VorString& message);

/// Writes the message as a line on standard error.
VOR_API void TraceStdErr(const char* message);
VOR_API void TraceStdErr(const VorString& message);

/// Local time as "Fri Jan  2 03:04:05 2026".
VOR_API VorString GetDate();

/// Local time as "2026-01-02-03-04-05": sorting such texts sorts them by time.
VOR_API VorString GetSortDate();

/// Local date as "02/01/2026", day first.
VOR_API VorString GetDay();

/// Local time as "01-02.03:04", month and day first.
VOR_API VorString GetShortDate();

/// The node name of this machine, without a network look-up.
VOR_API VorString GetHostName();

/// \a value in decimal.
VOR_API VorString toString(int value);
template <VorBeyondInt Number>
VorString toString(Number) = delete;  // use VorString(std::to_string(number)) instead

#endif  // VOR_FOUNDATION_TRACING_H
