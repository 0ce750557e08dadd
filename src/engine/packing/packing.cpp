// Classifying characters, and making a data set of them.
#include "engine/packing/packing.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "engine/fit/implied_weighting.h"
#include "language/data_memory.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// Kinds that the passes can't score yet end the command rather than be left out.
void refuse_unavailable(int character) {
  const character_record& record = matrix.characters[at(character)];
  if (record.is_continuous)
    error_end("Searches with continuous characters are not available yet: deactivate character",
              character);
  if (record.type == landmark_data)
    error_end("Searches with landmark characters are not available yet: deactivate character",
              character);
  if (record.is_sankoff)
    error_end("Searches with step-matrix characters are not available yet: deactivate character",
              character);
}

int natural_group_of(const informative_states& states) {
  const int count = std::popcount(states.kept);
  if (states.additive || count <= 2) return 0;
  return count < 5 ? 1 : count < 9 ? 2 : 4;
}

/// Internal numbers: the outgroup, the other active taxa in matrix order, the inactive ones.
std::vector<std::int32_t> number_taxa() {
  std::vector<std::int32_t> order = {matrix.outgroup};
  for (int t = 0; t < matrix.ntax; ++t)
    if (t != matrix.outgroup && matrix.taxon_active[at(t)]) order.push_back(t);
  for (int t = 0; t < matrix.ntax; ++t)
    if (t != matrix.outgroup && !matrix.taxon_active[at(t)]) order.push_back(t);
  return order;
}

void lay_out_groups(search_data& data, const packing_plan& plan) {
  int start = 0;
  for (int g = 0; g < packing_groups; ++g) {
    const int block_fields = fields_per_word[at(g)] * words_per_block;
    const int blocks = (plan.field_count[at(g)] + block_fields - 1) / block_fields;
    data.field_count[at(g)] = blocks * block_fields;
    data.group_words[at(g)] = blocks * words_per_block;
    data.group_start[at(g)] = start;
    start += data.group_words[at(g)];
  }
  data.group_start[packing_groups] = start;
  data.nwords = start;
}

void fill_field_records(search_data& data, const packing_plan& plan) {
  for (std::span<field_record>& group : data.fields)
    for (field_record& f : group) {
      f = {};
      f.character = -1;
    }
  for (const pack_entry& e : plan.entries) {
    const auto least = minimum_steps(e.character);
    const auto most = maximum_steps(e.character);
    for (int f = 0; f < e.fields * e.repeat; ++f) {
      field_record& record = data.fields[at(e.group)][at(e.first_field + f)];
      record.weight = e.weight;
      record.min_steps = least;
      record.max_steps = most;
      record.character = e.character;
      record.homoplasy_base = e.internal_steps;
    }
  }
}

void encode_taxa(search_data& data, const packing_plan& plan) {
  for (int v = 0; v < data.n; ++v) {
    word* const down = data.sets[at(v)].down;
    std::memset(down, 0xff, at(data.nwords) * sizeof(word));
    const int taxon = data.pack_to_taxon[at(v)];
    for (std::size_t i = 0; i < plan.entries.size(); ++i) {
      const pack_entry& e = plan.entries[i];
      const int steps = encode_cell(data, e, plan.states[i], cell(taxon, e.character), down);
      if (steps == 0) continue;
      data.base_steps += std::int64_t{steps} * e.weight * e.repeat;
      for (int f = 0; f < e.fields * e.repeat; ++f)
        data.fields[at(e.group)][at(e.first_field + f)].min_steps -= steps;
    }
  }
}

/// What the packed data depend on besides the cells, whose changes always drop them.
std::vector<std::int32_t> settings_in_force() {
  std::vector<std::int32_t> list = {matrix.ntax, matrix.nchar, matrix.outgroup,
                                    engine.long_words & 2};
  for (int t = 0; t < matrix.ntax; ++t) list.push_back(matrix.taxon_active[at(t)]);
  for (const character_record& c : matrix.characters)
    list.push_back(c.weight * 8 + c.active * 4 + c.additive * 2 + c.is_sankoff);
  if (engine.implied_on) {
    const auto k = std::bit_cast<std::array<std::int32_t, 2>>(engine.concavity);
    list.insert(list.end(), {k[0], k[1], engine.extended_on});
    for (const character_record& c : matrix.characters) list.push_back(c.internal_steps);
  }
  return list;
}

/// The data set of the matrix; its spans lie in the arena under the optimisation lock.
struct packed_matrix {
  search_data data;
  std::vector<std::int32_t> made_for;
  bool valid = false;
};
packed_matrix packed;

}  // namespace

void forget_packed_data(const int* tag) {
  if (tag != &locks.optimisation_lock) return;
  packed.valid = false;
  if (current_search_data == &packed.data) current_search_data = nullptr;
}

namespace {

void pack_matrix() {
  const std::vector<std::int32_t> taxa = number_taxa();
  search_data& data = packed.data;
  data = search_data{};
  data.n = active_taxa();
  data.nodes = 2 * data.n - 1;
  data.all_taxa = matrix.ntax;
  const std::span<const std::int32_t> active = std::span(taxa).first(at(data.n));
  const packing_plan plan = plan_packing(active, (engine.long_words & 2) == 0);
  data.uniform_mode = plan.uniform_mode;
  data.per_char_mode = plan.per_char_mode;
  data.base_steps = plan.base_steps;
  data.base_fit = plan.base_fit;
  data.implied_on = plan.implied_on;
  data.extended_on = engine.extended_on;
  data.concavity = engine.concavity;
  lay_out_groups(data, plan);
  data.pack_to_taxon = alloc_low<std::int32_t>(taxa.size());
  data.taxon_to_pack = alloc_low<std::int32_t>(taxa.size());
  for (std::size_t i = 0; i < taxa.size(); ++i) {
    data.pack_to_taxon[i] = taxa[i];
    data.taxon_to_pack[at(taxa[i])] = static_cast<std::int32_t>(i);
  }
  data.entries = alloc_low<pack_entry>(plan.entries.size());
  std::copy(plan.entries.begin(), plan.entries.end(), data.entries.begin());
  allocate_search_data(data);
  std::copy(plan.word_weight.begin(), plan.word_weight.end(), data.word_weight.begin());
  fill_field_records(data, plan);
  encode_taxa(data, plan);
  if (data.implied_on) {
    data.base_steps = 0;  // steps count by character
    prepare_fit_tables(data);
  }
  bind_kernels(data);
}

}  // namespace

packing_plan plan_packing(std::span<const std::int32_t> taxa, bool word_weights) {
  packing_plan plan;
  plan.implied_on = engine.implied_on;
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& record = matrix.characters[at(c)];
    if (!record.active || record.weight == 0) continue;
    refuse_unavailable(c);
    if (minimum_steps(c) >= maximum_steps(c)) {
      plan.base_steps += std::int64_t{record.weight} * maximum_steps(c);
      plan.base_fit +=
          record.weight * (record.internal_steps / (engine.concavity + record.internal_steps));
      continue;
    }
    const informative_states states = trim_states(c, taxa);
    pack_entry e{};
    e.character = c;
    e.group = e.natural_group = natural_group_of(states);
    e.fields = !states.additive || states.kept == 0
                   ? 1
                   : 31 - std::countl_zero(states.kept) - std::countr_zero(states.kept);
    e.repeat = 1;
    e.weight = record.weight;
    e.internal_steps = record.internal_steps;
    e.spread = maximum_steps(c) - minimum_steps(c);
    plan.entries.push_back(e);
    plan.states.push_back(states);
  }
  place_fields(plan, word_weights);
  return plan;
}

// No progress is shown: packing takes less time than a line of it.
void prepare_search_data(bool, bool silent) {
  if (!matrix.present) error_end("Must read data before searching");
  if (active_taxa() < 3) error_end("Searches need at least 3 active taxa");
  std::vector<std::int32_t> wanted = settings_in_force();
  if (packed.valid && packed.made_for == wanted) {
    current_search_data = &packed.data;
    return;
  }
  recheck_steps();
  drop_packed_data();
  pack_matrix();
  lock(&locks.optimisation_lock);
  packed.made_for = std::move(wanted);
  packed.valid = true;
  current_search_data = &packed.data;
  if (!silent && memory.extra_for_searches && arena_free() < arena.size / 20)
    warning(
        "Free memory is low (below 5% of search memory).\nYou may run out of memory during the "
        "search.\n");
}

}  // namespace zeb
