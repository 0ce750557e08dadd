// What the user asked of the console and of the program's chatter.
#pragma once

#include <string>

namespace zeb {

/// Written by the small commands of these names.
struct console_settings {
  bool report = true;  // progress and chatter
  bool warn = false;   // ask before going on at warnings
  bool beep = true;
  bool break_polling = true;         // `break`: <esc>, "p" and "m" are polled
  bool echo_console_to_log = false;  // `echo [`: console lines go to the log
  bool echo = false;                 // commands are named as they run
  bool progress_bars = true;         // `report [`: bars and counters of long commands
  bool auto_view = false;            // the viewer is shown whenever the console asks for a line
  std::string break_text;            // `break /`: shown on <esc>, with a query; empty: none
  // `report +T/R/N`: a line of a search's status is kept every so often; 0 never.
  int status_seconds = 0;
  int status_replications = 0;
  int status_trees = 0;
};
extern console_settings settings;

void set_break_polling(bool on);
void set_break_text(std::string text);
void set_auto_view(bool on);
void set_status_intervals(int seconds, int replications, int trees);
/// A background run has nobody to chat with.
void settle_for_background();

/// For its lifetime there is no chatter.
class quiet_scope {
 public:
  quiet_scope() { settings.report = false; }
  ~quiet_scope() { settings.report = saved_; }
  quiet_scope(const quiet_scope&) = delete;
  quiet_scope& operator=(const quiet_scope&) = delete;

 private:
  bool saved_ = settings.report;
};

}  // namespace zeb
