#include "distances/paced_progress.h"

#include "base/interrupts.h"
#include "console/progress.h"

namespace zeb {

namespace {

constexpr double seconds_between_looks = 0.25;

}  // namespace

paced_progress::~paced_progress() { clear_progress(); }

void paced_progress::poll(double done, double total) {
  const double now = wall_clock();
  if (now - last_ < seconds_between_looks) return;
  last_ = now;
  check_interrupt();
  show_progress(label_, done, total);
}

}  // namespace zeb
