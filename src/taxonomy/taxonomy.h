// The taxonomy that names of taxa hold: after the name proper, "@" or "____", the groups that the
// taxon is in, from the most inclusive one down, with "_" between them.
//
//   Homo_sapiens@Mammalia_Primates_Hominidae
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/taxon_set.h"
#include "trees/tree_record.h"

namespace zeb {

/// Is a taxonomy in use? Off when other data have come.
struct taxonomy_state {
  bool on = false;
  int generation = 0;  // of the matrix
};
extern taxonomy_state taxonomy;  // written by `use_taxonomy`

void use_taxonomy(bool on);
bool taxonomy_in_use();

/// A group is told by its name and the groups that it is in.
struct taxonomic_group {
  std::string name;
  int parent = -1;  // number of the group that it is in; -1: in none
  int rank = 0;     // groups that it is in
  taxon_set members;
};

/// The groups that the names hold now.
struct taxonomic_groups {
  std::vector<taxonomic_group> groups;  // each after its parent, in the order of the taxa
  std::vector<int> group_of;            // by taxon: the innermost group; -1 none

  /// "Mammalia_Primates".
  std::string path(int group) const;
  /// May the taxon be in the group for all that its name says? Names may stop at an outer group.
  bool may_belong(int taxon, int group) const;
  bool is_within(int group, int outer) const;
  /// The groups as a tree over the taxa of the matrix, with the name of the group by node in
  /// `texts`.
  std::vector<tree_node> tree(int ntax, std::vector<std::string>* texts = nullptr) const;
};
taxonomic_groups read_taxonomy();

/// The name without its taxonomy.
std::string_view name_proper(std::string_view name);
/// -1 for none of that name, case ignored.
int taxonomic_group_named(std::string_view name);

/// Names of taxa take the path of labels (by node of the tree, empty: none) from the root to them
/// as their taxonomy, as far as there is space for names. Returns how many taxa it was cut for.
int names_from_labels(const_tree_span tree, const std::vector<std::string>& labels);

}  // namespace zeb
