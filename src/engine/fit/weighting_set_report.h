// What `xpiwe &` tells of weighting sets.
#pragma once

namespace zeb {

/// Reads what is wanted and for which trees, up to the ";", and shows it.
void report_weighting_sets();

}  // namespace zeb
