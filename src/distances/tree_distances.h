// Distances of many pairs of trees, by several measures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "base/taxon_set.h"
#include "trees/tree_record.h"

namespace zeb {

enum class distance_measure : int { groups, triplets, quartets, agreement };

/// Trees from the buffer with their numbers, and how they are to be compared.
struct compared_trees_request {
  std::vector<int> rows;
  std::vector<int> columns;  // empty: the rows with each other
  taxon_set excluded;        // taxa that don't count
  bool unrooted = false;     // groups and agreement subtrees without the root
  bool common = false;       // all trees are cut to the taxa that all of them have
  bool normalised = false;   // distances as a share of the most there can be

  bool is_square() const { return columns.empty(); }
  std::size_t count() const { return rows.size() + columns.size(); }
  const std::vector<int>& column_trees() const { return is_square() ? rows : columns; }
};

/// Row by row; no_fraction where two trees share too few taxa.
struct distance_matrix {
  std::vector<double> values;
  bool same_taxa = true;  // no pair was cut in another way than the others
};

/// Taxa that two trees must share to be compared.
int fewest_taxa_for(distance_measure measure);
/// What the values are, for titles.
std::string_view name_of(distance_measure measure);
/// Each pair is cut to the taxa that both trees have. Errors: too many trees or taxa; no shared
/// taxa where all trees are cut to these.
distance_matrix distances_of_trees(const compared_trees_request& request, distance_measure measure);

}  // namespace zeb
