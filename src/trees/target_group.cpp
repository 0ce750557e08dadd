#include "trees/target_group.h"

#include "base/errors.h"
#include "language/lexer.h"
#include "trees/tree_store.h"

namespace zeb {

void target_group::start() const {
  if (number >= 0 && replace) clear_tree_group(number);
}

void target_group::add(int tree) const {
  if (number >= 0) add_to_tree_group(tree, number);
}

target_group read_target_group() {
  target_group group;
  if (accept_char('=')) {
    group.replace = true;
  } else if (!accept_char('>')) {
    return group;
  }
  group.number = read_int();
  if (group.number < 0 || group.number >= store.tgroup_limit) {
    error_end_f("Can store trees only as groups 0-%i", store.tgroup_limit - 1);
  }
  return group;
}

}  // namespace zeb
