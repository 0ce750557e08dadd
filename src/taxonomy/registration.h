// What the taxonomy hands down at start-up.
#pragma once

namespace zeb {

void register_taxonomy();

}  // namespace zeb
