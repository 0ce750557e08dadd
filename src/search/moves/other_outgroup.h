// Another taxon in the part of the outgroup for a while.
#pragma once

#include <cstdint>
#include <span>

#include "base/random.h"
#include "engine/search_data.h"

namespace zeb {

/// While one lives, terminal 0 and another terminal, drawn at random, have each other's states, so
/// that trees rooted on terminal 0 are rooted on that taxon. Where lengths depend on the root it
/// does nothing. Node sets are wrong after its end, until a full pass.
class other_outgroup {
 public:
  other_outgroup(search_data& data, random_generator& random);
  ~other_outgroup();
  other_outgroup(const other_outgroup&) = delete;
  other_outgroup& operator=(const other_outgroup&) = delete;

  /// Roots a binary tree of the search (internal numbering) on the other terminal, and names the
  /// two terminals as their states are.
  void root_there(std::span<std::int32_t> tree) const { exchange_labels(tree); }
  /// The way back.
  void root_back(std::span<std::int32_t> tree) const { exchange_labels(tree); }

 private:
  void exchange_labels(std::span<std::int32_t> tree) const;

  search_data& data_;
  int stand_in_ = 0;
};

}  // namespace zeb
