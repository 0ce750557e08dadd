#include "supports/bremer_swap.h"

#include <algorithm>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/progress.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/conversions.h"
#include "matrix/matrix.h"
#include "search/moves/lost_branches.h"
#include "search/moves/relative_fit.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "supports/bremer_trees.h"
#include "supports/unrooted_groups.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// What the moves of one tree do to the groups.
class loss_recorder {
 public:
  loss_recorder(search_context& context, const bremer_settings& wanted,
                std::vector<group_measure>& measures, std::vector<int> record_of_node,
                double excess_of_tree)
      : context_(context),
        wanted_(wanted),
        measures_(measures),
        record_of_node_(std::move(record_of_node)),
        branches_of_(measures.size(), 0),
        lost_of_(measures.size(), 0),
        excess_of_tree_(excess_of_tree),
        path_(context.data) {
    for (const int r : record_of_node_)
      if (r >= 0) ++branches_of_[at(r)];
  }

  void meet(const met_move& move) {
    const double excess = move.score - move.tree_score + excess_of_tree_;
    double relative = no_bound;
    if (wanted_.needs_relative()) {
      relative = relative_fit_difference(*move.data, move.home, move.there, true);
      if (relative > context_.rules.relative_suboptimal + score_tolerance) relative = no_bound;
    }
    for (const std::int32_t v : path_.of(move)) {
      const int r = record_of_node_[at(v)];
      if (r >= 0 && is_whole_group_lost(r)) take_loss(measures_[at(r)], wanted_, excess, relative);
    }
    for (const int r : in_part_) lost_of_[at(r)] = 0;
    in_part_.clear();
  }

  void show_progress_of(int clips) {
    clips_ = clips;
    show_progress("TBR-swapping", clips, context_.data.nodes);
    poll_search(context_);
  }

  int percent_done() const { return 100 * clips_ / context_.data.nodes; }

 private:
  /// Where taxa are cut off, several branches in a row may stand for one group: it is there as long
  /// as one of them is.
  bool is_whole_group_lost(int r) {
    if (branches_of_[at(r)] == 1) return true;
    if (++lost_of_[at(r)] == 1) in_part_.push_back(r);
    return lost_of_[at(r)] == branches_of_[at(r)];
  }

  search_context& context_;
  const bremer_settings& wanted_;
  std::vector<group_measure>& measures_;
  std::vector<int> record_of_node_;  // by node of the tree in work; -1 none
  std::vector<int> branches_of_;     // by record: in the tree
  std::vector<int> lost_of_;         // by record: by the move at hand, where there are several
  std::vector<int> in_part_;         // records with some
  double excess_of_tree_;
  int clips_ = 0;  // so far
  lost_branches path_;
};

move_enumeration handed_to(loss_recorder& recorder, std::span<const std::uint8_t> leave_alone) {
  return {[](void* receiver, const met_move& move) {
            static_cast<loss_recorder*>(receiver)->meet(move);
          },
          &recorder, leave_alone,
          [](void* receiver, int done) {
            static_cast<loss_recorder*>(receiver)->show_progress_of(done);
          }};
}

/// Clades of taxa that are cut off needn't be moved.
std::vector<std::uint8_t> clips_left_out(const search_data& data, std::span<const std::int32_t> anc,
                                         std::span<const std::uint8_t> absent) {
  std::vector<std::uint8_t> left_out(at(data.nodes), 2);
  for (int t = 0; t < data.n; ++t) {
    if (absent[at(data.pack_to_taxon[at(t)])]) continue;
    for (int v = t; v != data.n; v = anc[at(v)]) left_out[at(v)] = 0;
  }
  return left_out;
}

void check_limits(const bremer_settings& wanted, const search_rules& rules) {
  if (wanted.needs_relative()) {
    if (rules.relative_suboptimal <= 0)
      error_end(
          "To calculate relative bremer supports with TBR, you must specify a relative suboptimal "
          "value");
    if (rules.suboptimal <= 0) error_end("Need to set suboptimal");
  }
  if (rules.suboptimal > 0) return;
  warning(
      "Bremer calculation with TBR uses swaps within specified\nvalue of suboptimal, but no "
      "suboptimal value is set.\nCurrent settings will only identify unsupported groups");
}

/// The swaps of one command.
class swapped_supports {
 public:
  swapped_supports(const bremer_request& request, search_data& data)
      : request_(request),
        data_(data),
        scope_(data, nowhere_, rules_without_limits(), random_generator()) {
    for (int t = 0; t < store.ntrees; ++t)
      if (request.trees[at(t)]) trees_.push_back(stored_tree(t));
  }

  bremer_result run() {
    require_outgroup(data_, request_.excluded);
    check_limits(request_.how, rules());
    const compared_trees compared =
        compare_with_best(trees_, request_.how.needs_relative() && trees_.size() > 1);
    const const_tree_span best = trees_[at(compared.best)];
    const std::vector<std::uint8_t> absent = taxa_without_part(data_, request_.excluded, best);
    reference_groups groups(best, absent);
    const group_sums sums(data_, absent);
    const divisions known(groups, sums, best);
    const search_running running;
    for (std::size_t i = 0; i < trees_.size() && !interrupted(); ++i) {
      const int percent = swap(trees_[i], groups, known, sums, compared.differences[i]);
      interruption_ = text_of("interrupted at %i%% of swapping tree %i of %i", percent,
                              static_cast<int>(i) + 1, static_cast<int>(trees_.size()));
    }
    clear_progress();
    if (interrupted()) forget_bounds(groups.measures);
    known.share(groups.measures);
    const group_measure bound{rules().suboptimal, rules().relative_suboptimal};
    bremer_result result =
        shown_supports(groups, request_.how, bound,
                       text_of("%.0f trees", scope_.context().rearrangements.total()));
    add_notes(result);
    return result;
  }

 private:
  const search_rules& rules() { return scope_.context().rules; }
  static search_rules rules_without_limits() {
    search_rules rules = rules_in_force();
    rules.swap.move_limit = 0;
    rules.swap.random_clip = false;
    return rules;
  }

  /// Returns how much of it was done.
  int swap(const_tree_span tree, reference_groups& groups, const divisions& known,
           const group_sums& sums, const tree_comparer::difference& own) {
    std::vector<std::int32_t> anc(at(data_.nodes));
    if (!to_internal(data_, tree, anc, true))
      error_end("TBR-checking for bremer supports needs trees with all active taxa");
    std::vector<int> record_of_node = known.records_in(sums.of_internal(anc));
    take_tree(groups.measures, record_of_node, request_.how, own);
    loss_recorder recorder(scope_.context(), request_.how, groups.measures,
                           std::move(record_of_node), request_.how.add_excess ? own.excess : 0);
    const std::vector<std::uint8_t> left_out = clips_left_out(data_, anc, groups.absent);
    const move_enumeration enumeration = handed_to(recorder, left_out);
    tbr_swap(scope_.context(), anc, {.enumeration = &enumeration});
    return recorder.percent_done();
  }

  /// A group that nothing has destroyed so far may be destroyed by what wasn't looked at.
  void forget_bounds(std::vector<group_measure>& measures) const {
    for (group_measure& group : measures) {
      const bool is_bound = group.absolute == no_bound ||
                            (request_.how.needs_relative() && group.relative == no_bound);
      if (is_bound) group.has_value = false;
    }
  }

  void add_notes(bremer_result& result) {
    if (interrupted()) result.notes.push_back(interruption_);
    if (scope_.context().constraints_in_force)
      result.notes.emplace_back("swapping was done under currently defined constraints");
    result.notes.emplace_back(
        "supports by one round of TBR are upper bounds; a search may find less");
  }

  const bremer_request& request_;
  search_data& data_;
  tree_slots nowhere_;
  context_scope scope_;
  std::vector<const_tree_span> trees_;
  std::string interruption_;
};

}  // namespace

bremer_result supports_by_swapping(const bremer_request& request) {
  const timeout_scope limit_comes_back;
  search_data& data = packed_matrix(false);
  const arena_scope memory;
  return swapped_supports(request, data).run();
}

}  // namespace zeb
