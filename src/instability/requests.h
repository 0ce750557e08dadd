// What the commands of this room read alike: a consensus method, trees, taxa.
#pragma once

#include <string>
#include <vector>

#include "consensus/pruned_consensus.h"
#include "consensus/selection.h"
#include "language/options.h"

namespace zeb {

/// The methods by the words of the options, with the cuts that are set for them.
enum class consensus_kind { strict, majority, differences, components };
consensus_method method_of(consensus_kind kind);
/// "Strict consensus" and so on.
std::string name_of(consensus_kind kind);

/// Options are words or signs before the lists: reads all of them. A word that stands for a number
/// in a list of trees must be in quotes or parentheses there.
bool option_comes_next();
template <class settings>
void read_leading_options(settings& target, const option_table& table) {
  while (option_comes_next())
    if (!read_sign(target, table)) read_option(target, table);
}

/// The list of trees, all without one. Errors without data, or without trees.
tree_selection read_selection(const char* doing);
/// The same and the taxa after "/", which are left out. Error where none is left.
tree_selection read_selection_and_excluded(const char* doing);
/// The taxa after "/", or all but the outgroup, as far as the trees have them.
std::vector<int> read_candidates(const tree_selection& selection);

/// "a b c", after `head`, in lines that hang under it.
std::string taxa_after(const std::string& head, const taxon_set& taxa);

/// Shows a consensus and, where it is to be stored, makes it the last tree.
void deliver_consensus(const group_tree& result, const std::string& title, bool store_it);

}  // namespace zeb
