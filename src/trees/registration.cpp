#include "trees/registration.h"


namespace zeb {

void register_trees() {
  register_tree_store();
  register_tree_lists();
  register_display();
}

}  // namespace zeb
