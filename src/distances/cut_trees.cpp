#include "distances/cut_trees.h"

#include "base/errors.h"
#include "base/indices.h"

namespace zeb {

taxon_set taxa_of_tree(const_tree_span tree, int ntax) {
  taxon_set taxa(ntax);
  for (int t = 0; t < ntax; ++t) taxa.assign(t, !is_absent(tree, t));
  return taxa;
}

taxon_set shared_taxa(std::span<const const_tree_span> trees, int ntax) {
  taxon_set taxa(ntax);
  taxa.fill();
  for (const const_tree_span tree : trees) taxa &= taxa_of_tree(tree, ntax);
  return taxa;
}

std::vector<tree_node> cut_to_taxa(const_tree_span tree, int ntax, const taxon_set& taxa,
                                   std::vector<int>* stored_nodes) {
  const int terminals = taxa.count();
  ALWAYS_CHECK(terminals > 1, "a tree cut to less than two taxa");
  std::vector<int> ancestors(at(terminals + node_limit(tree, ntax) - ntax), -1);
  const int shift = terminals - ntax;
  int next = 0;
  for (const int taxon : taxa) ancestors[at(next++)] = tree[at(taxon)] + shift;
  for (int n = ntax + 1; n < node_limit(tree, ntax); ++n)
    ancestors[at(n + shift)] = tree[at(n)] + shift;
  std::vector<tree_node> cut(at(2 * terminals - 1), 0);
  std::vector<int> new_numbers;
  record_from_ancestors(ancestors, cut, terminals, &new_numbers);
  if (!stored_nodes) return cut;
  stored_nodes->assign(at(node_limit(cut, terminals)), -1);
  next = 0;
  for (const int taxon : taxa) (*stored_nodes)[at(next++)] = taxon;
  for (std::size_t n = at(terminals); n < new_numbers.size(); ++n)
    if (new_numbers[n] >= 0) (*stored_nodes)[at(new_numbers[n])] = static_cast<int>(n) - shift;
  return cut;
}

std::vector<tree_node> with_taxa(const_tree_span cut, std::span<const int> taxa, int ntax) {
  const int terminals = static_cast<int>(taxa.size());
  const int shift = ntax - terminals;
  std::vector<tree_node> tree(at(2 * ntax - 1), 0);
  for (int t = 0; t < terminals; ++t) tree[at(taxa[at(t)])] = cut[at(t)] + shift;
  for (int n = terminals + 1; n < node_limit(cut, terminals); ++n)
    tree[at(n + shift)] = cut[at(n)] + shift;
  tree[at(ntax)] = node_limit(cut, terminals) + shift;
  normalise_tree(tree, ntax);
  return tree;
}

std::vector<int> members_of(const taxon_set& taxa) { return {taxa.begin(), taxa.end()}; }

cut_tree::cut_tree(const_tree_span tree, int terminals_in_all)
    : terminals(terminals_in_all),
      ancestors(tree.begin(), tree.end()),
      lists(descendants_of(tree, terminals)),
      outward(internal_nodes_root_first(lists, terminals)),
      sizes(lists.nodes(), 0) {
  for (int t = 0; t < terminals; ++t) sizes[at(t)] = 1;
  for (auto node = outward.rbegin(); node != outward.rend(); ++node)
    for (const int child : children(*node)) sizes[at(*node)] += sizes[at(child)];
}

}  // namespace zeb
