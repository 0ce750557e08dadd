#include "supports/unrooted_groups.h"

#include <string>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/matrix.h"

namespace zeb {

std::vector<std::uint8_t> taxa_without_part(const search_data& data,
                                            std::span<const std::uint8_t> excluded,
                                            const_tree_span tree) {
  std::vector<std::uint8_t> absent(excluded.begin(), excluded.end());
  for (int t = 0; t < matrix.ntax; ++t)
    if (is_absent(tree, t) || data.taxon_to_pack[at(t)] >= data.n) absent[at(t)] = 1;
  return absent;
}

void require_outgroup(const search_data& data, std::span<const std::uint8_t> excluded) {
  const int outgroup = data.pack_to_taxon[0];
  if (excluded[at(outgroup)])
    error_end_f("Cannot exclude outgroup taxon (%i = %s) for TBR bremer calculations", outgroup,
                std::string(taxon_name(outgroup)).c_str());
}

divisions::divisions(reference_groups& groups, const group_sums& sums, const_tree_span tree)
    : first_of_(groups.measures.size(), -1) {
  const std::vector<std::uint64_t> by_node = sums.of_stored(tree);
  for (std::size_t v = 0; v < by_node.size(); ++v) {
    const int r = groups.record_of_node[v];
    if (r < 0) continue;
    if (groups.tally.groups()[at(r)].size == groups.tally.taxa_in_play() - 1)
      groups.measures[at(r)].has_value = false;
    if (groups.measures[at(r)].has_value)
      first_of_[at(r)] = record_of_sum_.emplace(by_node[v], r).first->second;
  }
}

std::vector<int> divisions::records_in(std::span<const std::uint64_t> sums) const {
  std::vector<int> records;
  records.reserve(sums.size());
  for (const std::uint64_t sum : sums) {
    const auto found = record_of_sum_.find(sum);
    records.push_back(found == record_of_sum_.end() ? -1 : found->second);
  }
  return records;
}

void divisions::share(std::vector<group_measure>& measures) const {
  for (std::size_t r = 0; r < measures.size(); ++r)
    if (first_of_[r] >= 0) measures[r] = measures[at(first_of_[r])];
}

void take_tree(std::vector<group_measure>& measures, std::span<const int> records,
               const bremer_settings& wanted, const tree_comparer::difference& difference) {
  std::vector<std::uint8_t> has_group(measures.size(), 0);
  for (const int r : records)
    if (r >= 0) has_group[at(r)] = 1;
  for (std::size_t r = 0; r < measures.size(); ++r)
    if (!has_group[r]) take_loss(measures[r], wanted, difference.excess, difference.relative);
}

}  // namespace zeb
