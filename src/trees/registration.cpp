#include "trees/registration.h"

namespace zeb {

void register_trees() {
  register_tree_store();
  register_tree_lists();
  register_display();
  register_tree_file();
  register_auto_save();
}

}  // namespace zeb
