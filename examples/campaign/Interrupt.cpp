#include "Interrupt.h"

#include <signal.h>

#include <initializer_list>

namespace campaign {
namespace {

volatile sig_atomic_t interrupts = 0;
volatile sig_atomic_t mostInterrupts = 1;  // that are only noted

void NoteInterrupt(int number) {
  if (interrupts >= mostInterrupts) {
    signal(number, SIG_DFL);
    raise(number);  // ends the process when this handler returns
    return;
  }
  interrupts = interrupts + 1;
}

}  // namespace

void CatchInterrupts() {
  struct sigaction action = {};
  action.sa_handler = NoteInterrupt;
  sigfillset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction inherited = {};
    sigaction(signal, nullptr, &inherited);
    if (inherited.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
}

bool IsInterrupted() {
  return interrupts != 0;
}

InterruptDelay::InterruptDelay() {
  mostInterrupts = 2;
}

InterruptDelay::~InterruptDelay() {
  mostInterrupts = 1;
}

}  // namespace campaign
