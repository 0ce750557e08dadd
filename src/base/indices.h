// Numbers of taxa, characters, nodes and states as indices of containers.
#pragma once

#include <cstddef>

namespace zeb {

/// `number`, which isn't negative, as an index.
constexpr std::size_t at(int number) { return static_cast<std::size_t>(number); }

}  // namespace zeb
