#include "supports/last_supports.h"

#include <utility>

namespace zeb {

last_supports_state last_supports;

void keep_supports(std::vector<double> of_node) { last_supports.of_node = std::move(of_node); }

}  // namespace zeb
