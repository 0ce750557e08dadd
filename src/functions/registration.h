// What the expression functions hand to the rooms below at start-up.
#pragma once

namespace zeb {

void register_functions();

}  // namespace zeb
