// Set bits of every 16-bit value, for the narrow kernels.
#pragma once

#include <array>
#include <cstdint>

namespace zeb {

/// bitcount16[x] is the number of set bits of x.
extern const std::array<std::uint8_t, 65536> bitcount16;

}  // namespace zeb
