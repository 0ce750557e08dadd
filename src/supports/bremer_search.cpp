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
#include "base/packet.h"
#include "base/random.h"
#include "console/progress.h"
#include "engine/packing/packed_matrix.h"
#include "matrix/matrix.h"
#include "search/combined/search_state.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/search_settings.h"
#include "search/workers/worker_pool.h"
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

/// What the search for one group found.
struct searched {
  std::vector<std::vector<tree_node>> trees;
  bool exact = false;
};

void put(const searched& found, packet_writer& to) {
  to.put_byte(found.exact ? 1 : 0);
  to.put(static_cast<std::int32_t>(found.trees.size()));
  for (const std::vector<tree_node>& tree : found.trees) to.put_list(tree);
}

searched searched_in(std::span<const std::byte> bytes) {
  packet_reader from(bytes);
  searched found;
  found.exact = from.byte() != 0;
  for (int count = from.whole(); count > 0; --count) found.trees.push_back(from.list());
  return found;
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
    data_ = matrix.generation;
    const std::vector<int> seeds = seeds_of_searches();
    const auto search_for = [&](int i) {
      const search_state_scope each;
      constraint.keep_out(groups_[at(to_search_[at(i)])]);
      return trees_of(*search, seeds[at(i)]);
    };
    const int count = static_cast<int>(to_search_.size());
    worker_pool workers(count, [&](int i, packet_writer& found) { put(search_for(i), found); });
    for (int i = 0; i < count; ++i) {
      show_progress(text_of("Searching (group %i of %i)", i + 1, count), i, count);
      check_interrupt();
      if (interrupted()) break;
      const auto bytes = workers.result_of(i, look_for_stop);
      if (interrupted() && !bytes) break;
      const searched found = bytes ? searched_in(*bytes) : search_for(i);
      take(found);
      if (interrupted()) break;
      all_exact_ = all_exact_ && found.exact;
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

  std::vector<int> seeds_of_searches() const {
    random_generator generator;
    seed_generator(generator);
    std::vector<int> seeds;
    for (std::size_t i = 0; i < to_search_.size(); ++i)
      seeds.push_back(std::max(1, generator.draw()));
    return seeds;
  }

  searched trees_of(replicate_search& search, int seed) const {
    keep_exactness(false);
    const tree_slots& found = search.search(seed);
    if (matrix.generation != data_) error_end("The search for other trees has changed the data");
    searched result;
    for (int t = 0; t < found.ntrees; ++t) {
      const const_tree_span tree = slot_of(found, t);
      result.trees.emplace_back(tree.begin(), tree.end());
    }
    result.exact = last_search.exact_solution;
    return result;
  }

  void take(const searched& found) {
    const arena_scope memory;
    const group_sums sums(packed_matrix(true), absent_);
    reference_groups groups(reference_, absent_);
    const divisions known(groups, sums, reference_);
    for (const std::vector<tree_node>& tree : found.trees) {
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
  int data_ = 0;                          // generation of the matrix
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
