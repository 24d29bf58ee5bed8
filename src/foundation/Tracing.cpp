#include "foundation/Tracing.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/utsname.h>
#include <time.h>

#include <charconv>
#include <iostream>
#include <string_view>

#include "base/NullText.h"
#include "base/VorStackTrace.h"

namespace {

struct tm LocalTime() {
  const time_t now = time(nullptr);
  struct tm local = {};
  localtime_r(&now, &local);
  return local;
}

// Writes the parts as a line.  They are not joined first: that needs memory, and the message may
// report that memory has run out.
template <typename... Parts>
void PutLine(std::ostream& stream, const Parts&... parts) {
  try {
    // Without this, the stream would drop every line after one failed write, for instance to a full
    // disk.
    if (!stream.good()) stream.clear();
    (stream << ... << parts) << std::endl;
  } catch (const std::ios_base::failure&) {  // if the tool has asked the stream to throw
  }
}

void PutTrace(std::string_view message, int header) {
  if (header == 0) {
    PutLine(std::cout, "   ", message);
    return;
  }
  PutLine(std::cout);
  PutLine(std::cout);
  PutLine(std::cout, "## ", GetShortDate(), " - ", message);
  PutLine(std::cout);
}

}  // namespace

void FATAL(int condition, const char* message) {
  if (condition == 0) return;
  PutLine(std::cerr, "FATAL INTERNAL ERROR ------------------------");
  PutLine(std::cerr, vor::TextOrEmpty(message));
  PutLine(std::cerr, "STACK ---------------------------------------");
  // The banner goes to standard error, the trace to standard output: test harnesses look for them
  // there.
  VorStackTrace stack;
  stack.GetTrace();
  stack.Print(stdout, 0, 0);
  abort();
}

void Trace(const char* message, int header) {
  PutTrace(vor::TextOrEmpty(message), header);
}

void Trace(const VorString& message, int header) {
  PutTrace(message.View(), header);
}

void TraceErr(const VorString& message) {
  // No blank after the colon: log filters match this text.
  PutLine(std::cout, "   ERROR :", message.View());
}

void TraceStdErr(const char* message) {
  PutLine(std::cerr, vor::TextOrEmpty(message));
}

void TraceStdErr(const VorString& message) {
  PutLine(std::cerr, message.View());
}

VorString GetDate() {
  const time_t now = time(nullptr);
  tzset();             // ctime must read the time zone again, ctime_r need not
  char text[64] = {};  // ctime_r needs 26 bytes, more only for years of five digits
  if (ctime_r(&now, text) == nullptr) return VorString();
  text[24] = '\0';  // drops the newline
  return VorString(text);
}

VorString GetSortDate() {
  const struct tm local = LocalTime();
  char text[96];
  snprintf(text, sizeof text, "%.2d-%.2d-%.2d-%.2d-%.2d-%.2d", local.tm_year + 1900,
           local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
  return VorString(text);
}

VorString GetDay() {
  const struct tm local = LocalTime();
  char text[64];
  snprintf(text, sizeof text, "%.2d/%.2d/%.2d", local.tm_mday, local.tm_mon + 1,
           local.tm_year + 1900);
  return VorString(text);
}

VorString GetShortDate() {
  const struct tm local = LocalTime();
  char text[64];
  snprintf(text, sizeof text, "%.2d-%.2d.%.2d:%.2d", local.tm_mon + 1, local.tm_mday, local.tm_hour,
           local.tm_min);
  return VorString(text);
}

VorString GetHostName() {
  struct utsname names = {};
  uname(&names);
  return VorString(names.nodename);
}

VorString toString(int value) {
  char text[16];
  const std::to_chars_result end = std::to_chars(text, text + sizeof text, value);
  return VorString(std::string(text, end.ptr));
}
