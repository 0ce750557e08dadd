#include "walking/registration.h"

#include <string>
#include <vector>

#include "language/methods.h"
#include "language/settings_scope.h"
#include "walking/node_walk.h"
#include "walking/walk_nesting.h"

namespace zeb {
namespace {

std::vector<std::string> settings_as_commands() {
  const walk_limits standard;
  std::vector<std::string> lines;
  if (walk_order.as_drawn) lines.emplace_back("travtree +");
  const auto add = [&lines](const char* command, int limit, int usual) {
    if (limit != usual) lines.push_back(command + std::to_string(limit));
  };
  add("travtree = ", walk_levels.travtree, standard.travtree);
  add("iterrecs = ", walk_levels.iterrecs, standard.iterrecs);
  add("combine = ", walk_levels.combine, standard.combine);
  return lines;
}

}  // namespace

void register_walking() {
  add_settings(noted<walk_order>);
  add_settings(noted<walk_levels>);
  add_methods(methods_part::session, settings_as_commands);
}

}  // namespace zeb
