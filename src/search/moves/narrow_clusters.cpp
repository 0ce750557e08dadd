#include "search/moves/narrow_clusters.h"

#include <bit>

namespace zeb {
namespace {

constexpr word all_ones = ~word{0};

// One flag bit in each empty field, and the whole fields of flags, by group; see the engine's
// kernels.
word empty_fields(int group, word x) {
  switch (group) {
    case 0:
      return ~(x >> 1 | x) & 0x55555555U;
    case 1:
      return ~(((x & 0x77777777U) + 0x77777777U) | x) & 0x88888888U;
    case 2:
      return ~(((x & 0x7f7f7f7fU) + 0x7f7f7f7fU) | x) & 0x80808080U;
    default:
      return x ? 0 : 0x80000000U;
  }
}

word whole_fields(int group, word flags) {
  switch (group) {
    case 0:
      return flags | flags << 1;
    case 1:
      return flags | (flags - (flags >> 3));
    case 2:
      return flags | (flags - (flags >> 7));
    default:
      return flags ? all_ones : 0;
  }
}

struct set_bounds {
  word unions = 0;
  word intersection = all_ones;
};

set_bounds bounds_of(const search_data& data, std::span<const std::int32_t> nodes, std::int32_t w) {
  set_bounds bounds;
  for (const std::int32_t v : nodes) {
    const word x = data.branch_base[static_cast<std::size_t>(v) * data.set_stride +
                                    static_cast<std::size_t>(w)];
    bounds.unions |= x;
    bounds.intersection &= x;
  }
  return bounds;
}

}  // namespace

void narrow_pair::choose_words(const search_data& data, std::span<const std::int32_t> subtree_nodes,
                               std::span<const std::int32_t> main_nodes, bool sorted) {
  chosen_.clear();
  fixed_ = 0;
  const std::int32_t ends[] = {data.layout.end0, data.layout.end1, data.layout.end2,
                               data.layout.end3};
  std::int32_t* const new_ends[] = {&layout_.end0, &layout_.end1, &layout_.end2, &layout_.end3};
  std::int32_t w = 0;
  for (int group = 0; group < packing_groups; ++group) {
    while (w < ends[group]) {
      const std::size_t block_start = chosen_.size();
      bool any_relevant = false;
      for (int i = 0; i < words_per_block; ++i, ++w) {
        const set_bounds s = bounds_of(data, subtree_nodes, w);
        const set_bounds m = bounds_of(data, main_nodes, w);
        const word always = empty_fields(group, s.unions & m.unions);
        const word possible = empty_fields(group, s.intersection & m.intersection);
        fixed_ += std::popcount(always);
        const bool relevant = (possible & ~always) != 0;
        any_relevant = any_relevant || relevant;
        if (relevant || !sorted) chosen_.push_back({w, whole_fields(group, always)});
      }
      if (!any_relevant) chosen_.resize(block_start);
    }
    while (chosen_.size() % words_per_block != 0) chosen_.push_back({-1, all_ones});
    *new_ends[group] = static_cast<std::int32_t>(chosen_.size());
  }
  layout_.head = 0;
}

void narrow_pair::copy_sets(const search_data& data, std::span<const std::int32_t> nodes,
                            std::size_t first_row) {
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const word* from = data.branch_base + static_cast<std::size_t>(nodes[i]) * data.set_stride;
    word* to = rows_ + (first_row + i) * stride_;
    for (std::size_t w = 0; w < chosen_.size(); ++w) {
      const word_choice& choice = chosen_[w];
      to[w] = choice.place < 0 ? all_ones : from[choice.place] | choice.settled;
    }
  }
}

bool narrow_pair::prepare(const search_data& data, std::span<const std::int32_t> subtree_nodes,
                          std::span<const std::int32_t> main_nodes, bool sorted,
                          std::int32_t bound) {
  choose_words(data, subtree_nodes, main_nodes, sorted);
  if (fixed_ > bound) return false;
  const std::size_t rows = subtree_nodes.size() + main_nodes.size();
  stride_ = chosen_.size();
  memory_.resize(rows * stride_ + words_per_block);
  const auto misfit = reinterpret_cast<std::uintptr_t>(memory_.data()) % 64;
  rows_ = memory_.data() + (misfit ? (64 - misfit) / sizeof(word) : 0);
  copy_sets(data, subtree_nodes, 0);
  copy_sets(data, main_nodes, subtree_nodes.size());
  row_numbers_.clear();
  for (std::size_t i = 0; i < main_nodes.size(); ++i) {
    row_numbers_.push_back(static_cast<std::int32_t>(subtree_nodes.size() + i));
  }
  return true;
}

int narrow_pair::scan(const search_data& data, int i, int from, std::int32_t bound,
                      std::int32_t* cost) const {
  const int count = static_cast<int>(row_numbers_.size());
  if (fixed_ > bound) return count;
  if (stride_ == 0) {
    *cost = fixed_;
    return from;
  }
  const int found =
      data.kernels.scan_pairs(rows_ + static_cast<std::size_t>(i) * stride_, rows_, stride_,
                              row_numbers_.data(), from, count, layout_, bound - fixed_, cost);
  *cost += fixed_;
  return found;
}

}  // namespace zeb
