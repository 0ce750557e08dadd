// What the macro language hands to the rooms below at start-up.
#pragma once

namespace zeb {

void register_macro();

}  // namespace zeb
