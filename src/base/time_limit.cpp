#include "base/time_limit.h"

#include "base/command.h"

namespace zeb {

time_limit_state time_limit;

void set_time_limit(unsigned seconds) { time_limit.seconds = seconds; }
void expire_time_limit() { time_limit.expired = true; }
void renew_time_limit() { time_limit.expired = false; }
void disarm_time_limit() { time_limit.armed = false; }

const char* end_of_time_text() {
  return time_limit.expired ? "Parent process mandated not to do more searches!\n"
                            : "Interrupting search (time is out!)\n";
}

bool time_is_out() {
  if (!time_limit.armed) return false;
  return time_limit.expired || (time_limit.seconds > 0 && command_seconds() >= time_limit.seconds);
}

}  // namespace zeb
