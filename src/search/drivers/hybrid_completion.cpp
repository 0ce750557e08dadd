#include "search/drivers/hybrid_completion.h"

#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "matrix/matrix.h"
#include "search/moves/swapper.h"
#include "search/moves/tree_in_pieces.h"
#include "search/search_report.h"
#include "search/search_session.h"
#include "search/store/stored_trees.h"
#include "trees/constraints/constraints.h"

namespace zeb {
namespace {

/// While it lives the groups of a tree are constraints, besides the groups that the user has in
/// force. What the tree lacks may go anywhere.
class kept_relations {
 public:
  explicit kept_relations(const_tree_span tree) : users_(constraints) {
    constraint_definitions wanted;
    if (users_.active) wanted.positive = users_.positive;
    wanted.tree.assign(tree.begin(), tree.end());
    define_constraints(std::move(wanted), true);
  }
  ~kept_relations() {
    const bool active = users_.active;
    define_constraints(std::move(users_), active);
  }
  kept_relations(const kept_relations&) = delete;
  kept_relations& operator=(const kept_relations&) = delete;

 private:
  constraint_definitions users_;
};

/// Adds the taxa in random order.
void add_missing(search_context& context, const_tree_span former, std::span<std::int32_t> tree) {
  const search_data& data = context.data;
  std::vector<int> order(at(data.n));
  random_sequence(context.random, data.n, order, -1, {});
  tree_in_pieces forest(context, tree);
  for (const int t : order)
    if (is_absent(former, data.pack_to_taxon[at(t)])) forest.cut(t);
  forest.make_sets();
  forest.join_all(tree);
}

}  // namespace

bool lacks_taxa(const_tree_span tree) {
  for (int t = 0; t < matrix.ntax; ++t)
    if (matrix.taxon_active[at(t)] && is_absent(tree, t)) return true;
  return false;
}

void check_completion(const_tree_span tree, int number) {
  if (constraints.active && (!constraints.negative.empty() || !constraints.tree.empty()))
    error_end("Cannot complete trees under negative or tree constraints");
  if (is_absent(tree, matrix.outgroup)) {
    error_end(text_of("Tree %i can't be processed --it doesn't include current outgroup (%s)",
                      number, std::string(taxon_name(matrix.outgroup)).c_str()));
  }
  for (int t = 0; t < matrix.ntax; ++t)
    if (!matrix.taxon_active[at(t)] && !is_absent(tree, t))
      error_end("Tree to complete cannot have any inactive taxa");
}

completed_tree complete_tree(const_tree_span tree) {
  const kept_relations relations(tree);
  private_slots slot(1, static_cast<int>(tree.size()));
  completed_tree done;
  {
    search_session session(slot, silence::on);
    search_context& context = session.context();
    std::vector<tree_node> all(tree.begin(), tree.end());
    include_absent_taxa(all, matrix.ntax);
    const std::span<std::int32_t> anc = context.working_tree;
    ALWAYS_CHECK(to_internal(context.data, all, anc, true), "a tree with all taxa lacks some");
    add_missing(context, tree, anc);
    context.shown.stage = stage_hybrid;
    done.score = tbr_swap(context, anc, {});
    if (interrupted()) return {};
    store_tree(context, anc, 0, done.score);
  }
  const const_tree_span made = slot_of(slot, 0);
  done.tree.assign(made.begin(), made.end());
  return done;
}

}  // namespace zeb
