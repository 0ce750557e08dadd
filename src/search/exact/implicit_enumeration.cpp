#include "search/exact/implicit_enumeration.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "console/progress.h"
#include "engine/fit/implied_weighting.h"
#include "engine/joining.h"
#include "engine/passes/passes.h"
#include "search/exact/best_trees.h"
#include "search/exact/coming_states.h"
#include "search/exact/conflicts.h"
#include "search/exact/growing_tree.h"
#include "search/exact/packed_fields.h"
#include "search/landmarks/landmark_moves.h"
#include "search/moves/group_tables.h"
#include "search/moves/swapper.h"
#include "search/moves/wagner.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"

namespace zeb {
namespace {

/// A tree of some of the taxa costs landmarks no more than one of all; the lengths told of it are
/// right to about a ten-thousandth (not what is left of them beyond a minimum, under implied
/// weights).
constexpr double part_that_is_sure = 0.999;

constexpr int trees_of_five_taxa = 15;
constexpr std::int64_t nodes_between_polls = 256;

/// A partial tree, and what is known of the taxa that aren't in it.
struct level {
  std::vector<std::int32_t> rest;  // taxa to come
  // By taxon of `rest`, `room` entries each: branches where it may still go, and their number.
  std::vector<std::int32_t> places;
  std::vector<int> place_count;
  std::size_t room = 0;
  std::span<word> present;  // states in the tree
  std::span<word> charged;  // fields that the bound from conflicts charges
  std::span<word> added;    // the taxon added last, its new states taken as missing
  std::vector<character_conflicts::bits> unspoilt;  // characters without homoplasy
  double conflicts = 0;                             // the bound that these give

  std::int32_t* places_of(std::size_t which) { return places.data() + which * room; }
};

/// A place for the taxon chosen.
struct candidate {
  std::int32_t branch;
  double length;  // of the tree with it, states to come included
  double bound;   // of complete trees
};

class enumeration {
 public:
  enumeration(search_context& context, const exact_settings& how);
  exact_result run();

 private:
  void find_start_bound();
  void choose_first_taxa(int* a, int* b);
  void mark_present(std::span<word> present, int a, int b) const;
  double charge_new_states(const level& now, double length);
  void list_all_places(level& now) const;

  void expand(int taxa, double length);
  void expand_within(level& now, int taxa, double length);
  int choose_taxon(level& now, double allowed);
  double drop_dear_places(level& now, std::size_t which, double allowed);
  void drop_forbidden_places(level& now, std::size_t which) const;
  double filter_places(level& now, std::size_t which, double allowed);
  void list_candidates(level& now, std::size_t which, double length, std::vector<candidate>& out);
  void descend(int taxa, std::size_t which, const candidate& to);
  void hand_places_down(level& now, std::size_t which, std::int32_t branch, level& next);
  void complete(int taxon, const candidate& last);
  void note_progress(int taxa, std::size_t done);
  bool stop();

  /// Trees that a search can only approach the collapsing of are all kept, for the full rule to
  /// judge at the end: those that it leaves apart needn't be apart by the quick one.
  bool collapses_as_found() const {
    constexpr int last_quick_rule = 3;
    return search_level(context_) > 0 && search_level(context_) <= last_quick_rule;
  }
  level& level_of(int taxa) { return levels_[at(taxa)]; }
  const word* branch_sets(int v) const { return data_.branch_base + at(v) * data_.set_stride; }
  /// Cost of a taxon, whose packed sets are `words`, at a branch; exact up to `allowed`.
  double cost_at(int taxon, const word* words, int branch, double allowed) const;
  bool wide_allow(int taxon, int branch, double allowed, double* cost) const;
  bool is_forbidden(int taxon, int branch) const;
  void count_steps(int taxon, const word* words, int branch);
  void uncount_steps(int taxon, const word* words, int branch);
  /// For all but landmarks.
  double limit() const { return best_.limit() - of_landmarks_; }

  search_context& context_;
  search_data& data_;
  const exact_settings how_;
  const double rounding_;  // scores closer than this are one
  arena_scope memory_;
  std::vector<single_state_field> fields_;
  coming_states ahead_;
  character_conflicts conflicts_;
  growing_tree tree_;
  std::optional<group_tables> groups_;              // of the tree as it is, under constraints
  std::vector<level> levels_;                       // by number of taxa
  std::vector<std::vector<candidate>> candidates_;  // likewise
  std::span<word> costed_;                          // a taxon's sets, as its places are costed
  std::span<word> coming_;                          // states of the taxa to come
  std::vector<character_conflicts::bits> unspoilt_then_;
  std::vector<std::uint8_t> marks_;
  std::vector<std::int32_t> start_tree_;
  double start_score_ = unknown_score;
  best_trees best_;
  std::unique_ptr<landmark_moves> landmarks_;  // null: there are none
  double of_landmarks_ = 0;                    // what they cost at least, of the tree in work
  int five_taxa_done_ = 0;
  exact_result result_;
};

enumeration::enumeration(search_context& context, const exact_settings& how)
    : context_(context),
      data_(context.data),
      how_(how),
      rounding_(tolerance_of(kind_of_scores(data_))),
      fields_(how.look_ahead ? single_state_fields(data_) : std::vector<single_state_field>{}),
      ahead_(data_, fields_),
      conflicts_(data_, fields_),
      tree_(data_),
      levels_(at(data_.n) + 1),
      candidates_(at(data_.n) + 1),
      unspoilt_then_(conflicts_.set_words()),
      marks_(at(data_.nodes), 1),
      best_(context, how.sample),
      landmarks_(data_.whole ? std::make_unique<landmark_moves>(data_) : nullptr) {
  if (context.constraints_in_force)
    groups_.emplace(context.constraints_in_force->rows(), data_.nodes);
  constexpr std::size_t cache_line = 64;
  const std::size_t words = std::max(at(data_.nwords), at(words_per_block));
  costed_ = calloc_low<word>(words, cache_line);
  coming_ = calloc_low<word>(words, cache_line);
  for (int k = 3; k < data_.n; ++k) {
    level& l = level_of(k);
    l.room = at(2 * k - 3);
    for (std::span<word>* set : {&l.present, &l.charged, &l.added})
      *set = calloc_low<word>(words, cache_line);
    l.unspoilt.assign(conflicts_.set_words(), 0);
  }
}

// ---- what places cost ----

/// Is the cost within the limit with the wide characters, too?
bool enumeration::wide_allow(int taxon, int branch, double allowed, double* cost) const {
  if (!data_.has_wide) return true;
  *cost +=
      wide_join_cost(data_, {join_end::root, taxon}, {join_end::branch, branch}, allowed - *cost);
  return *cost <= allowed;
}

bool enumeration::is_forbidden(int taxon, int branch) const {
  return (groups_ && !groups_->allows(taxon, branch)) ||
         (context_.slots.forbids && context_.slots.forbids(data_, taxon, taxon, branch));
}

double enumeration::cost_at(int taxon, const word* words, int branch, double allowed) const {
  constexpr double most_steps = 1e9;  // above all sums of weights
  const word* const there = branch_sets(branch);
  double cost =
      data_.implied_on
          ? data_.kernels.fit.cost_pair(words, there, data_.layout, allowed + rounding_)
          : data_.kernels.cost_pair(words, there, data_.layout,
                                    static_cast<std::int32_t>(std::min(allowed, most_steps)));
  if (cost <= allowed) wide_allow(taxon, branch, allowed, &cost);
  return cost;
}

/// Implied weights: takes the steps of an addition into the counters, before it is made.
void enumeration::count_steps(int taxon, const word* words, int branch) {
  if (!data_.implied_on) return;
  data_.kernels.fit.add_steps(words, branch_sets(branch), data_.layout);
  if (data_.has_wide) add_wide_steps(data_, {join_end::root, taxon}, {join_end::branch, branch});
}

/// Takes them off again, when the sets are as before.
void enumeration::uncount_steps(int taxon, const word* words, int branch) {
  if (!data_.implied_on) return;
  data_.kernels.fit.remove_steps(words, branch_sets(branch), data_.layout);
  if (data_.has_wide) remove_wide_steps(data_, {join_end::root, taxon}, {join_end::branch, branch});
}

/// Drops the places of a taxon, its sets in `costed_`, where it costs more than is allowed. Returns
/// the least cost at those that stay.
double enumeration::drop_dear_places(level& now, std::size_t which, double allowed) {
  constexpr double most_steps = 1e9;
  const int taxon = now.rest[which];
  std::int32_t* const items = now.places_of(which);
  const int count = now.place_count[which];
  int kept = 0;
  double least = no_bound;
  for (int i = 0; i < count; ++i) {
    double cost = 0;
    if (data_.implied_on) {
      i = data_.kernels.fit.scan_pairs(costed_.data(), data_.branch_base, data_.set_stride, items,
                                       i, count, data_.layout, allowed + rounding_, &cost);
    } else {
      std::int32_t steps = 0;
      i = data_.kernels.scan_pairs(
          costed_.data(), data_.branch_base, data_.set_stride, items, i, count, data_.layout,
          static_cast<std::int32_t>(std::min(allowed, most_steps)), &steps);
      cost = steps;
    }
    if (i >= count) break;
    if (!wide_allow(taxon, items[i], allowed, &cost)) continue;
    least = std::min(least, cost);
    items[kept++] = items[i];
  }
  context_.rearrangements.add(static_cast<std::uint64_t>(count));
  now.place_count[which] = kept;
  return least;
}

void enumeration::drop_forbidden_places(level& now, std::size_t which) const {
  if (!groups_ && !context_.slots.forbids) return;
  std::int32_t* const items = now.places_of(which);
  std::int32_t* const end =
      std::remove_if(items, items + now.place_count[which],
                     [&](std::int32_t v) { return is_forbidden(now.rest[which], v); });
  now.place_count[which] = static_cast<int>(end - items);
}

/// Drops the places of a taxon that lead to no tree within the limit; returns the least cost at the
/// others. Once with the characters that conflicts are charged for taken as missing, on top of that
/// bound, and once with all, on top of the length alone: each drops places that the other leaves.
double enumeration::filter_places(level& now, std::size_t which, double allowed) {
  const word* const present = now.present.data();
  if (now.conflicts > 0) {
    ahead_.without_new_states(data_, now.rest[which], present, costed_.data());
    for (std::size_t w = 0; w < ahead_.words(); ++w) costed_[w] |= now.charged[w];
    drop_dear_places(now, which, allowed - now.conflicts);
  }
  ahead_.without_new_states(data_, now.rest[which], present, costed_.data());
  const double least = drop_dear_places(now, which, allowed);
  drop_forbidden_places(now, which);
  return least;
}

// ---- the start ----

/// A few quick searches. Without them the first complete trees would have to set the bound.
void enumeration::find_start_bound() {
  constexpr int replications = 10;
  std::vector<std::int32_t> tree(at(data_.nodes));
  for (int r = 0; r < replications && !interrupted(); ++r) {
    wagner_tree(context_, tree, {});
    if (interrupted()) return;
    fetch_tree(context_, tree);
    const double score = data_.n > 4 ? tbr_swap(context_, context_.working_tree, {})
                                     : tree_length(data_, context_.working_tree);
    if (score >= start_score_) continue;
    start_score_ = score;
    start_tree_.assign(context_.working_tree.begin(), context_.working_tree.end());
  }
}

void enumeration::mark_present(std::span<word> present, int a, int b) const {
  for (std::size_t w = 0; w < ahead_.words(); ++w)
    present[w] = ahead_.states_of(0)[w] | ahead_.states_of(a)[w] | ahead_.states_of(b)[w];
}

/// Three taxa have only one tree. Those are taken to which the others fit worst, so that lengths
/// rise early.
void enumeration::choose_first_taxa(int* first, int* second) {
  constexpr int most_tried = 60;
  const int tried = std::min(data_.n, most_tried);
  const std::span<word> present = level_of(3).present;
  double dearest = -1;
  for (int a = 1; a < tried; ++a) {
    for (int b = a + 1; b < tried; ++b) {
      tree_.begin(a, b);
      mark_present(present, a, b);
      double sum = 0;
      for (int t = 1; t < data_.n; ++t) {
        if (t == a || t == b) continue;
        ahead_.without_new_states(data_, t, present.data(), costed_.data());
        double least = no_bound;
        for (const int v : {a, b, data_.n + 1})
          least = std::min(least, cost_at(t, costed_.data(), v, no_bound));
        sum += least;
      }
      if (sum <= dearest) continue;
      dearest = sum;
      *first = a;
      *second = b;
    }
  }
}

/// Adds to the length of the first tree what the states that it lacks will cost; under implied
/// weights they are counted as steps of their characters.
double enumeration::charge_new_states(const level& now, double length) {
  std::fill(coming_.begin(), coming_.end(), word{0});
  for (const std::int32_t t : now.rest)
    for (std::size_t w = 0; w < ahead_.words(); ++w) coming_[w] |= ahead_.states_of(t)[w];
  for (const single_state_field& f : fields_) {
    const int steps = coming_states::steps_to_come(f, now.present.data(), coming_.data());
    if (data_.implied_on) {
      data_.counters[at(f.counter)].steps += steps;
    } else {
      length += steps * static_cast<double>(data_.field_weight[at(f.record)]);
    }
  }
  if (!data_.implied_on) return length;
  refresh_step_costs(data_);
  choose_cost_units(data_);
  return total_fit(data_);
}

void enumeration::list_all_places(level& now) const {
  now.places.resize(now.rest.size() * now.room);
  now.place_count.assign(now.rest.size(), static_cast<int>(now.room));
  std::size_t count = 0;
  for (int v = 1; v < tree_.next_joint(); ++v)
    if (v != data_.n && data_.tree.anc[at(v)] != 0) now.places[count++] = v;
  for (std::size_t i = 1; i < now.rest.size(); ++i)
    std::copy_n(now.places.begin(), count, now.places_of(i));
}

// ---- stepping through partial trees ----

/// The taxon with the fewest places left, and of those the one whose cheapest place is dearest:
/// what is bound to fail should fail first. -1 where some taxon has no place.
int enumeration::choose_taxon(level& now, double allowed) {
  int chosen = -1;
  int fewest = 0;
  double dearest = 0;
  for (std::size_t i = 0; i < now.rest.size(); ++i) {
    const double least = filter_places(now, i, allowed);
    const int places = now.place_count[i];
    if (places == 0) return -1;
    if (chosen >= 0 && (places > fewest || (places == fewest && least <= dearest))) continue;
    chosen = static_cast<int>(i);
    fewest = places;
    dearest = least;
  }
  return chosen;
}

void enumeration::list_candidates(level& now, std::size_t which, double length,
                                  std::vector<candidate>& out) {
  out.clear();
  const int taxon = now.rest[which];
  const bool last = now.rest.size() == 1;
  ahead_.without_new_states(data_, taxon, now.present.data(), costed_.data());
  const double allowed = limit() - length;
  for (int i = 0; i < now.place_count[which]; ++i) {
    const std::int32_t branch = now.places_of(which)[i];
    const double cost = cost_at(taxon, costed_.data(), branch, allowed);
    if (cost > allowed) continue;
    candidate c{branch, length + cost, length + cost};
    if (!last && now.conflicts > 0) {
      std::copy(now.unspoilt.begin(), now.unspoilt.end(), unspoilt_then_.begin());
      conflicts_.drop_failing(costed_.data(), branch_sets(branch), unspoilt_then_.data());
      c.bound += conflicts_.bound(unspoilt_then_.data());
      if (c.bound > limit()) continue;
    }
    out.push_back(c);
  }
  std::stable_sort(out.begin(), out.end(),
                   [](const candidate& a, const candidate& b) { return a.bound < b.bound; });
}

/// Below, a taxon may go where it may here, and beside the new taxon if it may go where that goes.
void enumeration::hand_places_down(level& now, std::size_t which, std::int32_t branch,
                                   level& next) {
  next.places.resize(next.rest.size() * next.room);
  next.place_count.resize(next.rest.size());
  for (std::size_t from = 0, to = 0; from < now.rest.size(); ++from) {
    if (from == which) continue;
    const std::int32_t* const old = now.places_of(from);
    const int count = now.place_count[from];
    std::int32_t* const own = next.places_of(to);
    std::copy_n(old, count, own);
    int total = count;
    if (std::find(old, old + count, branch) != old + count) {
      own[total++] = tree_.next_joint();
      own[total++] = now.rest[which];
    }
    next.place_count[to++] = total;
  }
}

void enumeration::descend(int taxa, std::size_t which, const candidate& to) {
  level& now = level_of(taxa);
  level& next = level_of(taxa + 1);
  const int taxon = now.rest[which];
  next.rest = now.rest;
  next.rest.erase(next.rest.begin() + static_cast<std::ptrdiff_t>(which));
  if (how_.keep_places) hand_places_down(now, which, to.branch, next);
  ahead_.without_new_states(data_, taxon, now.present.data(), next.added.data());
  for (std::size_t w = 0; w < ahead_.words(); ++w)
    next.present[w] = now.present[w] | ahead_.states_of(taxon)[w];
  const word* const there = branch_sets(to.branch);
  std::copy(now.unspoilt.begin(), now.unspoilt.end(), next.unspoilt.begin());
  conflicts_.drop_failing(next.added.data(), there, next.unspoilt.data());
  count_steps(taxon, next.added.data(), to.branch);
  tree_.add(taxon, to.branch);
  if (!how_.keep_places) list_all_places(next);
  expand(taxa + 1, to.length);
  tree_.take_back();
  uncount_steps(taxon, next.added.data(), to.branch);
}

/// All complete trees that contain the tree in work, whose length includes the states to come.
void enumeration::expand(int taxa, double length) {
  if (stop()) return;
  level& now = level_of(taxa);
  if (groups_) groups_->read_growing_tree(data_.tree);
  const double of_fewer_taxa = of_landmarks_;
  if (landmarks_) of_landmarks_ = landmarks_->cost_of_growing_tree(part_that_is_sure);
  expand_within(now, taxa, length);
  of_landmarks_ = of_fewer_taxa;
}

void enumeration::expand_within(level& now, int taxa, double length) {
  const std::size_t all_places = now.room;
  now.conflicts = conflicts_.bound(now.unspoilt.data(), now.charged.data());
  const int chosen = choose_taxon(now, limit() - length);
  if (chosen < 0) return;
  const auto which = at(chosen);
  std::vector<candidate>& list = candidates_[at(taxa)];
  list_candidates(now, which, length, list);
  for (std::size_t i = 0; i < list.size() && !interrupted(); ++i) {
    note_progress(taxa, all_places - list.size() + i);
    if (list[i].bound > limit()) break;
    if (taxa + 1 == data_.n) {
      complete(now.rest[which], list[i]);
    } else {
      descend(taxa, which, list[i]);
    }
  }
}

// ---- complete trees ----

void enumeration::complete(int taxon, const candidate& last) {
  double score = last.length;
  if (data_.implied_on) {
    // Summed afresh, so that no rounding piles up. `costed_` is the taxon, without new states.
    count_steps(taxon, costed_.data(), last.branch);
    score = total_fit(data_);
    uncount_steps(taxon, costed_.data(), last.branch);
  }
  if (collapses_as_found()) {
    tree_.add(taxon, last.branch);
    if (data_.whole) score += data_.whole->score(data_);
    mark_tree_in_work(context_, marks_);
    best_.keep(score, marks_);
    tree_.take_back();
  } else {
    tree_.link(taxon, last.branch);
    if (data_.whole) score += data_.whole->score(data_);
    best_.keep(score, marks_);
    tree_.unlink(taxon);
  }
}

// ---- progress and end ----

/// `done` of the places for the next taxon are over and done with.
void enumeration::note_progress(int taxa, std::size_t done) {
  constexpr int of_four_taxa = 5;
  if (taxa == 3) five_taxa_done_ = of_four_taxa * static_cast<int>(done);
  if (taxa == 4)
    five_taxa_done_ =
        five_taxa_done_ / of_four_taxa * of_four_taxa + static_cast<int>(done) % of_four_taxa;
}

bool enumeration::stop() {
  if (++result_.nodes % nodes_between_polls == 0) {
    poll_search(context_);
    show_progress("Searching (score " + score_text(data_, best_.score()) + ")", five_taxa_done_,
                  data_.n > 4 ? trees_of_five_taxa : 0);
  }
  return interrupted();
}

exact_result enumeration::run() {
  find_start_bound();
  best_.begin_at(start_score_);
  if (!interrupted()) {
    int a = 1;
    int b = 2;
    if (data_.n > 3) choose_first_taxa(&a, &b);
    const double length = tree_.begin(a, b);
    if (data_.n == 3) {
      best_.keep(data_.whole ? length + data_.whole->score(data_) : length, marks_);
    } else {
      level& first = level_of(3);
      mark_present(first.present, a, b);
      for (int t = 1; t < data_.n; ++t)
        if (t != a && t != b) first.rest.push_back(t);
      list_all_places(first);
      conflicts_.fill(first.unspoilt.data());
      expand(3, charge_new_states(first, length));
    }
  }
  if (interrupted()) {
    result_.percent = data_.n > 4 ? five_taxa_done_ * 100 / trees_of_five_taxa : -1;
    if (context_.trees.ntrees == 0 && !start_tree_.empty())
      store_tree(context_, start_tree_, 0, start_score_);
  }
  result_.best = best_.score();
  result_.seen = best_.seen();
  result_.overflowed = best_.overflowed();
  return result_;
}

}  // namespace

exact_result find_all_best_trees(search_context& context, const exact_settings& how) {
  return enumeration(context, how).run();
}

}  // namespace zeb
