// The limit that the user sets to the time of a search, counted from the start of the command.
#pragma once

namespace zeb {

/// Written by the functions and the scope of this file.
struct time_limit_state {
  unsigned seconds = 0;  // 0: no limit
  bool expired = false;  // whatever the clock says, also for later searches
  bool armed = true;     // off while results are shown: nobody looks at the limit
};
extern time_limit_state time_limit;

void set_time_limit(unsigned seconds);
/// The time that was left is of no more concern: what follows is quick, or has to be done.
void disarm_time_limit();
/// All time is used up from now on.
void expire_time_limit();
/// The wish that all time is used up is forgotten.
void renew_time_limit();
/// Why searches end then: a line for the user.
const char* end_of_time_text();
/// Has the running command used up its time?
bool time_is_out();

/// Limit and arming come back when this goes.
class timeout_scope {
 public:
  timeout_scope() = default;
  ~timeout_scope() {
    saved_.expired = time_limit.expired;
    time_limit = saved_;
  }
  timeout_scope(const timeout_scope&) = delete;
  timeout_scope& operator=(const timeout_scope&) = delete;

 private:
  time_limit_state saved_ = time_limit;
};

}  // namespace zeb
