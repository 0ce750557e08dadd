#include "search/moves/constrained_start.h"

#include <algorithm>
#include <bit>
#include <utility>
#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/random.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"

namespace zeb {
namespace {

/// One side of a group each; the root is among the others.
struct rooted_group {
  taxon_set members;
  taxon_set others;
};

/// A terminal that is in no positive group afloat; -1 none.
int fixed_terminal(const constraint_rows& rows) {
  for (int t = 0; t < rows.terminals; ++t) {
    bool fixed = true;
    for (std::size_t w = 0; w < rows.words; ++w)
      fixed &= (rows.positive[w] & ~(rows.members_of(t)[w] | rows.others_of(t)[w])) == 0;
    if (fixed) return t;
  }
  return -1;
}

std::vector<rooted_group> positive_groups(const constraint_rows& rows, int root) {
  std::vector<rooted_group> groups;
  for (std::size_t w = 0; w < rows.words; ++w) {
    for (set_word rest = rows.positive[w]; rest; rest &= rest - 1) {
      const set_word bit = rest & -rest;
      rooted_group group{taxon_set(rows.terminals), taxon_set(rows.terminals)};
      for (int t = 0; t < rows.terminals; ++t) {
        group.members.assign(t, (rows.members_of(t)[w] & bit) != 0);
        group.others.assign(t, (rows.others_of(t)[w] & bit) != 0);
      }
      if (group.members.contains(root)) std::swap(group.members, group.others);
      groups.push_back(std::move(group));
    }
  }
  return groups;
}

/// The parts into which a clade falls: members of a group stay together where some of its others
/// are in the clade.
std::vector<taxon_set> parts_of(const taxon_set& clade, const std::vector<rooted_group>& groups) {
  std::vector<taxon_set> parts;
  for (const int t : clade) parts.push_back(taxon_set(clade.size(), {t}));
  for (const rooted_group& group : groups) {
    if (!group.others.meets(clade)) continue;
    taxon_set joined = group.members & clade;
    if (joined.empty()) continue;
    std::erase_if(parts, [&](const taxon_set& part) {
      const bool together = part.meets(group.members);
      if (together) joined |= part;
      return together;
    });
    parts.push_back(std::move(joined));
  }
  return parts;
}

/// The clades of a tree that has all groups (Aho and others 1981); false where there is none.
bool find_clades(const std::vector<rooted_group>& groups, int terminals,
                 std::vector<taxon_set>& clades) {
  taxon_set all(terminals);
  all.fill();
  std::vector<taxon_set> open = {all};
  while (!open.empty()) {
    const taxon_set clade = std::move(open.back());
    open.pop_back();
    std::vector<taxon_set> parts = parts_of(clade, groups);
    if (parts.size() < 2) return false;
    for (taxon_set& part : parts) {
      if (part.count() < 2) continue;
      clades.push_back(part);
      if (part.count() > 2) open.push_back(std::move(part));
    }
  }
  return true;
}

constexpr int trees_tried = 200'000;  // partial ones; enough for all of 8 taxa

/// Terminals in random order, those that float in fewer groups first.
std::vector<std::int32_t> addition_order(search_context& context) {
  const constraint_rows& rows = context.constraints_in_force->rows();
  const int n = context.data.n;
  std::vector<std::int32_t> order(at(n));
  random_sequence(context.random, n, order, 0, {});
  const auto groups_fixed = [&rows](int terminal) {
    int count = 0;
    for (std::size_t w = 0; w < rows.words; ++w) {
      count += std::popcount(rows.members_of(terminal)[w] | rows.others_of(terminal)[w]);
    }
    return count;
  };
  std::stable_sort(order.begin() + 1, order.end(),
                   [&](int a, int b) { return groups_fixed(a) > groups_fixed(b); });
  return order;
}

void hang(tree_arrays& tree, int ancestor, int left, int right) {
  tree.first[at(ancestor)] = left;
  tree.second[at(ancestor)] = right;
  tree.anc[at(left)] = tree.anc[at(right)] = ancestor;
  tree.sister[at(left)] = right;
  tree.sister[at(right)] = left;
}

}  // namespace

std::optional<constraint_rows> without_floating(const constraint_rows& rows) {
  const int root = fixed_terminal(rows);
  std::vector<taxon_set> clades;
  if (root < 0 || !find_clades(positive_groups(rows, root), rows.terminals, clades)) return {};
  const std::size_t first = set_words(static_cast<int>(clades.size()));
  constraint_rows closed;
  closed.terminals = rows.terminals;
  closed.words = first + rows.words;
  closed.members.assign(at(rows.terminals) * closed.words, 0);
  closed.others = closed.members;
  closed.positive.assign(closed.words, 0);
  closed.negative = closed.of_tree = closed.positive;
  closed.any_floating = rows.any_floating;
  for (int t = 0; t < rows.terminals; ++t) {
    set_word* const members = closed.members.data() + at(t) * closed.words;
    set_word* const others = closed.others.data() + at(t) * closed.words;
    for (std::size_t c = 0; c < clades.size(); ++c) {
      const set_word bit = set_word{1} << (c % taxa_per_word);
      set_word* const side = clades[c].contains(t) ? members : others;
      side[c / taxa_per_word] |= bit;
      closed.positive[c / taxa_per_word] |= bit;
    }
    for (std::size_t w = 0; w < rows.words; ++w) {
      members[first + w] = rows.members_of(t)[w] & rows.negative[w];
      others[first + w] = rows.others_of(t)[w] & rows.negative[w];
      closed.negative[first + w] = rows.negative[w];
    }
  }
  return closed;
}

bool find_constrained_tree(search_context& context) {
  search_data& data = context.data;
  const int n = data.n;
  const std::vector<std::int32_t> order = addition_order(context);
  group_tables tables(context.constraints_in_force->rows(), data.nodes);
  hang(data.tree, n, 0, n + 1);
  hang(data.tree, n + 1, order[1], order[2]);
  // By position in the order: the branches that are still to be tried for that taxon.
  std::vector<std::vector<int>> untried(at(n));
  const auto list_places = [&](int position) {
    tables.read_growing_tree(data.tree);
    for (const int v : tables.nodes_read()) {
      if (tables.allows(order[at(position)], v)) untried[at(position)].push_back(v);
    }
  };
  int tried = 0;
  int position = 3;
  if (n > 3) list_places(3);
  while (position < n) {
    if (++tried > trees_tried || interrupted()) return false;
    if (untried[at(position)].empty()) {
      if (--position < 3) return false;
      detach(data.tree, order[at(position)]);
      continue;
    }
    attach(data.tree, order[at(position)], n + position - 1, untried[at(position)].back());
    untried[at(position)].pop_back();
    if (++position < n) list_places(position);
  }
  full_pass(data);
  return true;
}

}  // namespace zeb
