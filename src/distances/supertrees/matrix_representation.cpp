#include "distances/supertrees/matrix_representation.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "base/errors.h"
#include "base/indices.h"
#include "base/number_text.h"
#include "distances/cut_trees.h"
#include "matrix/matrix.h"
#include "matrix/settings/character_settings.h"
#include "trees/branch_labels.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr double weight_of_balanced_tree = 1000;

struct represented_group {
  std::string column;  // by row
  double weight = 1;
};

/// The number that a label begins with; 1 without one, or where it is none above 0.
double weight_of_label(const std::vector<branch_label>& labels, int node, int& unlabelled) {
  if (at(node) < labels.size()) {
    std::string_view text = labels[at(node)].label;
    const auto value = take_real(text);
    if (value && *value > 0) return *value;
  }
  ++unlabelled;
  return 1;
}

class representer {
 public:
  representer(const taxon_set& taxa, const representation_settings& how) : taxa_(taxa), how_(how) {}

  void take(int number) {
    const const_tree_span stored = stored_tree(number);
    const taxon_set own = taxa_of_tree(stored, matrix.ntax) & taxa_;
    const int n = own.count();
    if (n < 3) return;
    std::vector<int> nodes;
    const cut_tree tree(cut_to_taxa(stored, matrix.ntax, own, &nodes), n);
    const std::vector<branch_label> labels =
        how_.supports ? labels_of_tree(number) : std::vector<branch_label>();
    std::vector<represented_group> groups;
    for (const int node : tree.outward) {
      if (node == tree.root() || (!how_.root && tree.sizes[at(node)] == n - 1)) continue;
      represented_group group{column_of(tree, node, own), 1};
      if (how_.supports) group.weight = weight_of_label(labels, nodes[at(node)], unlabelled_);
      groups.push_back(std::move(group));
    }
    if (how_.balanced) balance(groups);
    groups_.insert(groups_.end(), groups.begin(), groups.end());
  }

  matrix_representation finish() {
    if (how_.merge) merge();
    matrix_representation out;
    out.unlabelled = unlabelled_;
    if (how_.root) out.names.emplace_back("MRP_root");
    for (const int taxon : taxa_) out.names.emplace_back(taxon_name(taxon));
    out.rows.assign(out.names.size(), "");
    for (const represented_group& group : groups_) {
      for (std::size_t row = 0; row < out.rows.size(); ++row) out.rows[row] += group.column[row];
      out.weights.push_back(
          std::clamp(static_cast<int>(std::lround(group.weight)), 1, largest_weight));
    }
    return out;
  }

 private:
  std::string column_of(const cut_tree& tree, int node, const taxon_set& own) const {
    std::vector<char> inside(at(tree.terminals), '0');
    std::vector<int> waiting{node};
    while (!waiting.empty()) {
      const int n = waiting.back();
      waiting.pop_back();
      if (n < tree.terminals) inside[at(n)] = '1';
      for (const int child : tree.children(n)) waiting.push_back(child);
    }
    std::string column = how_.root ? "0" : "";
    std::size_t next = 0;
    for (const int taxon : taxa_) column += own.contains(taxon) ? inside[next++] : '?';
    return column;
  }

  static void balance(std::vector<represented_group>& groups) {
    double sum = 0;
    for (const represented_group& group : groups) sum += group.weight;
    for (represented_group& group : groups) group.weight *= weight_of_balanced_tree / sum;
  }

  void merge() {
    std::map<std::string, std::size_t> places;
    std::vector<represented_group> merged;
    for (const represented_group& group : groups_) {
      const auto [place, is_new] = places.emplace(group.column, merged.size());
      if (is_new)
        merged.push_back(group);
      else
        merged[place->second].weight += group.weight;
    }
    groups_ = std::move(merged);
  }

  const taxon_set& taxa_;
  const representation_settings& how_;
  std::vector<represented_group> groups_;
  int unlabelled_ = 0;
};

}  // namespace

matrix_representation represent_trees(const std::vector<int>& trees, const taxon_set& excluded,
                                      const representation_settings& how) {
  taxon_set taxa(matrix.ntax);
  for (const int tree : trees) taxa |= taxa_of_tree(stored_tree(tree), matrix.ntax);
  taxa -= excluded;
  representer work(taxa, how);
  for (const int tree : trees) work.take(tree);
  matrix_representation out = work.finish();
  if (out.weights.empty()) error_end("The trees have no groups to represent");
  return out;
}

}  // namespace zeb
