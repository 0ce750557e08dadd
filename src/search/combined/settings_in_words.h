// The settings of the combined search, as `xmult:;` lists them.
#pragma once

#include <string>
#include <vector>

#include "search/combined/combined_settings.h"

namespace zeb {

std::vector<std::string> lines_of_settings(const combined_settings& settings);

}  // namespace zeb
