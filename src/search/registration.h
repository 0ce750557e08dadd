// What the searches hand to the floors below at start-up.
#pragma once

namespace zeb {

void register_search();

}  // namespace zeb
