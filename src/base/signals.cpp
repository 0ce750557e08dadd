#include "base/signals.h"

#include <atomic>
#include <csignal>
#include <initializer_list>

namespace zeb {
namespace {

/// Another signal may come at any moment, so that each change is one step.
struct signal_note {
  std::atomic<int> signal = 0;
};
signal_note note;
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void note_signal(int signal) {
  int present = note.signal;
  while ((present == 0 || present == SIGINT) &&
         !note.signal.compare_exchange_weak(present, signal)) {
  }
}

}  // namespace

void note_signals() {
  note.signal = 0;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction former {};
    if (sigaction(signal, nullptr, &former) != 0 || former.sa_handler == SIG_IGN) continue;
    struct sigaction noting {};
    noting.sa_handler = note_signal;  // without SA_RESTART: what waits wakes up
    sigaction(signal, &noting, nullptr);
  }
}

int noted_signal() { return note.signal; }
void forget_signal() { note.signal = 0; }

bool take_interrupt_signal() {
  int present = SIGINT;
  return note.signal.compare_exchange_strong(present, 0);
}

const char* signal_name(int signal) {
  switch (signal) {
    case SIGINT:
      return "SIGINT";
    case SIGTERM:
      return "SIGTERM";
    case SIGHUP:
      return "SIGHUP";
    default:
      return "a signal";
  }
}

}  // namespace zeb
