// Options of `sectsch` that are more than a keyword and a number: what follows the keyword is read.
#pragma once

#include <string>

#include "search/sectors/sectors.h"

namespace zeb {

/// "xss N", "N-M", "+R", "-G".
void read_exclusive(sector_settings& settings);
/// "dss N D".
void read_around(sector_settings& settings);
/// "selfactor N", "selfactor = X Y Z".
void read_selections(sector_settings& settings);
/// "[commands]", the first pair for sectors of the tree at hand, the next one for sectors of those.
/// "[*]" stands for what the pair before says, "[]" for none.
void read_instructions(sector_settings& settings);
/// "recurse N".
void read_recursion(sector_settings& settings);
/// "slack N".
void read_slack(sector_settings& settings);
/// "xbuffer", "noxbuffer".
void use_private_buffer(sector_settings& settings);
void use_no_private_buffer(sector_settings& settings);

/// The options above that set what differs from the defaults, and the selection that is in force
/// after them; "" for none.
std::string changed_forms(const sector_settings& settings);

}  // namespace zeb
