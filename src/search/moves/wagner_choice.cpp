#include "search/moves/wagner_choice.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "base/indices.h"

namespace zeb {
namespace {

enum addition_rule { largest_difference, closest, furthest };

/// What one taxon's costs over the branches are worth: higher is better under every rule.
double merit(int rule, double lowest, double highest) {
  switch (rule) {
    case largest_difference:
      return highest - lowest;
    case closest:
      return -lowest;
    default:
      return highest;
  }
}

/// Moves the entry at `from` to `to`, the ones between moving up.
void bring_forward(std::span<std::int32_t> order, int from, int to) {
  std::rotate(order.begin() + to, order.begin() + from, order.begin() + from + 1);
}

/// The places in the order of the three taxa that are best to begin with.
struct first_choice {
  bool any = false;
  double merit = 0;
  int places[3] = {1, 2, 3};
};

/// Looks for a third taxon beside those at places `i` and `j`.
void try_third_taxa(wagner_build& build, int i, int j, int look, int rule, first_choice& best) {
  const int n = build.data.n;
  build.first_tree(0, build.order[at(i)], build.order[at(j)]);
  const int branches[] = {n + 1, build.order[at(i)], build.order[at(j)]};
  int looked_at = 0;
  for (int k = 1; k < n && looked_at < look; ++k) {
    if (k == i || k == j) continue;
    ++looked_at;
    double lowest = unbounded;
    double highest = 0;
    for (const int v : branches) {
      const double cost = build.cost_at(build.order[at(k)], v, unbounded);
      lowest = std::min(lowest, cost);
      highest = std::max(highest, cost);
    }
    const double value = merit(rule, lowest, highest);
    if (!best.any || value > best.merit) best = {true, value, {i, j, k}};
  }
}

/// What one taxon costs on the branches that were listed.
struct taxon_costs {
  double lowest = unbounded;
  double highest = 0;
  int branch = -1;  // of the lowest; -1: it may go nowhere
};

/// `count` candidates and one more.
taxon_costs costs_of_taxon(wagner_build& build, int taxon, int count) {
  // Only `cas` may stop early: the other rules need the worst cost too.
  const bool may_stop = build.additions.rule == closest;
  taxon_costs costs;
  for (int i = 0; i <= count; ++i) {
    const int v = build.candidates[at(i)];
    if (build.forbidden(taxon, v)) continue;
    const double cost = build.cost_at(taxon, v, may_stop ? costs.lowest : unbounded);
    if (cost < costs.lowest) {
      costs.lowest = cost;
      costs.branch = v;
    }
    costs.highest = std::max(costs.highest, cost);
    if (costs.lowest == 0 && may_stop) break;
  }
  return costs;
}

}  // namespace

void choose_first_taxa(wagner_build& build, int look, int rule) {
  const int n = build.data.n;
  const int last = std::min(n - 1, std::max(look, 2));
  first_choice best;
  if (n < 4) return;
  for (int i = 1; i <= last; ++i)
    for (int j = i + 1; j <= last; ++j) {
      if (build.stop_between_trials()) return;
      try_third_taxa(build, i, j, look, rule, best);
    }
  const std::int32_t chosen[] = {build.order[at(best.places[0])], build.order[at(best.places[1])],
                                 build.order[at(best.places[2])]};
  for (int place = 1; place <= 3; ++place) {
    const auto found =
        std::find(build.order.begin() + place, build.order.begin() + n, chosen[place - 1]);
    bring_forward(build.order, static_cast<int>(found - build.order.begin()), place);
  }
}

void add_chosen_taxa(wagner_build& build) {
  const int n = build.data.n;
  const addition_settings& additions = build.additions;
  for (int p = 3; p < n && !build.stuck; ++p) {
    if (build.stop_at(p)) return;
    const int count =
        build.list_candidates(wagner_build::walk::random, (build.context.random.draw() & 1) != 0);
    build.candidates[at(count)] = build.data.tree.sister[0];
    const int tried =
        static_cast<int>(std::min<std::int64_t>(n, static_cast<std::int64_t>(p) + additions.look));
    double best_value = 0;
    int chosen = p;
    int chosen_branch = -1;
    for (int q = p; q < tried; ++q) {
      if (build.stop_between_trials()) return;
      const taxon_costs costs = costs_of_taxon(build, build.order[at(q)], count);
      const double value = merit(additions.rule, costs.lowest, costs.highest);
      if (chosen_branch >= 0 && value <= best_value) continue;
      best_value = value;
      chosen = q;
      chosen_branch = costs.branch < 0 ? build.data.tree.sister[0] : costs.branch;
      if (additions.rule == closest && costs.lowest == 0) break;
    }
    std::swap(build.order[at(p)], build.order[at(chosen)]);
    build.best_branch = chosen_branch;
    build.place_taxon(build.order[at(p)]);
    build.shuffle_scan_order(count / 2 + 1);
  }
}

namespace {

/// States of a terminal, fields with more than one state left empty: they count as missing.
void copy_unambiguous(const search_data& data, const word* from, std::span<word> to) {
  const kernel_layout& layout = data.layout;
  for (int w = 0; w < layout.end2; ++w) {
    const int bits = w < layout.end0 ? 2 : w < layout.end1 ? 4 : 8;
    const word field = bits == 8 ? 0xffU : (1U << bits) - 1;
    word kept = 0;
    for (int shift = 0; shift < 32; shift += bits) {
      const word states = (from[w] >> shift) & field;
      if (std::popcount(states) == 1) kept |= states << shift;
    }
    to[at(w)] = kept;
  }
}

/// Fields in which two states at least have been seen twice.
int informative_fields(const kernel_layout& layout, std::span<const word> seen,
                       std::span<const word> twice, std::span<const word> taxon) {
  int count = 0;
  for (int w = 0; w < layout.end2; ++w) {
    const word t = (seen[at(w)] & taxon[at(w)]) | twice[at(w)];
    if (w < layout.end0) {
      count += std::popcount(t & (t >> 1) & 0x55555555U);
      continue;
    }
    const int bits = w < layout.end1 ? 4 : 8;
    const word field = (1U << bits) - 1;
    for (int shift = 0; shift < 32; shift += bits) count += std::popcount((t >> shift) & field) > 1;
  }
  return count;
}

}  // namespace

void informative_sequence(wagner_build& build) {
  const search_data& data = build.data;
  const int n = data.n;
  choose_first_taxa(build, build.additions.informative, largest_difference);
  const arena_scope scope;
  const std::size_t words = at(data.layout.end2);
  const std::span<word> cleaned = alloc_low<word>(checked_product(words, at(n)));
  const std::span<word> seen = calloc_low<word>(words);
  const std::span<word> twice = calloc_low<word>(words);
  auto states = [&](int taxon) { return cleaned.subspan(at(taxon) * words, words); };
  for (int t = 0; t < n; ++t) copy_unambiguous(data, build.down(t), states(t));
  auto merge = [&](int taxon) {
    for (std::size_t w = 0; w < words; ++w) {
      twice[w] |= seen[w] & states(taxon)[w];
      seen[w] |= states(taxon)[w];
    }
  };
  for (int p = 0; p < 4; ++p) merge(build.order[at(p)]);
  for (int p = 4; p < n; ++p) {
    if (build.stop_at(p)) return;
    const int tried = static_cast<int>(
        std::min<std::int64_t>(n, static_cast<std::int64_t>(p) + build.additions.informative));
    int chosen = p;
    int best = -1;
    for (int q = p; q < tried; ++q) {
      const int value = informative_fields(data.layout, seen, twice, states(build.order[at(q)]));
      if (value > best) {
        best = value;
        chosen = q;
      }
    }
    bring_forward(build.order, chosen, p);
    merge(build.order[at(p)]);
  }
}

}  // namespace zeb
