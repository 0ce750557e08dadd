#include "supports/last_supports.h"

#include <utility>

namespace zeb {

last_supports_state last_supports;

void keep_supports(std::vector<double> values) { last_supports.values = std::move(values); }

}  // namespace zeb
