// Selectors of characters for `xgroup`.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace zeb {

/// Carries out the selector named `word`: "len", "homo", "score", "min", "max", "type". False for
/// any other word.
bool select_characters(std::string_view word, std::span<std::uint8_t> selected);

}  // namespace zeb
