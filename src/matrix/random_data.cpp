#include "matrix/random_data.h"

#include <string>

#include "matrix/matrix.h"
#include "matrix/matrix_reader.h"
#include "shell/errors.h"
#include "shell/indices.h"
#include "shell/output.h"
#include "shell/random.h"

namespace zeb {
namespace {

tree_source stored_trees = nullptr;

void begin_made_matrix(int ntax, int nchar, const std::string& title) {
  wipe_matrix();
  make_room_for_matrix(ntax, nchar);
  begin_matrix(ntax, nchar);
  matrix.title = title;
  matrix.file_name = title;
  for (int c = 0; c < nchar; ++c) set_character_type(c, numeric_data);
}

// Nodes so that each comes behind its ancestor; the root, which has none, is first.
std::vector<int> rootward_first(const std::vector<std::int32_t>& ancestors, int ntax) {
  const int nnodes = static_cast<int>(ancestors.size());
  std::vector<std::vector<int>> descendants(ancestors.size());
  for (int n = 0; n < nnodes; ++n) {
    // Entry `ntax` of a tree isn't an ancestor, and 0 marks absent nodes.
    const int ancestor = ancestors[at(n)];
    if (n != ntax && ancestor >= ntax && ancestor < nnodes) descendants[at(ancestor)].push_back(n);
  }
  std::vector<int> order = {ntax};
  for (std::size_t i = 0; i < order.size() && order.size() <= ancestors.size(); ++i) {
    const std::vector<int>& next = descendants[at(order[i])];
    order.insert(order.end(), next.begin(), next.end());
  }
  return order;
}

}  // namespace

void set_tree_source(tree_source source) { stored_trees = source; }

std::vector<std::int32_t> tree_from_source(int tree) {
  if (!stored_trees) error_end("Tree(s) are required");
  return stored_trees(tree);
}

void make_random_matrix(int nchar, int ntax, int nstates) {
  begin_made_matrix(ntax, nchar, text_of("'Random Data (%i states)'", nstates));
  reseed();
  for (int t = 0; t < ntax; ++t) {
    set_taxon_name(t, "TAX" + std::to_string(t));
    for (int c = 0; c < nchar; ++c) set_cell(t, c, 1U << (draw() % nstates));
  }
  finish_matrix();
}

void make_matrix_from_tree(const std::vector<std::int32_t>& ancestors, double stasis_percent,
                           int nchar, int nstates) {
  const int ntax = matrix.ntax;
  std::vector<std::string> names;
  for (int t = 0; t < ntax; ++t) names.emplace_back(taxon_name(t));
  begin_made_matrix(ntax, nchar, text_of("'Data, p(stasis)=%.2f'", stasis_percent));
  reseed();
  for (int t = 0; t < ntax; ++t) set_taxon_name(t, names[at(t)]);
  const std::vector<int> order = rootward_first(ancestors, ntax);
  std::vector<int> state(ancestors.size());
  const double kept = stasis_percent / 100.0 * (random_generator::largest + 1.0);
  for (int c = 0; c < nchar; ++c) {
    for (const int n : order) {
      if (n == ntax) {
        state[at(n)] = draw() % nstates;
      } else {
        int s = state[at(ancestors[at(n)])];
        // One of the other states, each as likely.
        if (draw() >= kept && nstates > 1) s = (s + 1 + draw() % (nstates - 1)) % nstates;
        state[at(n)] = s;
      }
      if (n < ntax) set_cell(n, c, 1U << state[at(n)]);
    }
  }
  finish_matrix();
}

}  // namespace zeb
