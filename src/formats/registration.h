// What the foreign formats hand down at start-up.
#pragma once

namespace zeb {

/// Hands `procedure` its readers. Called once, at start-up.
void register_formats();

}  // namespace zeb
