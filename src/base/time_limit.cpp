#include "base/time_limit.h"

#include "base/command.h"

namespace zeb {

time_limit_state time_limit;

void set_time_limit(unsigned seconds) { time_limit.seconds = seconds; }
void disarm_time_limit() { time_limit.armed = false; }

bool time_is_out() {
  return time_limit.armed && time_limit.seconds > 0 && command_seconds() >= time_limit.seconds;
}

}  // namespace zeb
