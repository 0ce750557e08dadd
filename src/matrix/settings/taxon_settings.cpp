#include "matrix/settings/taxon_settings.h"

#include "matrix/matrix.h"

namespace zeb {

void set_active_taxa(std::span<const std::uint8_t> active) {
  drop_packed_data();
  for (int t = 0; t < matrix.ntax; ++t) {
    const auto i = static_cast<std::size_t>(t);
    matrix.taxon_active[i] = active[i] != 0;
  }
  for (character_record& record : matrix.characters) record.needs_recheck = 1;
}

void set_outgroup(int taxon) {
  if (taxon == matrix.outgroup) return;
  drop_packed_data();
  matrix.outgroup = taxon;
}

}  // namespace zeb
