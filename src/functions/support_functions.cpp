// What the last analyses of supports found.
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "supports/last_supports.h"
#include "supports/resampling/sibyl.h"

namespace zeb {
namespace {

double support_of_node() {
  const double node = bracketed_whole_values(1, 1)[0];
  const std::vector<double>& supports = last_supports.of_node;
  if (supports.empty()) error_end("There are no supports yet: see \"resample\"");
  if (node < 0 || node >= static_cast<double>(supports.size()))
    error_end("No node", static_cast<std::int64_t>(node), "in the last analysis of supports");
  return supports[static_cast<std::size_t>(node)];
}

double sibyl_value() {
  const double which = bracketed_whole_values(1, 1)[0];
  const auto& values = last_sibyl.values;
  if (which < 0 || which >= static_cast<double>(values.size()))
    error_end("\"lastsibyl\" can take 10 values (0-9)");
  return values[static_cast<std::size_t>(which)];
}

// clang-format off
constexpr expression_function rows[] = {
    {"lastsupp", "[N]", "support of node N in the last analysis of supports", support_of_node},
    {"lastsibyl", "[N]", "value N of the last \"resample sibyl\": 0 supported, 2 compatible, 4 wrong, 6 missed groups, as shares; after each the share of the groups that a tree can have; 8 groups of a replicate, 9 replicates", sibyl_value},
};
// clang-format on

}  // namespace

const std::span<const expression_function> support_functions = rows;

}  // namespace zeb
