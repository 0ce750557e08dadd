#include "engine/packing/packed_matrix.h"

#include "base/arena.h"
#include "base/errors.h"
#include "engine/packing/packing.h"
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
  packing_request made_for;
  std::vector<std::int32_t> settings;
  bool valid = false;
};
packed_state packed;

}  // namespace

void forget_packed_data(const int* tag) {
  if (tag == &locks.optimisation_lock) packed.valid = false;
}

// No progress is shown: packing takes less time than a line of it.
search_data& packed_matrix(bool silent) {
  if (!matrix.present) error_end("Must read data before searching");
  if (active_taxa() < 3) error_end("Searches need at least 3 active taxa");
  packing_request wanted = request_of_settings();
  std::vector<std::int32_t> settings_now = character_settings();
  if (packed.valid && packed.made_for == wanted && packed.settings == settings_now)
    return packed.data;
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
