// What two data sets share and where they differ.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "compare/data_set.h"
#include "compare/decisions.h"
#include "compare/matching.h"
#include "compare/state_numbers.h"

namespace zeb {

/// What is compared, and how. The first set is the newer one, the second the older.
struct comparison_task {
  const data_set& first;
  const data_set& second;
  decision_maker& decisions;
  std::vector<forced_pair> forced_taxa;
  std::vector<forced_pair> forced_characters;
  bool by_similarity = true;   // of names; else they must be the same
  bool compare_states = true;  // characters are the same only if their states are alike
  bool by_taxon = false;       // cells are gone through taxon by taxon
};

enum class setting_kind { additivity, weight, activity, internal_steps, costs, ancestral_states };
struct setting_difference {
  int character;  // of the first set
  setting_kind kind;
};

/// Numbers of the first set. `result` is what the combination gets, with states numbered as there.
struct cell_difference {
  int taxon;
  int character;
  std::uint32_t first;
  std::uint32_t second;
  std::uint32_t result;
  bool first_is_missing;
  bool second_is_missing;
  bool is_observed() const { return !first_is_missing && !second_is_missing; }
};

/// A continuous character that both sets have. A value of the second set, times the factor and
/// plus the shift, is one on the scale of the first.
struct scale_match {
  int character;  // of the first set
  double factor = 1;
  double shift = 0;
  bool is_changed = false;      // the scales differ
  bool beyond_scaling = false;  // so many entries differ that nothing was asked
  /// Entries of taxa that both sets have and that differ on one scale, or are in one set only.
  struct entry {
    int taxon;  // of the first set
    entry_range first, second, result;
    bool first_is_missing, second_is_missing, result_is_missing;
  };
  std::vector<entry> differences;
};

/// A configuration that both sets have for a taxon and that differs; numbers of the first set.
struct landmark_difference {
  int taxon;
  int character;
  bool solved;    // the second one, realigned, is the same
  bool replaced;  // the combination has `result`
  bool first_is_missing, second_is_missing;
  std::vector<landmark_point> result;  // of the second set, laid on that of the first
};

/// How many differences of each kind there are.
struct comparison_counts {
  int taxa_added = 0, taxa_deleted = 0;
  int characters_added = 0, characters_deleted = 0;
  int missing_resolved = 0, missing_added = 0;
  int states = 0;  // without a match
  int weights = 0;
  int additivity = 0;
  int activity = 0;
  int internal_steps = 0;
  int costs = 0;  // settings of step matrices
  int ancestral_states = 0;
  int cells = 0;      // different states
  int sequences = 0;  // of states of additive characters
  int scales = 0;     // of continuous characters
  int landmarks = 0, landmarks_solved = 0;
  int landmarks_missing_first = 0;  // the second set's stand in for them
  int landmarks_missing_second = 0;
  int critical_cells = 0;
  int scorings_added = 0, scorings_deleted = 0;  // cells with a state that the other set lacks
  bool any() const;
};

struct comparison {
  correspondence taxa;
  correspondence characters;
  std::vector<state_numbers> states;  // by character of the first set; for those that both have
  std::vector<setting_difference> settings;
  std::vector<int> sequences;  // additive characters (of the first set) whose sequences differ
  std::vector<character_record> chosen_settings;  // by character of the first set
  std::vector<cell_difference> cells;
  std::vector<scale_match> scales;
  std::vector<landmark_difference> landmarks;
  bool realign_landmarks = false;  // some character has configurations of both sets
  comparison_counts counts;
};

/// The characters that both sets have, by number in the first set, for which `wanted` holds.
template <class predicate>
std::vector<int> shared_characters(const comparison_task& task, const comparison& found,
                                   predicate wanted) {
  std::vector<int> shared;
  for (int c = 0; c < task.first.nchar(); ++c) {
    if (found.characters.in_second[at(c)] >= 0 && wanted(task.first.characters[at(c)]))
      shared.push_back(c);
  }
  return shared;
}

}  // namespace zeb
