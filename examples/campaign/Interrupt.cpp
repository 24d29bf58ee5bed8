#include "Interrupt.h"

#include <signal.h>

#include <initializer_list>

namespace campaign {
namespace {

volatile sig_atomic_t interrupted = 0;

void NoteInterrupt(int) {
  interrupted = 1;
}

}  // namespace

void CatchInterrupts() {
  struct sigaction action = {};
  action.sa_handler = NoteInterrupt;
  action.sa_flags = SA_RESETHAND;
  sigemptyset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
}

bool IsInterrupted() {
  return interrupted != 0;
}

}  // namespace campaign
