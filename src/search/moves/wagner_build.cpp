#include "search/moves/wagner_build.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "engine/fit/implied_weighting.h"
#include "engine/joining.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"
#include "engine/passes/waves.h"
#include "engine/wide/wide_costs.h"
#include "landmarks/search_settings.h"
#include "search/landmarks/landmark_moves.h"
#include "search/search_report.h"

namespace zeb {

wagner_build::wagner_build(search_context& search, const addition_settings& how,
                           const build_constraints& obeyed)
    : context(search),
      data(search.data),
      additions(how),
      fits(data.implied_on),
      slots(search.slots),
      closing(obeyed.closing),
      landmarks(data.whole ? std::make_unique<landmark_moves>(data) : nullptr),
      more_to_ask(data.has_wide || landmarks || slots.forbids) {
  const std::size_t nodes = at(data.nodes);
  order = alloc_low<std::int32_t>(nodes);
  candidates = alloc_low<std::int32_t>(nodes);
  pairs = alloc_low<std::int32_t>(nodes);
  scan_order = alloc_low<std::int32_t>(nodes);
  if (obeyed.rows) groups.emplace(*obeyed.rows, data.nodes);
}

wagner_build::~wagner_build() = default;

void wagner_build::first_tree(int a, int b, int c) {
  tree_arrays& t = data.tree;
  std::fill(t.anc.begin(), t.anc.end(), 0);
  const int root = data.n;
  const int top = root + 1;
  auto hang = [&t](int ancestor, int left, int right) {
    t.first[at(ancestor)] = left;
    t.second[at(ancestor)] = right;
    t.anc[at(left)] = t.anc[at(right)] = ancestor;
    t.sister[at(left)] = right;
    t.sister[at(right)] = left;
  };
  hang(root, a, top);
  hang(top, b, c);
  t.anc[at(root)] = root + 2;
  full_pass(data);
  if (landmarks) landmarks->begin_growing();
  if (fits) choose_cost_units(data);
  branches.begin(top, b, c);
  if (groups) groups->read_growing_tree(t);
}

int wagner_build::list_candidates(walk way, bool swapped) {
  if (way == walk::forward) return branches.list(candidates);
  const int count = branches.list(pairs);
  const int nodes = count / 2;
  for (int i = 0; i < nodes; ++i) {
    const int pair = 2 * (way == walk::backward ? nodes - 1 - i : scan_order[at(i)]);
    candidates[at(2 * i)] = pairs[at(pair + swapped)];
    candidates[at(2 * i + 1)] = pairs[at(pair + 1 - swapped)];
  }
  return count;
}

double wagner_build::cost_at(int taxon, int v, double bound) const {
  const double cost = join_cost(data, {join_end::root, taxon}, {join_end::branch, v}, bound);
  if (!landmarks || cost > bound) return cost;
  return cost + landmarks->cost_of_adding(taxon, v, bound - cost);
}

bool wagner_build::all_others_allow(int taxon, join_side to, double below, double* cost) const {
  if (data.has_wide) {
    *cost += wide_join_cost(data, {join_end::root, taxon}, to, below - *cost);
    if (*cost >= below) return false;
  }
  if (landmarks && to.end == join_end::branch) {
    *cost += landmarks->cost_of_adding(taxon, to.number, below - *cost);
    if (*cost >= below) return false;
  }
  return to.end == join_end::cluster || !forbidden(taxon, to.number);
}

int wagner_build::leave_out_forbidden(int taxon, int count) {
  if (!groups) return count;
  const auto end =
      std::remove_if(candidates.begin(), candidates.begin() + count,
                     [&](std::int32_t v) { return !groups->allows(taxon, v, closing); });
  return static_cast<int>(end - candidates.begin());
}

/// A place that is forbidden is kept for a taxon that may go nowhere, but any other beats it.
void wagner_build::start_place(int taxon) {
  best_branch = data.tree.sister[0];
  best = forbidden(taxon, best_branch) ? unbounded : cost_at(taxon, best_branch, unbounded);
}

void wagner_build::try_candidates(int taxon, int count, double below) {
  const word* words = down(taxon);
  for (int i = 0;; ++i) {
    double cost = 0;
    i = scan(words, data.branch_base, candidates, i, count, below, &cost);
    if (i >= count) return;
    if (!others_allow(taxon, {join_end::branch, candidates[at(i)]}, below, &cost)) continue;
    best = below = cost;
    best_branch = candidates[at(i)];
    if (best == 0) return;
  }
}

/// Since only lower costs replace the best, ties keep the branch walked first, and it is the
/// direction of the walk that breaks ties between replications. Costing two sister branches at once
/// by the union of their sets, as was done at first, loses against the batch kernel.
void wagner_build::find_place(int taxon) {
  start_place(taxon);
  if (best == 0) return;
  const int start = best_branch;
  const double start_cost = best;
  const bool bit = (context.random.draw() & 1) != 0;
  const auto candidates_by = [&](walk way, bool swapped) {
    return leave_out_forbidden(taxon, list_candidates(way, swapped));
  };
  if (context.rules.random_insertion && !slots.forbids && !groups) {
    // Shuffled here, not when a taxon has been placed: a place that costs nothing ends the search
    // for others.
    shuffle_scan_order(data.tree.anc[at(data.n)] - data.n - 1);
    try_candidates(taxon, candidates_by(walk::random, bit), best);
  } else if (bit) {
    try_candidates(taxon, candidates_by(walk::backward, false), unbounded);
    if (best > start_cost) {
      best = start_cost;
      best_branch = start;
    }
  } else {
    try_candidates(taxon, candidates_by(walk::forward, false), best);
  }
}

void wagner_build::attach_taxon(int taxon) {
  std::int32_t& next_free = data.tree.anc[at(data.n)];
  if (next_free == data.nodes - 1 && forbidden(taxon, best_branch)) {
    error_end("Sorry, cannot build a tree with specified constraints");
  }
  if (fits) add_attachment_steps(data, {join_end::root, taxon}, {join_end::branch, best_branch});
  const int joint = next_free;
  if (landmarks) landmarks->place_added(taxon, best_branch, joint);
  attach(data.tree, taxon, joint, best_branch);
  ++next_free;
  repair_after_insert(data, taxon);
  if (landmarks) settle_landmarks(joint);
  if (groups) groups->note_added(taxon);
  // Steps get cheaper as homoplasy grows with the tree.
  if (fits && std::has_single_bit(static_cast<unsigned>(next_free - data.n)))
    choose_cost_units(data);
}

void wagner_build::settle_landmarks(int joint) {
  const landmark_search_settings& wanted = landmark_searching;
  landmarks->settle_added(joint, wanted.refine_depth, wanted.refine_rounds, !wanted.quick_wagner);
}

void wagner_build::place_taxon(int taxon) {
  stuck = groups && !groups->allows(taxon, best_branch, closing);
  if (stuck) return;
  branches.insert(data, best_branch, data.tree.anc[at(data.n)], taxon);
  attach_taxon(taxon);
}

void wagner_build::shuffle_scan_order(int count) {
  for (int i = 0; i < count; ++i) scan_order[at(i)] = i;
  for (int i = count - 1; i > 0; --i) {
    std::swap(scan_order[at(i)], scan_order[at(context.random.draw() % (i + 1))]);
  }
}

bool wagner_build::stop_at(int position) {
  if (position > 150 && position % 25 == 0) {
    context.shown.build_percent = static_cast<int>(100LL * position / data.n);
    report_status(context, no_score, false);
  }
  return interrupted();
}

bool wagner_build::stop_between_trials() {
  report_status_best(context);
  return interrupted();
}

}  // namespace zeb
