#include "engine/packing/packed_matrix.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "engine/packing/packing.h"
#include "engine/packing/sampled_data.h"
#include "language/commands/memory_command.h"
#include "matrix/character_steps.h"
#include "matrix/matrix.h"

namespace zeb {

namespace {

/// Settings of characters that the words depend on besides weights. Changes of cells always drop
/// the packed data.
std::vector<std::int32_t> character_settings() {
  std::vector<std::int32_t> list;
  for (const character_record& c : matrix.characters)
    list.push_back(c.internal_steps * 4 + c.additive * 2 + c.is_sankoff);
  return list;
}

struct packed_state {
  search_data data;
  search_data* part = nullptr;  // these stand in its place
  packing_request part_made_for;
  std::vector<std::int32_t> part_settings;
  packing_request made_for;
  std::vector<std::int32_t> settings;
  bool valid = false;
  int sampling_scopes = 0;
  search_data sample;  // of `data`, under a lock of its own
  int sample_lock = 0;
  std::vector<std::int32_t> sample_weights;  // that it was made for
};
packed_state packed;

/// What each character weighs in units of what it was packed with; empty where that isn't a whole
/// number for some.
std::vector<std::uint8_t> factors_to(const packing_request& wanted) {
  packing_request same_weights = wanted;
  same_weights.weights = packed.made_for.weights;
  if (same_weights != packed.made_for) return {};
  std::vector<std::uint8_t> factors(wanted.weights.size(), 0);
  for (std::size_t c = 0; c < factors.size(); ++c) {
    const std::int32_t as_packed = packed.made_for.weights[c];
    if (wanted.weights[c] == 0) continue;
    if (as_packed == 0 || wanted.weights[c] % as_packed != 0) return {};
    const std::int32_t factor = wanted.weights[c] / as_packed;
    if (factor > std::numeric_limits<std::uint8_t>::max()) return {};
    factors[c] = static_cast<std::uint8_t>(factor);
  }
  return factors;
}

/// A sample of the packed data, where that is what is wanted; null elsewhere.
search_data* sample_for(const packing_request& wanted) {
  if (packed.sampling_scopes == 0) return nullptr;
  if (packed.sample_lock != 0 && packed.sample_weights == wanted.weights) return &packed.sample;
  const std::vector<std::uint8_t> factors = factors_to(wanted);
  if (factors.empty() || !sample_fits(packed.data, factors)) return nullptr;
  unlock(&packed.sample_lock);
  prepare_sampled_data(packed.sample, packed.data, factors);
  lock(&packed.sample_lock);
  packed.sample_weights = wanted.weights;
  return &packed.sample;
}

}  // namespace

packed_sampling_scope::packed_sampling_scope() { ++packed.sampling_scopes; }

packed_sampling_scope::~packed_sampling_scope() {
  if (--packed.sampling_scopes == 0) unlock(&packed.sample_lock);
}

part_data_scope::part_data_scope(search_data& part)
    : outer_part_(packed.part), made_for_(packed.part_made_for), settings_(packed.part_settings) {
  packed.part_made_for = request_of_settings();
  packed.part_settings = character_settings();
  packed.part = &part;
}

part_data_scope::~part_data_scope() {
  packed.part = outer_part_;
  packed.part_made_for = std::move(made_for_);
  packed.part_settings = std::move(settings_);
}

void forget_packed_data(const int* tag) {
  if (tag == &locks.optimisation_lock) packed.valid = false;
}

// No progress is shown: packing takes less time than a line of it.
search_data& packed_matrix(bool silent) {
  if (!matrix.present) error_end("Must read data before searching");
  if (active_taxa() < 3) error_end("Searches need at least 3 active taxa");
  packing_request wanted = request_of_settings();
  std::vector<std::int32_t> settings_now = character_settings();
  if (packed.part) {
    if (packed.part_made_for == wanted && packed.part_settings == settings_now) return *packed.part;
    error_end("Data and settings that a running search stands on can't be changed");
  }
  if (packed.valid && packed.settings == settings_now) {
    if (packed.made_for == wanted) return packed.data;
    if (search_data* const sample = sample_for(wanted)) return *sample;
  }
  recheck_steps();
  drop_packed_data();
  prepare_search_data(packed.data, wanted);
  lock(&locks.optimisation_lock);
  packed.made_for = std::move(wanted);
  packed.settings = std::move(settings_now);
  packed.valid = true;
  if (!silent && memory.extra_for_searches && arena_free() < arena.size / 20)
    warning(
        "Free memory is low (below 5% of search memory).\nYou may run out of memory during the "
        "search.\n");
  return packed.data;
}

}  // namespace zeb
