#include "search/search_settings.h"

namespace zeb {

swap_settings swapping;
search_settings_state search_settings;

void set_swapping(const swap_settings& wanted) { swapping = wanted; }

void set_suboptimal(double absolute, double relative) {
  search_settings.suboptimal = absolute;
  search_settings.relative_suboptimal = relative;
}

void set_clips_between_reports(int clips) { search_settings.clips_between_reports = clips; }

void set_best_by_constraints(bool on) { search_settings.best_by_constraints = on; }

}  // namespace zeb
