#include "engine/packing/packing.h"

#include <algorithm>
#include <cstring>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "engine/fit/fit_curves.h"
#include "engine/fit/implied_weighting.h"
#include "engine/hooks.h"
#include "engine/kernels/kernel_binding.h"
#include "engine/packing/cell_encoding.h"
#include "engine/packing/classification.h"
#include "engine/packing/set_memory.h"
#include "engine/wide/wide_sets.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// Internal numbers: the taxa of the request, then the others in matrix order.
void number_taxa(search_data& data, const packing_request& request) {
  data.n = static_cast<int>(request.taxa.size());
  data.nodes = 2 * data.n - 1;
  data.all_taxa = matrix.ntax;
  data.pack_to_taxon = alloc_low<std::int32_t>(at(matrix.ntax));
  data.taxon_to_pack = alloc_low<std::int32_t>(at(matrix.ntax));
  std::fill(data.taxon_to_pack.begin(), data.taxon_to_pack.end(), -1);
  std::int32_t number = 0;
  const auto take = [&](int taxon) {
    data.pack_to_taxon[at(number)] = taxon;
    data.taxon_to_pack[at(taxon)] = number++;
  };
  for (const std::int32_t t : request.taxa) take(t);
  for (int t = 0; t < matrix.ntax; ++t)
    if (data.taxon_to_pack[at(t)] < 0) take(t);
}

void fill_field_records(search_data& data, const packing_plan& plan) {
  empty_field_records(data);
  for (const pack_entry& e : plan.entries)
    for (int f = 0; f < e.fields * e.repeat; ++f)
      data.fields[at(e.group)][at(e.first_field + f)] = {e.weight, e.min_steps, e.max_steps,
                                                         e.character};
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
      data.entries[i].min_steps -= steps * e.factor;
    }
  }
}

void add_wide_characters(search_data& data, const packing_plan& plan, const fit_rules& rules) {
  data.wide.parts = alloc_low<wide_part>(plan.wide.size());
  for (std::size_t i = 0; i < plan.wide.size(); ++i) {
    const packing_plan::wide_share& share = plan.wide[i];
    const std::span<wide_character> own = alloc_low<wide_character>(share.characters.size());
    std::copy(share.characters.begin(), share.characters.end(), own.begin());
    data.wide.parts[i] = {share.kind, own};
  }
  for (const wide_part& part : data.wide.parts)
    for (wide_character& c : part.characters) {
      c.model = nullptr;
      if (!data.implied_on) continue;
      c.set = rules.set_of_character(c.character);
      c.curve = curve_of(rules, rules.functions[at(c.character)]);
    }
  allocate_wide_sets(data);
  encode_wide_cells(data);
}

void add_landmarks(search_data& data, const packing_request& request) {
  if (!hooks_of_engine.landmarks_of_data) error_end("Nothing here scores landmark characters");
  data.whole = hooks_of_engine.landmarks_of_data(data, request);
}

}  // namespace

void prepare_search_data(search_data& data, const packing_request& request) {
  ALWAYS_CHECK(request.taxa.size() >= 3 && request.weights.size() == at(matrix.nchar),
               "taxa and weights of a data set");
  data = {};
  const packing_plan plan = plan_packing(request);
  number_taxa(data, request);
  data.long_words = request.long_words;
  data.uniform_mode = plan.uniform_mode;
  data.per_char_mode = plan.per_char_mode;
  data.base_steps = plan.base_steps;
  data.base_fit = plan.base_fit;
  data.base_set_sums = alloc_low<double>(plan.base_set_sums.size());
  std::copy(plan.base_set_sums.begin(), plan.base_set_sums.end(), data.base_set_sums.begin());
  data.wide.base_cost = plan.base_wide_cost;
  data.has_continuous = plan.has_continuous;
  data.implied_on = plan.implied_on;
  lay_out_groups(data, plan.field_count);
  data.entries = alloc_low<pack_entry>(plan.entries.size());
  std::copy(plan.entries.begin(), plan.entries.end(), data.entries.begin());
  allocate_search_data(data);
  std::copy(plan.word_weight.begin(), plan.word_weight.end(), data.word_weight.begin());
  fill_field_records(data, plan);
  encode_taxa(data, plan);
  if (!plan.wide.empty()) add_wide_characters(data, plan, request.rules);
  allocate_undo(data);
  if (data.implied_on) {
    data.base_steps = 0;  // steps count by character
    data.wide.base_cost = 0;
    prepare_fit_tables(data, request.rules);
  }
  bind_kernels(data);
  if (plan.has_landmarks) add_landmarks(data, request);
}

}  // namespace zeb
