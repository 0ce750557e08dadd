#include "engine/packing/sampled_data.h"

#include <algorithm>
#include <vector>

#include "base/indices.h"
#include "engine/fit/implied_weighting.h"
#include "engine/kernels/kernel_binding.h"
#include "engine/packing/copied_fields.h"
#include "engine/packing/set_memory.h"
#include "matrix/settings/character_settings.h"

namespace zeb {
namespace {

void copy_frame(search_data& sample, const search_data& whole) {
  sample = {};
  sample.n = whole.n;
  sample.nodes = whole.nodes;
  sample.all_taxa = whole.all_taxa;
  sample.pack_to_taxon = whole.pack_to_taxon;
  sample.taxon_to_pack = whole.taxon_to_pack;
  sample.long_words = whole.long_words;
  sample.implied_on = whole.implied_on;
  sample.has_continuous = whole.has_continuous;
  sample.base_steps = whole.base_steps;
  sample.base_fit = whole.base_fit;
  sample.base_set_sums = whole.base_set_sums;
}

void copy_wide_characters(search_data& sample, const search_data& whole,
                          std::span<const std::uint8_t> factors) {
  copy_wide_parts(sample, whole,
                  [factors](const wide_character& c) { return factors[at(c.character)] != 0; });
  sample.wide.base_cost = whole.wide.base_cost;
  for (std::size_t p = 0; p < sample.wide.parts.size(); ++p) {
    auto source = whole.wide.parts[p].characters.begin();
    for (wide_character& c : sample.wide.parts[p].characters) {
      while (source->character != c.character) ++source;
      c.weight *= factors[at(c.character)];
      for (int v = 0; v < sample.n; ++v)
        std::copy_n(whole.wide.down + at(v) * whole.wide.down_words + at(source->down_at),
                    c.room.down, sample.wide.down + at(v) * sample.wide.down_words + at(c.down_at));
    }
  }
}

}  // namespace

/// A character whose changes all cost alike weighs as much as one of them there, and may not be
/// packed at all with a larger weight.
bool sample_fits(const search_data& whole, std::span<const std::uint8_t> factors) {
  if (whole.whole) return false;
  for (const std::span<field_record> fields : whole.fields)
    for (const field_record& f : fields)
      if (f.character >= 0 && std::int64_t{f.weight} * factors[at(f.character)] > largest_weight)
        return false;
  return true;
}

void prepare_sampled_data(search_data& sample, const search_data& whole,
                          std::span<const std::uint8_t> factors) {
  std::vector<std::uint8_t> kept;
  for (const pack_entry& e : whole.entries) kept.push_back(factors[at(e.character)] != 0);
  std::vector<const word*> terminals;
  for (int v = 0; v < whole.n; ++v) terminals.push_back(whole.sets[at(v)].down);
  copy_frame(sample, whole);
  place_entries(sample, whole, kept);
  allocate_search_data(sample);
  copy_packed_characters(sample, whole, kept, terminals);
  for (const std::span<field_record> fields : sample.fields)
    for (field_record& f : fields)
      if (f.character >= 0) f.weight *= factors[at(f.character)];
  if (whole.has_wide) copy_wide_characters(sample, whole, factors);
  allocate_undo(sample);
  if (sample.implied_on) share_fit_tables(sample, whole, numbers_of(kept));
  sample.kernels.width_bits = whole.kernels.width_bits;
  weights_changed(sample);
}

}  // namespace zeb
