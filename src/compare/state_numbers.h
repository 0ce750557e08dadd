// One numbering for the states of a character that two data sets have.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "compare/data_set.h"
#include "compare/name_sketch.h"

namespace zeb {

constexpr int most_numbered_states = 32;

/// From the states of either set to those of the combination; -1: beyond what a cell can hold.
struct state_numbers {
  std::vector<int> of_first;
  std::vector<int> of_second;
  std::vector<std::string> names;  // of the combination; empty for DNA and the like
  struct equivalence {
    int first, second;
  };
  std::vector<equivalence> approximate;  // states that aren't called quite the same
  std::vector<int> only_in_first;
  std::vector<int> only_in_second;
  bool sequences_differ = false;
  bool overflow = false;  // the two have more states than a cell can hold
};

/// A cell with states renumbered; a state without a number makes it missing.
std::uint32_t renumbered(std::uint32_t states, const std::vector<int>& numbers);

struct state_rules {
  bool by_similarity = true;
  bool additive = false;  // the sequence of the states counts
  /// Are two states with names alike the same? Null: yes.
  std::function<bool(int first, int second)> confirm = {};
  /// The sequences differ: is the first one kept? Null: yes.
  std::function<bool()> keep_first_sequence = {};
};
state_numbers number_states(const data_character& first, const data_character& second,
                            const state_rules& rules);
/// Have the two characters states so much alike that they may be the same one: at least half of
/// those of the one that has fewer?
bool states_are_alike(const data_character& first, const data_character& second,
                      bool by_similarity);

/// A quick look at the same question, for many pairs: false only where the answer is no.
class state_sketch {
 public:
  explicit state_sketch(const data_character& character);
  bool may_be_alike(const state_sketch& other) const;

 private:
  std::vector<name_sketch> names_;
};

}  // namespace zeb
