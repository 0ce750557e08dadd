// All most parsimonious reconstructions of a character on a tree, one by one: a state for each
// internal node, polytomies hard. A terminal has the state of its cell that is nearest to its
// ancestor's; what else it might have doesn't make another reconstruction.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "mapping/tree_shape.h"

namespace zeb {

struct reconstruction_rules {
  /// Discrete characters: by node, the states of the matrix (bits) that an internal node may have;
  /// 0 or empty: any. A set that the character has no state of leaves its node free. With such
  /// rules the reconstructions are the shortest of those that obey them.
  std::span<const std::uint32_t> allowed;
  /// Continuous characters: thousandths between the values tried within the range that a node may
  /// have, whose ends are tried in any case; 0: its ends only.
  int increment = 0;
};

/// Which values a node can have, given that of its ancestor.
class value_choices;

/// Values are states of the matrix; thousandths of a continuous character. Landmarks have none.
class reconstruction_list {
 public:
  /// The shape must outlive it.
  reconstruction_list(const tree_shape& shape, int character,
                      const reconstruction_rules& rules = {});
  ~reconstruction_list();

  /// How many there are; exact up to 2 to the power of 53. 1 where no terminal says anything.
  double count() const { return count_; }
  /// What each of them costs, unweighted; thousandths for continuous characters.
  std::int64_t steps() const;

  /// Goes on to the next one; the first call to the first one. False after the last.
  bool next();
  /// Of the reconstruction at hand, at any node of the tree; -1 where no terminal says anything.
  int value(int node) const { return values_[at(node)]; }
  /// The values of the internal node in any of them, ascending.
  const std::vector<int>& values_of(int node) const { return possible_[at(node)]; }

 private:
  void find_possible_values();
  void count_them();
  void choose(std::size_t place);

  const tree_shape& shape_;
  std::unique_ptr<value_choices> choices_;
  std::vector<std::vector<int>> possible_;  // by node
  double count_ = 1;
  bool begun_ = false;
  std::vector<int> values_;             // by node
  std::vector<std::vector<int>> open_;  // by place in the order of internal nodes: its choices
  std::vector<std::size_t> chosen_;     // and which of them is at hand
};

}  // namespace zeb
