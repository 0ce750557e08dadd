// How the matrix becomes packed words: which characters take part, how wide their fields are, where
// the fields lie, and which steps are the same on all trees and need no words.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/search_data.h"

namespace zeb {

/// The states of a character that tell trees apart.
struct informative_states {
  std::uint32_t kept = 0;    // states that get bits
  std::uint32_t unique = 0;  // states of a single taxon, whose steps no tree can save
  std::uint32_t full = 0;    // a cell with all of these says nothing
  bool additive = false;
};

/// What the words of a data set will hold, before any memory is taken.
struct packing_plan {
  std::vector<pack_entry> entries;         // in matrix order
  std::vector<informative_states> states;  // by entry
  std::int64_t base_steps = 0;             // weighted steps of characters dropped as constant
  double base_fit = 0;                     // implied weights: weighted fit of those characters
  bool implied_on = false;
  bool uniform_mode = true;
  bool per_char_mode = false;
  std::vector<std::int32_t> word_weight;  // word-weight mode: a weight for each word
  std::array<int, packing_groups> field_count{};
};

/// Classifies the active characters over the taxa given (matrix rows). `word_weights` allows words
/// of one weight each, which the 32-bit kernels gain from. Errors as prepare_search_data. Under
/// implied weights characters keep their own weights, and those of several fields come first.
packing_plan plan_packing(std::span<const std::int32_t> taxa, bool word_weights);

/// States of a character that are worth bits, over the given taxa.
informative_states trim_states(int character, std::span<const std::int32_t> taxa);

/// Chooses the weight mode of a plan and moves entries to fill words; then sets `first_field` of
/// all entries and the field counts.
void place_fields(packing_plan& plan, bool word_weights);

/// Writes the cell of one taxon for one entry into its words (`down` of a terminal, all ones
/// before). Returns the unweighted steps that the cell adds on every tree.
int encode_cell(const search_data& data, const pack_entry& entry, const informative_states& states,
                std::uint32_t cell, word* down);

/// Lets go of the packed matrix when its lock is released. An unlock hook.
void forget_packed_data(const int* tag);

/// Takes the memory of a data set whose taxa, groups and words are known: tree arrays, node sets,
/// weight tables and scratch, from the low stack of the arena.
void allocate_search_data(search_data& data);

}  // namespace zeb
