// States at nodes, lengths of branches, numbers of changes and lists of reconstructions, polytomies
// hard and soft, against all assignments of states to small trees and their resolutions, tried one
// by one.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <set>

#include "base/arena.h"
#include "engine/collapsing/collapsing.h"
#include "mapping/branch_lengths.h"
#include "mapping/node_states.h"
#include "mapping/reconstructions.h"
#include "mapping/state_changes.h"
#include "property/random_costs.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

/// A character as the definition of parsimony sees it.
struct problem {
  std::vector<long> values;
  std::vector<std::vector<long>> at_terminal;  // what each may have
  std::function<long(long, long)> cost;
  std::uint32_t root_states = 0;
};

std::vector<long> states_in(std::uint32_t set) {
  std::vector<long> states;
  for (long s = 0; s < 32; ++s)
    if (set >> s & 1U) states.push_back(s);
  return states;
}

std::uint32_t widened(std::uint32_t set) {
  const std::vector<long> states = states_in(set);
  for (long s = states.empty() ? 1 : states.front(); !states.empty() && s < states.back(); ++s)
    set |= 1U << s;
  return set;
}

problem problem_of(const zeb_test::mixed_matrix& data, std::size_t c) {
  problem p;
  const auto taxa = data.cells[c].size();
  p.cost = [additive = data.additive[c]](long a, long b) {
    return additive ? std::labs(a - b) : static_cast<long>(a != b);
  };
  std::uint32_t all = 0;
  std::vector<std::uint32_t> cells = data.cells[c];
  for (std::uint32_t& cell : cells) {
    if (data.additive[c]) cell = widened(cell);
    all |= cell;
  }
  if (data.additive[c]) all = widened(all);
  if (!data.costs[c].cost.empty()) {
    const naive::change_costs& costs = data.costs[c];
    p.cost = [&costs](long a, long b) {
      return costs.cost[static_cast<std::size_t>(a)][static_cast<std::size_t>(b)];
    };
    p.root_states = costs.root_states;
    if (all) all = (1U << costs.states) - 1;
  }
  p.values = states_in(all);
  if (!data.ranges[c].empty()) {
    p.cost = [](long a, long b) { return std::labs(a - b); };
    std::set<long> ends;
    for (const auto& [low, high] : data.ranges[c])
      if (low <= high) ends.insert({low, high});
    p.values.assign(ends.begin(), ends.end());
  }
  for (std::size_t t = 0; t < taxa; ++t) {
    std::vector<long> own;
    for (const long v : p.values) {
      const bool has = data.ranges[c].empty()
                           ? cells[t] == 0 || (cells[t] >> v & 1U)
                           : data.ranges[c][t].first > data.ranges[c][t].second ||
                                 (v >= data.ranges[c][t].first && v <= data.ranges[c][t].second);
      if (has) own.push_back(v);
    }
    p.at_terminal.push_back(own);
  }
  return p;
}

struct range {
  long least = 1'000'000;
  long most = -1;
  void take(long low, long high) {
    least = std::min(least, low);
    most = std::max(most, high);
  }
};

/// All best assignments of values to internal nodes.
struct tried {
  long steps = -1;
  std::set<std::vector<long>> best;     // by internal node
  std::vector<std::set<long>> at_node;  // over all of them, by node
  std::vector<range> branches;          // by node
  range changes;
};

class every_assignment {
 public:
  every_assignment(const tree_shape& shape, const problem& p, std::uint32_t from, std::uint32_t to)
      : shape_(shape), p_(p), from_(from), to_(to), state_(shape.nodes(), 0) {}

  tried try_all() {
    if (!p_.values.empty()) assign(matrix.ntax);
    found_.at_node.resize(state_.size());
    found_.branches.resize(state_.size());
    for (const std::vector<long>& inner : found_.best) summarise(inner);
    return found_;
  }

 private:
  void assign(int node) {
    if (at(node) == state_.size()) return judge();
    for (const long v : p_.values) {
      state_[at(node)] = v;
      assign(node + 1);
    }
  }
  /// The values of a terminal that are cheapest from its ancestor's.
  std::vector<long> cheapest(int taxon) const {
    std::vector<long> values;
    long least = 1'000'000;
    const long above = state_[at(shape_.ancestor(taxon))];
    for (const long v : p_.at_terminal[at(taxon)]) {
      if (p_.cost(above, v) < least) values.clear();
      least = std::min(least, p_.cost(above, v));
      if (p_.cost(above, v) == least) values.push_back(v);
    }
    return values;
  }
  void judge() {
    const long root = state_[at(matrix.ntax)];
    long steps = p_.root_states && !(p_.root_states >> root & 1U) ? naive::forbidden : 0;
    for (int v = 0; at(v) < state_.size(); ++v) {
      if (v == matrix.ntax) continue;
      const long end = v < matrix.ntax ? cheapest(v).front() : state_[at(v)];
      steps += p_.cost(state_[at(shape_.ancestor(v))], end);
    }
    if (found_.steps >= 0 && steps > found_.steps) return;
    if (steps != found_.steps) found_.best.clear();
    found_.steps = steps;
    found_.best.emplace(state_.begin() + matrix.ntax, state_.end());
  }
  void summarise(const std::vector<long>& inner) {
    std::copy(inner.begin(), inner.end(), state_.begin() + matrix.ntax);
    range changes{0, 0};
    for (int v = 0; at(v) < state_.size(); ++v) {
      const std::vector<long> ends = v < matrix.ntax ? cheapest(v) : std::vector{state_[at(v)]};
      found_.at_node[at(v)].insert(ends.begin(), ends.end());
      if (v == matrix.ntax) continue;
      const long above = state_[at(shape_.ancestor(v))];
      range here;
      for (const long end : ends) {
        found_.branches[at(v)].take(p_.cost(above, end), p_.cost(above, end));
        const bool counts =
            above != end && above < 32 && end < 32 && (from_ >> above & 1U) && (to_ >> end & 1U);
        here.take(counts, counts);
      }
      changes.least += here.least;
      changes.most += here.most;
    }
    found_.changes.take(changes.least, changes.most);
  }

  const tree_shape& shape_;
  const problem& p_;
  std::uint32_t from_;
  std::uint32_t to_;
  std::vector<long> state_;
  tried found_;
};

std::vector<tree_node> random_record(int ntax, std::mt19937& g) {
  const naive::rooted_tree tree = naive::random_tree(ntax, g);
  std::vector<tree_node> record(tree.parent.begin(), tree.parent.end());
  record[at(ntax)] = 2 * ntax - 1;
  std::vector<std::uint8_t> marks(record.size(), 1);
  for (int v = ntax + 1; v < 2 * ntax - 1; ++v) marks[at(v)] = chance(g, 0.7);
  condense_tree(record, marks);
  return record;
}

std::set<std::vector<long>> listed(const tree_shape& shape, int character,
                                   const reconstruction_rules& rules = {}) {
  std::set<std::vector<long>> found;
  reconstruction_list list(shape, character, rules);
  long count = 0;
  for (; list.next(); ++count) {
    std::vector<long> inner;
    for (int v = matrix.ntax; at(v) < shape.nodes(); ++v) inner.push_back(list.value(v));
    found.insert(inner);
  }
  EXPECT_EQ(static_cast<double>(count), list.count());
  EXPECT_EQ(static_cast<std::size_t>(count), found.size());
  return found;
}

/// Calls `visit(record)` for all binary trees that the tree can be resolved to; some come more than
/// once. Nodes of the tree keep their numbers.
void for_each_resolution(const std::vector<tree_node>& record,
                         const std::function<void(const std::vector<tree_node>&)>& visit) {
  const tree_shape shape(record);
  for (const int node : shape.inner) {
    if (shape.lists.count[at(node)] < 3) continue;
    for (const int a : shape.lists.children(node))
      for (const int b : shape.lists.children(node)) {
        if (a >= b) continue;
        std::vector<tree_node> joined = record;
        const tree_node inserted = joined[at(matrix.ntax)]++;
        joined[at(inserted)] = node;
        joined[at(a)] = joined[at(b)] = inserted;
        for_each_resolution(joined, visit);
      }
    return;
  }
  visit(record);
}

/// The best over all resolutions, for the nodes of the tree itself.
tried try_resolutions(const std::vector<tree_node>& record, const problem& p, std::uint32_t from,
                      std::uint32_t to) {
  tried best;
  for_each_resolution(record, [&](const std::vector<tree_node>& resolved) {
    const tree_shape shape(resolved);
    const tried one = every_assignment(shape, p, from, to).try_all();
    if (best.steps >= 0 && one.steps > best.steps) return;
    if (one.steps != best.steps) best = one;
    for (std::size_t v = 0; v < tree_shape(record).nodes(); ++v) {
      best.at_node[v].insert(one.at_node[v].begin(), one.at_node[v].end());
      best.branches[v].take(one.branches[v].least, one.branches[v].most);
    }
    best.changes.take(one.changes.least, one.changes.most);
  });
  return best;
}

void compare_sets(const tree_shape& shape, int c, const tried& expected, polytomy_kind polytomies) {
  const mapped_character mapped = map_character(shape, c, pass::final, polytomies);
  EXPECT_EQ(mapped.steps, std::max(expected.steps, 0L));
  for (std::size_t v = 0; v < shape.nodes() && expected.steps >= 0; ++v) {
    const std::set<long>& values = expected.at_node[v];
    if (matrix.characters[at(c)].is_continuous) {
      EXPECT_EQ(mapped.at_nodes[v].range.low, *values.begin());
      EXPECT_EQ(mapped.at_nodes[v].range.high, *values.rbegin());
      continue;
    }
    std::uint32_t states = 0;
    for (const long s : values) states |= 1U << s;
    EXPECT_EQ(mapped.at_nodes[v].states, states) << "node " << v;
  }
}

void compare_branches(const tree_shape& shape, int c, const tried& expected,
                      polytomy_kind polytomies) {
  const length_ranges lengths = branch_lengths(shape, {c}, polytomies);
  const character_record& record = matrix.characters[at(c)];
  const double unit = record.weight / (record.is_continuous ? 1000.0 : 1.0);
  for (int v = 0; at(v) < shape.nodes() && expected.steps >= 0; ++v) {
    if (v == matrix.ntax) continue;
    const range& branch = expected.branches[at(v)];
    EXPECT_NEAR(lengths.least[at(v)], unit * static_cast<double>(branch.least), 1e-9);
    EXPECT_NEAR(lengths.most[at(v)], unit * static_cast<double>(branch.most), 1e-9);
  }
}

void compare_changes(const change_range& changes, const tried& expected) {
  EXPECT_EQ(changes.least, expected.changes.least);
  EXPECT_EQ(changes.most, expected.changes.most);
}

/// One node is held to one state, or kept from it.
void compare_forced(const tree_shape& shape, int c, const problem& p, std::mt19937& g) {
  const int node = draw(g, matrix.ntax, static_cast<int>(shape.nodes()) - 1);
  const auto state = p.values[at(draw(g, 0, static_cast<int>(p.values.size()) - 1))];
  std::vector<std::uint32_t> allowed(shape.nodes(), 0);
  allowed[at(node)] = chance(g, 0.5) ? 1U << state : ~(1U << state);
  long least = -1;
  std::set<std::vector<long>> best;
  problem forced = p;
  // Any assignment may be the best one now: all of them are tried by making all costs equal.
  forced.cost = [](long, long) { return 0L; };
  forced.root_states = 0;
  for (const std::vector<long>& inner : every_assignment(shape, forced, 0, 0).try_all().best) {
    const long here = inner[at(node - matrix.ntax)];
    if (p.values.size() > 1 && !(allowed[at(node)] >> here & 1U)) continue;
    problem one = p;
    long steps = p.root_states && !(p.root_states >> inner[0] & 1U) ? naive::forbidden : 0;
    for (int v = 0; at(v) < shape.nodes(); ++v) {
      if (v == matrix.ntax) continue;
      const long above = inner[at(shape.ancestor(v) - matrix.ntax)];
      long cost = 1'000'000;
      if (v >= matrix.ntax) cost = p.cost(above, inner[at(v - matrix.ntax)]);
      if (v < matrix.ntax)
        for (const long end : p.at_terminal[at(v)]) cost = std::min(cost, p.cost(above, end));
      steps += cost;
    }
    if (least >= 0 && steps > least) continue;
    if (steps != least) best.clear();
    least = steps;
    best.insert(inner);
  }
  EXPECT_EQ(listed(shape, c, {allowed, 0}), best);
}

TEST(mapping, agrees_with_all_assignments_of_states) {
  create_arena(std::size_t{1} << 26);
  for (unsigned seed = 1; seed <= 100; ++seed) {
    std::mt19937 g(seed);
    zeb_test::mixed_shape kinds;
    kinds.ntax = draw(g, 4, 5);
    kinds.states = draw(g, 2, 3);
    kinds.continuous = 1;
    kinds.polymorphic = 0.25;
    const zeb_test::mixed_matrix data = zeb_test::fill_mixed(kinds, g);
    const std::vector<tree_node> record = random_record(kinds.ntax, g);
    const tree_shape shape(record);
    for (int c = 0; c < matrix.nchar; ++c) {
      SCOPED_TRACE("seed " + std::to_string(seed) + " character " + std::to_string(c));
      const std::uint32_t from = 1U << draw(g, 0, 2);
      const std::uint32_t to = 1U << draw(g, 0, 2);
      const problem p = problem_of(data, at(c));
      const tried expected = every_assignment(shape, p, from, to).try_all();
      compare_sets(shape, c, expected, polytomy_kind::hard);
      compare_branches(shape, c, expected, polytomy_kind::hard);
      if (expected.steps < 0) continue;
      const tried soft = try_resolutions(record, p, from, to);
      compare_sets(shape, c, soft, polytomy_kind::soft);
      compare_branches(shape, c, soft, polytomy_kind::soft);
      const std::set<std::vector<long>> list = listed(shape, c);
      if (matrix.characters[at(c)].is_continuous) {
        EXPECT_TRUE(
            std::includes(expected.best.begin(), expected.best.end(), list.begin(), list.end()));
        continue;
      }
      EXPECT_EQ(list, expected.best);
      compare_forced(shape, c, p, g);
      compare_changes(count_changes(shape, c, from, to), expected);
      compare_changes(count_changes(shape, c, from, to, polytomy_kind::soft), soft);
    }
  }
  wipe_matrix();
  release_arena();
}

}  // namespace
}  // namespace zeb
