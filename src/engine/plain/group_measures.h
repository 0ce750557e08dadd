#pragma once

namespace zeb {

/// Plugs the lengths into the selectors of `xgroup` and `tgroup`, at start-up.
void register_group_measures();

}  // namespace zeb
