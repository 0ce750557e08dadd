#include "mapping/soft_polytomy.h"

#include <algorithm>
#include <bit>

namespace zeb {

soft_polytomy::soft_polytomy(const state_model& model,
                             std::span<const std::span<const std::int64_t>> from_above)
    : model_(model),
      n_(model.size()),
      sets_(std::size_t{1} << from_above.size()),
      own_(sets_ * n_, impossible_cost),
      above_(own_) {
  for (std::size_t set = 1; set < sets_; ++set) {
    std::int64_t* const above = &above_[set * n_];
    if (std::has_single_bit(set)) {
      const auto& only = from_above[static_cast<std::size_t>(std::countr_zero(set))];
      std::copy(only.begin(), only.end(), above);
      continue;
    }
    std::int64_t* const own = &own_[set * n_];
    for (std::size_t part = (set - 1) & set; part > (set ^ part); part = (part - 1) & set)
      for (std::size_t i = 0; i < n_; ++i)
        own[i] = std::min(own[i], above_[part * n_ + i] + above_[(set ^ part) * n_ + i]);
    for (std::size_t i = 0; i < n_; ++i)
      for (std::size_t j = 0; j < n_; ++j) above[i] = std::min(above[i], model.cost(i, j) + own[j]);
  }
}

// From the whole set to its parts: a part hangs on a node whose other part costs what it costs, and
// beyond which is what is beyond the set.
std::vector<std::vector<std::int64_t>> soft_polytomy::rest(
    std::span<const std::int64_t> outside) const {
  std::vector<std::int64_t> at_base(own_.size(), impossible_cost);
  std::vector<std::int64_t> at_foot(own_.size(), impossible_cost);
  std::copy(outside.begin(), outside.end(), at_base.end() - static_cast<std::ptrdiff_t>(n_));
  std::vector<std::vector<std::int64_t>> rests(static_cast<std::size_t>(std::countr_zero(sets_)));
  for (std::size_t set = sets_ - 1; set > 0; --set) {
    const std::int64_t* const foot = &at_foot[set * n_];
    std::int64_t* const base = &at_base[set * n_];
    if (std::has_single_bit(set)) {
      rests[static_cast<std::size_t>(std::countr_zero(set))].assign(foot, foot + n_);
      continue;
    }
    for (std::size_t i = 0; i < n_ && set != sets_ - 1; ++i)
      for (std::size_t j = 0; j < n_; ++j) base[j] = std::min(base[j], foot[i] + model_.cost(i, j));
    for (std::size_t part = (set - 1) & set; part > 0; part = (part - 1) & set)
      for (std::size_t i = 0; i < n_; ++i)
        at_foot[part * n_ + i] =
            std::min(at_foot[part * n_ + i], base[i] + above_[(set ^ part) * n_ + i]);
  }
  return rests;
}

}  // namespace zeb
