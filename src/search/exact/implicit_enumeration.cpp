#include "search/exact/implicit_enumeration.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "console/progress.h"
#include "engine/fit/implied_weighting.h"
#include "engine/passes/passes.h"
#include "search/exact/best_trees.h"
#include "search/exact/coming_states.h"
#include "search/exact/conflicts.h"
#include "search/exact/growing_tree.h"
#include "search/exact/packed_fields.h"
#include "search/exact/partial_trees.h"
#include "search/exact/place_costs.h"
#include "search/landmarks/landmark_moves.h"
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
  double charge_new_states(const partial_tree& now, double length);

  void expand(int taxa, double length);
  void expand_within(partial_tree& now, int taxa, double length);
  int choose_taxon(partial_tree& now, double allowed);
  double filter_places(partial_tree& now, std::size_t which, double allowed);
  void list_candidates(partial_tree& now, std::size_t which, double length,
                       std::vector<candidate>& out);
  void descend(int taxa, std::size_t which, const candidate& to);
  void complete(int taxon, const candidate& last);
  void note_progress(int taxa, std::size_t done);
  bool stop();

  /// Trees that a search can only approach the collapsing of are all kept, for the full rule to
  /// judge at the end: those that it leaves apart needn't be apart by the quick one.
  bool collapses_as_found() const {
    constexpr int last_quick_rule = 3;
    return search_level(context_) > 0 && search_level(context_) <= last_quick_rule;
  }
  partial_tree& tree_of(int taxa) { return trees_[at(taxa - 3)]; }
  /// For all but landmarks.
  double limit() const { return best_.limit() - of_landmarks_; }

  search_context& context_;
  search_data& data_;
  const exact_settings how_;
  arena_scope memory_;
  std::vector<single_state_field> fields_;
  coming_states ahead_;
  character_conflicts conflicts_;
  growing_tree tree_;
  place_costs costs_;
  std::vector<partial_tree> trees_;                 // by number of taxa, from three on
  std::vector<std::vector<candidate>> candidates_;  // by number of taxa
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
      fields_(how.look_ahead ? single_state_fields(data_) : std::vector<single_state_field>{}),
      ahead_(data_, fields_),
      conflicts_(data_, fields_),
      tree_(data_),
      costs_(context),
      candidates_(at(data_.n) + 1),
      unspoilt_then_(conflicts_.set_words()),
      marks_(at(data_.nodes), 1),
      best_(context, how.sample),
      landmarks_(data_.whole ? std::make_unique<landmark_moves>(data_) : nullptr) {
  constexpr std::size_t cache_line = 64;
  const std::size_t words = std::max(at(data_.nwords), at(words_per_block));
  costed_ = calloc_low<word>(words, cache_line);
  coming_ = calloc_low<word>(words, cache_line);
  for (int taxa = 3; taxa < data_.n; ++taxa)
    trees_.emplace_back(taxa, words, conflicts_.set_words());
}

/// Drops the places of a taxon that lead to no tree within the limit; returns the least cost at the
/// others. Once with the characters that conflicts are charged for taken as missing, on top of that
/// bound, and once with all, on top of the length alone: each drops places that the other leaves.
double enumeration::filter_places(partial_tree& now, std::size_t which, double allowed) {
  const word* const present = now.present.data();
  const int taxon = now.rest[which];
  std::int32_t* const places = now.places_of(which);
  int* const count = &now.place_count[which];
  if (now.conflicts > 0) {
    ahead_.without_new_states(data_, taxon, present, costed_.data());
    for (std::size_t w = 0; w < ahead_.words(); ++w) costed_[w] |= now.charged[w];
    costs_.drop_dear(taxon, costed_.data(), allowed - now.conflicts, places, count);
  }
  ahead_.without_new_states(data_, taxon, present, costed_.data());
  const double least = costs_.drop_dear(taxon, costed_.data(), allowed, places, count);
  costs_.drop_forbidden(taxon, places, count);
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
  const std::span<word> present = tree_of(3).present;
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
          least = std::min(least, costs_.cost_at(t, costed_.data(), v, no_bound));
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
double enumeration::charge_new_states(const partial_tree& now, double length) {
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

// ---- stepping through partial trees ----

/// The taxon with the fewest places left, and of those the one whose cheapest place is dearest:
/// what is bound to fail should fail first. -1 where some taxon has no place.
int enumeration::choose_taxon(partial_tree& now, double allowed) {
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

void enumeration::list_candidates(partial_tree& now, std::size_t which, double length,
                                  std::vector<candidate>& out) {
  out.clear();
  const int taxon = now.rest[which];
  const bool last = now.rest.size() == 1;
  ahead_.without_new_states(data_, taxon, now.present.data(), costed_.data());
  const double allowed = limit() - length;
  for (int i = 0; i < now.place_count[which]; ++i) {
    const std::int32_t branch = now.places_of(which)[i];
    const double cost = costs_.cost_at(taxon, costed_.data(), branch, allowed);
    if (cost > allowed) continue;
    candidate c{branch, length + cost, length + cost};
    if (!last && now.conflicts > 0) {
      std::copy(now.unspoilt.begin(), now.unspoilt.end(), unspoilt_then_.begin());
      conflicts_.drop_failing(costed_.data(), costs_.branch_sets(branch), unspoilt_then_.data());
      c.bound += conflicts_.bound(unspoilt_then_.data());
      if (c.bound > limit()) continue;
    }
    out.push_back(c);
  }
  std::stable_sort(out.begin(), out.end(),
                   [](const candidate& a, const candidate& b) { return a.bound < b.bound; });
}

void enumeration::descend(int taxa, std::size_t which, const candidate& to) {
  partial_tree& now = tree_of(taxa);
  partial_tree& next = tree_of(taxa + 1);
  const int taxon = now.rest[which];
  next.rest = now.rest;
  next.rest.erase(next.rest.begin() + static_cast<std::ptrdiff_t>(which));
  if (how_.keep_places) hand_places_down(now, which, to.branch, tree_, next);
  ahead_.without_new_states(data_, taxon, now.present.data(), next.added.data());
  for (std::size_t w = 0; w < ahead_.words(); ++w)
    next.present[w] = now.present[w] | ahead_.states_of(taxon)[w];
  const word* const there = costs_.branch_sets(to.branch);
  std::copy(now.unspoilt.begin(), now.unspoilt.end(), next.unspoilt.begin());
  conflicts_.drop_failing(next.added.data(), there, next.unspoilt.data());
  costs_.count_steps(taxon, next.added.data(), to.branch);
  tree_.add(taxon, to.branch);
  if (!how_.keep_places) list_all_places(data_, tree_, next);
  expand(taxa + 1, to.length);
  tree_.take_back();
  costs_.uncount_steps(taxon, next.added.data(), to.branch);
}

/// All complete trees that contain the tree in work, whose length includes the states to come.
void enumeration::expand(int taxa, double length) {
  if (stop()) return;
  partial_tree& now = tree_of(taxa);
  costs_.read_tree();
  const double of_fewer_taxa = of_landmarks_;
  if (landmarks_) of_landmarks_ = landmarks_->cost_of_growing_tree(part_that_is_sure);
  expand_within(now, taxa, length);
  of_landmarks_ = of_fewer_taxa;
}

void enumeration::expand_within(partial_tree& now, int taxa, double length) {
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
    costs_.count_steps(taxon, costed_.data(), last.branch);
    score = total_fit(data_);
    costs_.uncount_steps(taxon, costed_.data(), last.branch);
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
      partial_tree& first = tree_of(3);
      mark_present(first.present, a, b);
      for (int t = 1; t < data_.n; ++t)
        if (t != a && t != b) first.rest.push_back(t);
      list_all_places(data_, tree_, first);
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
