#include "supports/bremer_trees.h"

#include <algorithm>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/scores.h"
#include "consensus/counting.h"
#include "consensus/selection.h"
#include "console/progress.h"
#include "engine/fit/fits.h"
#include "engine/plain/plain_optimisation.h"
#include "engine/plain/tree_scores.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// (F - C) / F: F is what the other tree costs more in characters that fit the first one better, C
/// what it costs less in the rest.
double relative_difference(std::span<const double> first, std::span<const double> other) {
  double for_first = 0;
  double for_other = 0;
  for (std::size_t i = 0; i < first.size(); ++i) {
    const double more = other[i] - first[i];
    (more > 0 ? for_first : for_other) += more > 0 ? more : -more;
  }
  return for_first > score_tolerance ? (for_first - for_other) / for_first : 0;
}

void show_tree(const char* label, std::size_t tree, std::size_t trees) {
  show_progress(label, static_cast<double>(tree), static_cast<double>(trees));
  check_interrupt();
}

void require_same_taxa(std::span<const const_tree_span> trees) {
  for (const const_tree_span tree : trees)
    for (int t = 0; t < matrix.ntax; ++t)
      if (is_absent(tree, t) != is_absent(trees[0], t))
        error_end("Cannot calculate Bremer supports from trees that have different taxa");
}

/// The groups that each tree lacks.
void take_trees(const tree_selection& selection, const compared_trees& compared,
                const bremer_settings& wanted, branch_weights& weights, reference_groups& groups) {
  std::vector<int> counts(groups.measures.size(), 1);
  for (std::size_t i = 0; i < selection.trees.size(); ++i) {
    show_tree(wanted.needs_relative() ? "Doing relative supports" : "Absolute supports", i,
              selection.trees.size());
    const const_tree_span tree = selection.trees[i];
    if (!groups.tally.count_tree_groups(tree, weights.of(tree), false))
      error_end("Not enough memory for the groups of the trees (see \"mxram\")");
    for (std::size_t r = 0; r < counts.size(); ++r) {
      const int count = groups.tally.groups()[r].count;
      if (count == counts[r])
        take_loss(groups.measures[r], wanted, compared.differences[i].excess,
                  compared.differences[i].relative);
      counts[r] = count;
    }
  }
  clear_progress();
}

}  // namespace

tree_comparer::tree_comparer()
    : characters_(scored_characters()), rules_(current_fit_rules()), optimiser_(characters_) {}

double tree_comparer::score(const_tree_span tree) {
  optimiser_.optimise(tree, polytomy_kind::hard);
  return tree_score(optimiser_, rules_, characters_);
}

void tree_comparer::set_reference(const_tree_span tree, bool with_evidence) {
  reference_score_ = score(tree);
  if (with_evidence) reference_evidence_ = evidence();
}

tree_comparer::difference tree_comparer::compare(const_tree_span tree) {
  difference found;
  found.excess = score(tree) - reference_score_;
  if (!reference_evidence_.empty())
    found.relative = relative_difference(reference_evidence_, evidence());
  return found;
}

/// What the last tree costs by character, and by set of characters that are weighted together: they
/// are evidence as a whole.
std::vector<double> tree_comparer::evidence() const {
  std::vector<double> costs(at(matrix.nchar) + rules_.sets.size(), 0);
  std::vector<double> fits;
  if (rules_.on) fits = fit_by_character(optimiser_, rules_, characters_);
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!characters_[at(c)]) continue;
    const character_record& record = matrix.characters[at(c)];
    const int set = rules_.on ? rules_.set_of_character(c) : -1;
    costs[at(set < 0 ? c : matrix.nchar + set)] +=
        rules_.on ? fits[at(c)] : optimiser_.length(c) * record.weight;
  }
  return costs;
}

compared_trees compare_with_best(std::span<const const_tree_span> trees, bool with_relative) {
  require_same_taxa(trees);
  tree_comparer comparer;
  compared_trees out;
  std::vector<double> scores;
  for (std::size_t i = 0; i < trees.size(); ++i) {
    show_tree("Optimizing", i, trees.size());
    scores.push_back(comparer.score(trees[i]));
    if (scores[i] < scores[at(out.best)] - score_tolerance) out.best = static_cast<int>(i);
  }
  if (with_relative) comparer.set_reference(trees[at(out.best)], true);
  for (std::size_t i = 0; i < trees.size(); ++i) {
    tree_comparer::difference& one = out.differences.emplace_back();
    if (with_relative) {
      show_tree("Calculating RFD's", i, trees.size());
      one = comparer.compare(trees[i]);
    }
    one.excess = std::max(scores[i] - scores[at(out.best)], 0.0);
  }
  clear_progress();
  return out;
}

bremer_result supports_from_trees(const bremer_request& request) {
  const tree_selection selection = select_stored_trees(request.trees, request.excluded);
  const bremer_settings& wanted = request.how;
  if (request.n_trees < 2) {
    error_end_f("Cannot calculate Bremer supports with %i trees (select 2 or more)",
                request.n_trees);
  }
  const compared_trees compared = compare_with_best(selection.trees, wanted.needs_relative());
  branch_weights weights(selection);
  const arena_scope memory;
  const const_tree_span best = selection.trees[at(compared.best)];
  reference_groups groups(best, taxa_left_out(selection), weights.of(best));
  take_trees(selection, compared, wanted, weights, groups);
  group_measure bound{0, 0};
  for (const tree_comparer::difference& one : compared.differences) {
    bound.absolute = std::max(bound.absolute, one.excess);
    bound.relative = std::max(bound.relative, one.relative);
  }
  bremer_result result = shown_supports(
      groups, wanted, bound, text_of("%i trees", static_cast<int>(selection.trees.size())));
  if (store.cut_short)
    result.notes.emplace_back(
        "the search filled the memory for trees (see \"hold\"): supports are upper bounds");
  return result;
}

}  // namespace zeb
