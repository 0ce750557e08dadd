// Settings that every search obeys and that small commands change.
#pragma once

namespace zeb {

/// Written by `subopt` and, for the length of a run, by the search drivers. The time-out is among
/// the shell's settings.
struct search_settings_state {
  double suboptimal = 0;  // trees up to this much above the best are kept; score units
  double relative_suboptimal =
      0;  // largest relative fit difference to the tree being swapped; 0 off
};
extern search_settings_state search_settings;

}  // namespace zeb
