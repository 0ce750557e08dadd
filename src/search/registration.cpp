#include "search/registration.h"

#include "engine/hooks.h"
#include "matrix/matrix_layout.h"
#include "search/search_results.h"
#include "search/store/swap_collapse.h"

namespace zeb {

void register_search() {
  hooks_of_engine.collapse_by_swapping = collapse_by_swapping;
  add_new_matrix_hook(forget_lowest_score);
}

}  // namespace zeb
