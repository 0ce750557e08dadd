#include "engine/plain/plain_set_kernels.h"

namespace zeb {

void plain_down(const std::uint32_t* left, const std::uint32_t* right, std::uint32_t* down,
                std::uint32_t* reach, std::int32_t* steps, std::size_t columns) noexcept {
  for (std::size_t i = 0; i < columns; ++i) {
    const std::uint32_t both = left[i] & right[i];
    const std::uint32_t either = left[i] | right[i];
    const std::uint32_t failed = both ? 0 : ~std::uint32_t{0};
    down[i] = both | (either & failed);
    reach[i] = either | failed;
    steps[i] += static_cast<std::int32_t>(failed & 1);
  }
}

void plain_final(const std::uint32_t* ancestor, const std::uint32_t* down,
                 const std::uint32_t* reach, const std::uint32_t* observed, std::uint32_t* final,
                 std::size_t columns) noexcept {
  for (std::size_t i = 0; i < columns; ++i) {
    const std::uint32_t own = ((ancestor[i] & reach[i]) | down[i]) & observed[i];
    final[i] = (ancestor[i] & ~down[i]) == 0 ? ancestor[i] : own;
  }
}

}  // namespace zeb
