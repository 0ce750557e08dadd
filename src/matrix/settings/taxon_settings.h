// Changes of the active taxa and of the outgroup.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zeb {

constexpr int fewest_active_taxa = 4;

/// Makes the flagged taxa (a byte per taxon) the active ones. The caller has checked that there are
/// enough, and that the outgroup is among them.
void set_active_taxa(std::span<const std::uint8_t> active);
/// Makes other taxa the active ones for a while. Put back on any path, unless the data have gone;
/// packed data are dropped each time, and what lies above them in the arena with them.
class activity_scope {
 public:
  /// A byte per taxon, with the same conditions as in `set_active_taxa`.
  explicit activity_scope(std::span<const std::uint8_t> active);
  ~activity_scope();
  activity_scope(const activity_scope&) = delete;
  activity_scope& operator=(const activity_scope&) = delete;

 private:
  std::vector<std::uint8_t> former_;
  int generation_;
};

/// Output shows the names of taxa for a while, whatever `taxname` says.
class taxon_names_scope {
 public:
  taxon_names_scope();
  ~taxon_names_scope();
  taxon_names_scope(const taxon_names_scope&) = delete;
  taxon_names_scope& operator=(const taxon_names_scope&) = delete;

 private:
  bool former_;
};

/// Makes the taxon the outgroup, on which trees are rooted.
void set_outgroup(int taxon);

}  // namespace zeb
