#include "engine/kernels/bit_counts.h"

namespace zeb {
namespace {

constexpr std::array<std::uint8_t, 65536> make_counts() {
  std::array<std::uint8_t, 65536> counts{};
  for (std::uint32_t i = 1; i < 65536; ++i)
    counts[i] = static_cast<std::uint8_t>(counts[i >> 1] + (i & 1));
  return counts;
}

}  // namespace

constinit const std::array<std::uint8_t, 65536> bitcount16 = make_counts();

}  // namespace zeb
