#include "search/sectors/sector_cells.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "base/indices.h"
#include "base/message_text.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// The states of two nodes as a range: where they overlap, or what lies between them.
struct state_range {
  std::uint32_t low, high;
};
state_range joint_range(state_range a, state_range b) {
  const std::uint32_t above = std::max(a.low, b.low);
  const std::uint32_t below = std::min(a.high, b.high);
  return {std::min(above, below), std::max(above, below)};
}

std::uint32_t joint_of_additive(std::uint32_t a, std::uint32_t b) {
  const auto range_of = [](std::uint32_t states) {
    return state_range{static_cast<std::uint32_t>(std::countr_zero(states)),
                       31U - static_cast<std::uint32_t>(std::countl_zero(states))};
  };
  if (a == 0 || b == 0) return a | b;
  const state_range joint = joint_range(range_of(a), range_of(b));
  return static_cast<std::uint32_t>((std::uint64_t{2} << joint.high) -
                                    (std::uint64_t{1} << joint.low));
}

std::uint32_t joint_of_continuous(std::uint32_t a, std::uint32_t b) {
  const state_range joint = joint_range({a & 0xffffU, a >> 16}, {b & 0xffffU, b >> 16});
  return joint.low | joint.high << 16;
}

std::uint32_t joint_of_unordered(std::uint32_t a, std::uint32_t b) { return a & b ? a & b : a | b; }

using joint_rule = std::uint32_t (*)(std::uint32_t a, std::uint32_t b);
joint_rule rule_of(const character_record& c) {
  if (c.is_continuous) return joint_of_continuous;
  return c.additive && !c.is_sankoff ? joint_of_additive : joint_of_unordered;
}

/// Internal nodes of the ingroup, each after its descendants.
std::vector<std::int32_t> tips_first(const tree_arrays& tree, int n) {
  std::vector<std::int32_t> order = {tree.sister[0]};
  for (std::size_t i = 0; i < order.size(); ++i)
    for (const std::int32_t v : {tree.first[at(order[i])], tree.second[at(order[i])]})
      if (v >= n) order.push_back(v);
  std::reverse(order.begin(), order.end());
  return order;
}

}  // namespace

std::vector<part_taxon> rows_of_sector(const search_data& outer, const tree_sector& sector) {
  const tree_arrays& tree = outer.tree;
  const std::vector<std::int32_t> order = tips_first(tree, outer.n);
  std::vector<std::int32_t> path;  // from the sector's top to below the ingroup's node
  for (int v = sector.top; tree.anc[at(v)] != outer.n; v = tree.anc[at(v)]) path.push_back(v);
  std::vector<part_taxon> rows(sector.terminals.size() + 1);
  rows[0].name = text_of("HTU_%i", tree.anc[at(sector.top)]);
  for (std::size_t t = 0; t < sector.terminals.size(); ++t) {
    const std::int32_t v = sector.terminals[t];
    rows[t + 1].name =
        v < outer.n ? text_of("Tax_%i", outer.pack_to_taxon[at(v)]) : text_of("HTU_%i", v);
  }
  std::vector<std::uint32_t> states(at(outer.nodes));
  for (int c = 0; c < matrix.nchar; ++c) {
    const joint_rule joint = rule_of(matrix.characters[at(c)]);
    for (int t = 0; t < outer.n; ++t) states[at(t)] = cell(outer.pack_to_taxon[at(t)], c);
    for (const std::int32_t v : order)
      states[at(v)] = joint(states[at(tree.first[at(v)])], states[at(tree.second[at(v)])]);
    std::uint32_t outside = states[0];
    for (auto v = path.rbegin(); v != path.rend(); ++v)
      outside = joint(outside, states[at(tree.sister[at(*v)])]);
    rows[0].cells.push_back(outside);
    for (std::size_t t = 0; t < sector.terminals.size(); ++t)
      rows[t + 1].cells.push_back(states[at(sector.terminals[t])]);
  }
  return rows;
}

}  // namespace zeb
