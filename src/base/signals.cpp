#include "base/signals.h"

#include <csignal>
#include <initializer_list>

namespace zeb {
namespace {

struct signal_note {
  volatile std::sig_atomic_t signal = 0;
};
signal_note note;

extern "C" void note_signal(int signal) {
  if (note.signal == 0 || note.signal == SIGINT) note.signal = signal;
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
  if (note.signal != SIGINT) return false;
  forget_signal();
  return true;
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
