#include "search/searching_commands.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace zeb {

bool only_searches(const command_row& row) {
  constexpr std::array<std::string_view, 6> others = {"best",   "condense",  "keep",
                                                      "subopt", "randtrees", "unique"};
  return row.topics == topic_searching ||
         std::find(others.begin(), others.end(), row.name) != others.end();
}

}  // namespace zeb
