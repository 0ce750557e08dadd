// Settings that every search obeys and that small commands change.
#pragma once

namespace zeb {

/// Written by `subopt`, `timeout` and, for the length of a run, by the search drivers.
struct search_settings_state {
  double suboptimal = 0;  // trees up to this much above the best are kept; score units
  double relative_suboptimal =
      0;                         // largest relative fit difference to the tree being swapped; 0 off
  unsigned timeout_seconds = 0;  // limit counted from `process.command_start`; 0 none
  bool timeout_armed = true;     // off while a summary prints: the limit isn't looked at
};
extern search_settings_state search_settings;

}  // namespace zeb
