// Weights that differ for a while from those that a data set was packed with.
//
// Nothing is packed anew: the fields, the sets of terminals and their places stay, and only the
// weights that the kernels read change. A character that weighs nothing still has its sets, and is
// in them as it would be with any weight. Steps that all trees share (`base_steps`) keep their
// weight, so scores of perturbed data are right up to a constant.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/search_data.h"

namespace zeb {

/// Puts the weights back at the end of its life.
class reweighting {
 public:
  explicit reweighting(search_data& data);
  ~reweighting();
  reweighting(const reweighting&) = delete;
  reweighting& operator=(const reweighting&) = delete;

  /// Each character weighs `factor[character]` times what it was packed with (by character of the
  /// matrix); what is above the largest weight stays there. A full pass must follow.
  void multiply(std::span<const std::uint8_t> factor);
  /// Back to the weights of packing. A full pass must follow.
  void put_back();

 private:
  search_data& data_;
  const bool uniform_;
  const bool per_char_;
  bool changed_ = false;
  std::vector<std::int32_t> weights_;  // as packed: of all fields, then of the wide characters
};

/// The characters of the matrix that take part in searches over these data, each once, ascending.
std::vector<std::int32_t> searched_characters(const search_data& data);

}  // namespace zeb
