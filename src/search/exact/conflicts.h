// Characters that contradict each other: a lower bound on homoplasy that no partial tree shows yet.
//
// Two characters are in conflict if no tree fits both without homoplasy: the states that occur
// together in some taxon, drawn as edges between the states of the one and those of the other, make
// a circle. Of characters that are all in conflict with one another, all but one must therefore
// have homoplasy in the end. The bound takes characters without homoplasy on the partial tree and
// divides them greedily into such sets; each set is charged for all of its characters but the
// dearest. Where characters cost different amounts, a set is charged for what its cheapest member
// has left, which is taken off all of them, and those that have something left go on into other
// sets.
//
// What is charged here comes on top of the length of the partial tree and of the states to come,
// since it counts only homoplasy of characters that have none there.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "search/exact/packed_fields.h"

namespace zeb {

class character_conflicts {
 public:
  using bits = std::uint64_t;
  /// Conflicts among these fields.
  character_conflicts(const search_data& data, std::span<const single_state_field> fields);

  /// Words of a set of characters.
  std::size_t set_words() const { return set_words_; }
  /// All characters that are in conflict with some.
  void fill(bits* set) const;
  /// Takes those out of the set in which the two sets of states don't meet.
  void drop_failing(const word* a, const word* b, bits* set) const;
  /// The bound for a set of characters without homoplasy.
  double bound(const bits* set);
  /// The same; sets all bits of the fields that are charged in `charged`, which is cleared first.
  double bound(const bits* set, word* charged);

 private:
  struct member {
    int word_number;
    word mask;
    double cost;  // of its first step of homoplasy
  };
  template <class on_charge>
  double charge(const bits* set, on_charge&& charged);

  std::size_t words_ = 0;
  std::size_t set_words_ = 0;
  bool one_cost_ = true;  // all members cost the same
  std::vector<member> members_;
  std::vector<bits> neighbours_;  // set_words_ for each member
  std::vector<bits> left_;        // scratch
  std::vector<bits> candidates_;
  std::vector<double> costs_left_;
  std::vector<int> clique_;
};

}  // namespace zeb
