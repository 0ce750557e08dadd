// Changes of the active taxa and of the outgroup.
#pragma once

#include <cstdint>
#include <span>

namespace zeb {

constexpr int fewest_active_taxa = 4;

/// Makes the flagged taxa (a byte per taxon) the active ones. The caller has checked that there are
/// enough, and that the outgroup is among them.
void set_active_taxa(std::span<const std::uint8_t> active);
/// Makes the taxon the outgroup, on which trees are rooted.
void set_outgroup(int taxon);

}  // namespace zeb
