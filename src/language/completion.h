// What the <tab> key completes at the console.
#pragma once

#include <string_view>

#include "console/hooks.h"

namespace zeb {

/// Commands where one begins; after it the options of its table, or else names of files.
completion complete_line(std::string_view before_cursor);

}  // namespace zeb
