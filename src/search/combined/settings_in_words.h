// The settings of the combined search, as `xmult:;` lists them and as options.
#pragma once

#include <string>
#include <vector>

#include "search/combined/combined_settings.h"

namespace zeb {

std::vector<std::string> lines_of_settings(const combined_settings& settings);

/// The options that set all that differs from the defaults, those of a level and others that are
/// more than a keyword and a number with the `changed` ones; "" for none. A level sets sectors,
/// too, which a command of their own sets back.
std::string options_in_words(const combined_settings& settings, const sector_settings& sector,
                             const std::string& changed);

}  // namespace zeb
