#include "matrix/settings/taxon_settings.h"

#include <algorithm>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/matrix.h"

namespace zeb {

void set_active_taxa(std::span<const std::uint8_t> active) {
  ALWAYS_CHECK(active.size() == at(matrix.ntax), "activity isn't by taxon");
  drop_packed_data();
  std::transform(active.begin(), active.end(), matrix.taxon_active.begin(),
                 [](std::uint8_t flag) { return std::uint8_t{flag != 0}; });
  for (character_record& record : matrix.characters) record.needs_recheck = 1;
}

activity_scope::activity_scope(std::span<const std::uint8_t> active)
    : former_(matrix.taxon_active.begin(), matrix.taxon_active.begin() + matrix.ntax),
      generation_(matrix.generation) {
  set_active_taxa(active);
}

activity_scope::~activity_scope() {
  if (matrix.generation == generation_) set_active_taxa(former_);
}

taxon_names_scope::taxon_names_scope() : former_(matrix.use_taxon_names) {
  matrix.use_taxon_names = true;
}

taxon_names_scope::~taxon_names_scope() { matrix.use_taxon_names = former_; }

void set_outgroup(int taxon) {
  if (taxon == matrix.outgroup) return;
  drop_packed_data();
  matrix.outgroup = taxon;
}

}  // namespace zeb
