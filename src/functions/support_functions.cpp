// What the last analyses of supports found.
#include <vector>

#include "base/errors.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "macro/assignment.h"
#include "supports/bremer_requests.h"
#include "supports/last_supports.h"
#include "supports/requested_supports.h"
#include "supports/resampling/sibyl.h"

namespace zeb {
namespace {

double sibyl_value() {
  const double which = bracketed_whole_values(1, 1)[0];
  const auto& values = last_sibyl.values;
  if (which < 0 || which >= static_cast<double>(values.size()))
    error_end("\"lastsibyl\" can take 10 values (0-9)");
  return values[static_cast<std::size_t>(which)];
}

double bremer_list() {
  return write_list("Bremlist", values_by_node(requested_supports(read_bremer_request())));
}

double last_support() {
  const double node = bracketed_whole_values(1, 1)[0];
  const std::vector<double>& values = last_supports.values;
  if (values.empty()) error_end("No supports have been calculated yet");
  if (node < 0 || node >= static_cast<double>(values.size()))
    error_end("Tree doesn't have such node");
  return values[static_cast<std::size_t>(node)];
}

// clang-format off
constexpr expression_function rows[] = {
    {"bremlist", " <options>", "list of Bremer supports, options as for bsupport up to \";\": by node of the tree that bsupport would show; 0 where a node has no support", bremer_list},
    {"lastsupp", "[N]", "support of node N of the tree shown by the last bsupport or resample; 0 where it has none", last_support},
    {"lastsibyl", "[N]", "value N of the last \"resample sibyl\": 0 supported, 2 compatible, 4 wrong, 6 missed groups, as shares; after each the share of the groups that a tree can have; 8 groups of a replicate, 9 replicates", sibyl_value},
};
// clang-format on

}  // namespace

const std::span<const expression_function> support_functions = rows;

}  // namespace zeb
