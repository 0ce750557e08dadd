// What the measures of support hand down at start-up.
#pragma once

namespace zeb {

void register_supports();

}  // namespace zeb
