// What the walks hand down at start-up.
#pragma once

namespace zeb {

void register_walking();

}  // namespace zeb
