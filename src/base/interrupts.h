// Stopping a search, or any command, before its end.
#pragma once

namespace zeb {

/// Why a search must end; a search looks at it between clips.
enum class stop_reason { none, user, time };

struct interrupt_state {
  stop_reason reason = stop_reason::none;
  bool in_search = false;  // a search command runs: it is asked to stop, and shows what it has
};
extern interrupt_state interrupts;

/// Must the running search end?
inline bool interrupted() { return interrupts.reason != stop_reason::none; }
void stop_search(stop_reason reason);
/// What was asked of the search that is over isn't asked of the next one.
void forget_interrupt();

/// Looks at the keyboard, or in the background at the steering files, whether the user wants to
/// stop: interrupts by throwing `command_unwinding`, or inside a search by setting
/// `interrupts.reason`.
void check_interrupt();
/// The same, but waits for a key first.
void wait_for_go_ahead();

/// A search runs as long as one lives: the wish to stop sets `interrupts.reason`, instead of ending
/// the command at once.
class search_running {
 public:
  search_running() { interrupts.in_search = true; }
  ~search_running() { interrupts.in_search = outer_; }
  search_running(const search_running&) = delete;
  search_running& operator=(const search_running&) = delete;

 private:
  bool outer_ = interrupts.in_search;
};

}  // namespace zeb
