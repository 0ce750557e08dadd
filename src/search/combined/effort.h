// Changes of the effort in the midst of a combined search.
#pragma once

#include "search/combined/combined_settings.h"
#include "search/search_context.h"

namespace zeb {

/// What `adjust_effort` is asked.
struct effort_check {
  int failures = 0;
  int period = 1;
  bool also_replications = false;
};
/// That of a set which fails again and again.
constexpr effort_check after_failures{3, 1, false};

/// Adjusts it, and tells it, with the time since `start`. True if the effort changed.
bool change_effort(const search_context& context, combined_settings& options,
                   combined_stages& stages, const effort_check& check, double start);

}  // namespace zeb
