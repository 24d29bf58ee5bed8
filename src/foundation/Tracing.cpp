#include "foundation/Tracing.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/utsname.h>
#include <time.h>

#include <charconv>
#include <iostream>
#include <string_view>

#include "base/VorStackTrace.h"

namespace {

struct tm LocalTime() {
  const time_t now = time(nullptr);
  struct tm local = {};
  localtime_r(&now, &local);
  return local;
}

// Fatal errors and trace lines may have to tell that memory is out, so a message is never copied.
std::string_view OrEmpty(const char* message) {
  return message == nullptr ? std::string_view() : message;
}

void PutTrace(std::string_view message, int header) {
  if (header == 0) {
    std::cout << "   " << message << std::endl;
    return;
  }
  std::cout << std::endl << std::endl;
  std::cout << "## " << GetShortDate() << " - " << message << std::endl;
  std::cout << std::endl;
}

}  // namespace

void FATAL(int condition, const char* message) {
  if (condition == 0) return;
  std::cerr << "FATAL INTERNAL ERROR ------------------------" << std::endl;
  std::cerr << OrEmpty(message) << std::endl;
  std::cerr << "STACK ---------------------------------------" << std::endl << std::flush;
  // The banner goes to standard error and the trace to standard output: harnesses that keep the
  // two apart look for each in its place.
  VorStackTrace stack;
  stack.GetTrace();
  stack.Print(stdout, 0, 0);
  abort();
}

void Trace(const char* message, int header) {
  PutTrace(OrEmpty(message), header);
}

void Trace(const VorString& message, int header) {
  PutTrace(message.View(), header);
}

void TraceErr(const VorString& message) {
  // No blank behind the colon; log filters match this text.
  std::cout << "   ERROR :" << message << std::endl;
}

void TraceStdErr(const char* message) {
  std::cerr << OrEmpty(message) << std::endl;
}

void TraceStdErr(const VorString& message) {
  std::cerr << message << std::endl;
}

VorString GetDate() {
  const time_t now = time(nullptr);
  tzset();             // ctime looks at the time zone afresh, ctime_r need not
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
