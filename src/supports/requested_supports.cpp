#include "supports/requested_supports.h"

#include "supports/bremer_search.h"
#include "supports/bremer_swap.h"
#include "supports/bremer_trees.h"

namespace zeb {

bremer_result requested_supports(const bremer_request& request) {
  if (request.how.source == bremer_settings::by_swapping) return supports_by_swapping(request);
  if (request.how.source == bremer_settings::by_searching) return supports_by_searching(request);
  return supports_from_trees(request);
}

}  // namespace zeb
