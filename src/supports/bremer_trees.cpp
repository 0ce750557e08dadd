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

/// What a tree costs by character, and by set of characters that are weighted together: they are
/// evidence as a whole.
class evidence_of_trees {
 public:
  evidence_of_trees(const fit_rules& rules, std::span<const std::uint8_t> characters)
      : rules_(rules), characters_(characters) {}

  std::vector<double> of(const plain_optimiser& optimiser) const {
    if (!rules_.on) return steps_of(optimiser);
    const std::vector<double> fits = fit_by_character(optimiser, rules_, characters_);
    std::vector<double> costs(at(matrix.nchar) + rules_.sets.size(), 0);
    for (int c = 0; c < matrix.nchar; ++c) {
      const int set = rules_.set_of_character(c);
      costs[at(set < 0 ? c : matrix.nchar + set)] += fits[at(c)];
    }
    return costs;
  }

 private:
  std::vector<double> steps_of(const plain_optimiser& optimiser) const {
    std::vector<double> costs(at(matrix.nchar), 0);
    for (int c = 0; c < matrix.nchar; ++c) {
      if (!characters_[at(c)]) continue;
      const double unit = matrix.characters[at(c)].is_continuous ? 0.001 : 1;
      costs[at(c)] =
          static_cast<double>(optimiser.steps(c)) * unit * matrix.characters[at(c)].weight;
    }
    return costs;
  }

  const fit_rules& rules_;
  std::span<const std::uint8_t> characters_;
};

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
        take_loss(groups.measures[r], wanted, compared.excess[i],
                  compared.relative.empty() ? no_bound : compared.relative[i]);
      counts[r] = count;
    }
  }
  clear_progress();
}

}  // namespace

compared_trees compare_with_best(std::span<const const_tree_span> trees, bool with_relative) {
  require_same_taxa(trees);
  const std::vector<std::uint8_t> characters = scored_characters();
  const fit_rules rules = current_fit_rules();
  plain_optimiser optimiser(characters);
  compared_trees out;
  for (std::size_t i = 0; i < trees.size(); ++i) {
    show_tree("Optimizing", i, trees.size());
    optimiser.optimise(trees[i], polytomy_kind::hard);
    out.excess.push_back(tree_score(optimiser, rules, characters));
    if (out.excess[i] < out.excess[at(out.best)] - score_tolerance) out.best = static_cast<int>(i);
  }
  out.best_score = out.excess[at(out.best)];
  for (double& score : out.excess) score = std::max(score - out.best_score, 0.0);
  clear_progress();
  if (!with_relative) return out;
  const evidence_of_trees evidence(rules, characters);
  optimiser.optimise(trees[at(out.best)], polytomy_kind::hard);
  const std::vector<double> best = evidence.of(optimiser);
  for (std::size_t i = 0; i < trees.size(); ++i) {
    show_tree("Calculating RFD's", i, trees.size());
    optimiser.optimise(trees[i], polytomy_kind::hard);
    out.relative.push_back(relative_difference(best, evidence.of(optimiser)));
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
  group_measure bound;
  bound.absolute = std::ranges::max(compared.excess);
  if (!compared.relative.empty()) bound.relative = std::ranges::max(compared.relative);
  bremer_result result =
      shown_supports(groups, wanted, bound, std::to_string(selection.trees.size()));
  if (store.cut_short)
    result.notes.emplace_back(
        "the search filled the memory for trees (see \"hold\"): supports are upper bounds");
  return result;
}

}  // namespace zeb
