#include "supports/bremer_search.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/random.h"
#include "console/progress.h"
#include "engine/packing/packed_matrix.h"
#include "matrix/matrix.h"
#include "search/combined/search_state.h"
#include "search/search_results.h"
#include "search/search_settings.h"
#include "supports/bremer_trees.h"
#include "supports/resampling/replicate_search.h"
#include "supports/unrooted_groups.h"
#include "trees/constraints/constraints.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// The user's constraints, if they are on, with one group more that mustn't be there; with the end
/// they are what they were.
class added_constraint {
 public:
  added_constraint() = default;
  ~added_constraint() { define_constraints(own_, own_.active); }
  added_constraint(const added_constraint&) = delete;
  added_constraint& operator=(const added_constraint&) = delete;

  bool own_are_on() const { return own_.active; }
  void keep_out(const constraint_group& group) const {
    constraint_definitions all;
    if (own_.active) all = own_;
    all.negative.push_back(group);
    define_constraints(std::move(all), true);
  }

 private:
  constraint_definitions own_ = constraints;
};

std::vector<std::uint8_t> inactive_taxa(const search_data& data) {
  std::vector<std::uint8_t> inactive;
  for (int t = 0; t < matrix.ntax; ++t)
    inactive.push_back(data.taxon_to_pack[at(t)] >= data.n ? 1 : 0);
  return inactive;
}

/// The searches of one command. Nothing of it lies in the arena, where the searches work.
class group_searches {
 public:
  explicit group_searches(const bremer_request& request) : wanted_(request.how) {
    const search_data& data = packed_matrix(false);
    require_outgroup(data, request.excluded);
    std::vector<const_tree_span> trees;
    for (int t = 0; t < store.ntrees; ++t)
      if (request.trees[at(t)]) trees.push_back(stored_tree(t));
    const const_tree_span best = trees[at(compare_with_best(trees, false).best)];
    reference_.assign(best.begin(), best.end());
    delete_taxa(reference_, matrix.ntax, inactive_taxa(data));  // no search has them
    absent_ = taxa_without_part(data, request.excluded, reference_);
    comparer_.set_reference(reference_, wanted_.needs_relative());
    list_groups();
  }

  void run() {
    const search_running running;
    const search_state_scope state;
    const added_constraint constraint;
    constrained_ = constraint.own_are_on();
    // Trees that are worse than the best without a group tell nothing but of characters.
    if (!wanted_.needs_relative()) set_suboptimal(0, 0);
    const std::unique_ptr<replicate_search> search = searcher();
    random_generator seeds;
    seed_generator(seeds);
    const int data = matrix.generation;
    for (const int r : to_search_) {
      show_progress(
          text_of("Searching (group %i of %i)", done_ + 1, static_cast<int>(to_search_.size())),
          done_, static_cast<double>(to_search_.size()));
      check_interrupt();
      if (interrupted()) break;
      constraint.keep_out(groups_[at(r)]);
      keep_exactness(false);
      take(search->search(std::max(1, seeds.draw())), data);
      if (interrupted()) break;
      all_exact_ = all_exact_ && last_search.exact_solution;
      ++done_;
    }
    clear_progress();
  }

  bremer_result result() {
    const arena_scope memory;
    reference_groups groups(reference_, absent_);
    const divisions known(groups, group_sums(packed_matrix(true), absent_), reference_);
    for (std::size_t r = 0; r < measures_.size(); ++r)
      if (measures_[r].absolute == no_bound) measures_[r].has_value = false;
    known.share(measures_);
    groups.measures = measures_;
    const int searches = static_cast<int>(to_search_.size());
    bremer_result shown =
        shown_supports(groups, wanted_, {0, 0}, counted(done_, "search", "searches"));
    if (done_ < searches)
      shown.notes.push_back(text_of("interrupted after %i of %i searches", done_, searches));
    if (constrained_) shown.notes.emplace_back("searches were done under the current constraints");
    if (found_better_)
      shown.notes.emplace_back("the searches found trees better than the reference");
    if (!all_exact_ || wanted_.needs_relative())
      shown.notes.emplace_back("supports are upper bounds: searches may have missed better trees");
    return shown;
  }

 private:
  void list_groups() {
    const search_data& data = packed_matrix(true);
    const arena_scope memory;
    reference_groups groups(reference_, absent_);
    const divisions known(groups, group_sums(data, absent_), reference_);
    measures_ = groups.measures;
    const taxon_set floating = taxon_set::of_flags(absent_);
    for (std::size_t r = 0; r < measures_.size(); ++r) {
      constraint_group& group = groups_.emplace_back();
      group = {taxon_set(matrix.ntax), floating};
      for (int t = 0; t < matrix.ntax; ++t)
        group.members.assign(t, has_taxon(groups.tally.groups()[r], t));
      if (!measures_[r].has_value || !known.is_first(static_cast<int>(r))) continue;
      if (constraints.active && demand_group(group, data.pack_to_taxon.first(at(data.n))))
        measures_[r].has_value = false;
      else
        to_search_.push_back(static_cast<int>(r));
    }
  }

  std::unique_ptr<replicate_search> searcher() const {
    if (wanted_.search.empty()) return std::make_unique<default_search>();
    return std::make_unique<command_search>(wanted_.search, false);
  }

  void take(const tree_slots& found, int data) {
    if (matrix.generation != data) error_end("The search for other trees has changed the data");
    const arena_scope memory;
    const group_sums sums(packed_matrix(true), absent_);
    reference_groups groups(reference_, absent_);
    const divisions known(groups, sums, reference_);
    for (int t = 0; t < found.ntrees; ++t) {
      const const_tree_span tree = slot_of(found, t);
      const tree_comparer::difference difference = comparer_.compare(tree);
      found_better_ = found_better_ || difference.excess < -score_tolerance;
      take_tree(measures_, known.records_in(sums.of_stored(tree)), wanted_, difference);
    }
  }

  const bremer_settings& wanted_;
  std::vector<tree_node> reference_;
  std::vector<std::uint8_t> absent_;
  tree_comparer comparer_;
  std::vector<constraint_group> groups_;  // by record
  std::vector<group_measure> measures_;   // likewise
  std::vector<int> to_search_;            // records
  int done_ = 0;
  bool all_exact_ = true;
  bool found_better_ = false;
  bool constrained_ = false;
};

}  // namespace

bremer_result supports_by_searching(const bremer_request& request) {
  group_searches searches(request);
  searches.run();
  return searches.result();
}

}  // namespace zeb
