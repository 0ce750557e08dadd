#include "search/landmarks/searched_landmarks.h"

#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "engine/packing/packing_request.h"
#include "engine/packing/reduced_data.h"
#include "engine/passes/conversions.h"
#include "landmarks/fermat.h"
#include "landmarks/landmark_scores.h"
#include "landmarks/landmark_workers.h"
#include "landmarks/listed_walk.h"
#include "landmarks/point_minima.h"
#include "landmarks/point_optimiser.h"
#include "matrix/matrix.h"
#include "trees/tree_record.h"

namespace zeb {
namespace {

constexpr std::size_t most_known = 2000;  // trees

std::vector<int> all_taxa_of_matrix() {
  std::vector<int> taxa;
  for (int t = 0; t < matrix.ntax; ++t) taxa.push_back(t);
  return taxa;
}

landmark_points points_of(const packing_request& request) {
  std::vector<std::uint8_t> characters(at(matrix.nchar), 0);
  for (std::size_t c = 0; c < characters.size(); ++c) characters[c] = request.weights[c] > 0;
  std::vector<std::uint8_t> counts(at(matrix.ntax), 0);
  for (const std::int32_t t : request.taxa) counts[at(t)] = 1;
  landmark_points points = gather_points(characters, all_taxa_of_matrix(), counts);
  for (configuration_record& one : points.configurations)
    one.weight = request.weights[at(one.character)];
  return points;
}

/// The tree as the buffer would have it; `numbers`, if given, gets those of its nodes there.
std::vector<std::int32_t> buffer_form(const search_data& data, std::span<const std::int32_t> anc,
                                      std::vector<int>* numbers) {
  conversion_room room(data);
  std::vector<std::int32_t> tree(at(2 * data.all_taxa), 0);
  to_buffer(data, anc, tree, room);
  if (numbers) *numbers = room.numbers;
  return tree;
}

}  // namespace

searched_landmarks::searched_landmarks(const search_data& data, const packing_request& request)
    : rules_(request.rules), points_(points_of(request)) {
  fill_blocks(data);
  set_costs(request);
}

searched_landmarks::searched_landmarks(const searched_landmarks& outer,
                                       const search_data& outer_data, const tree_sector& sector,
                                       const search_data& inner)
    : rules_(outer.rules_), points_(outer.points_) {
  place_ends(outer, outer_data, sector);
  fill_blocks(inner);
  costs_ = outer.costs_;
  sets_ = outer.sets_;
  for (const lane_cost& cost : costs_) weights_.push_back(cost.weight);
  if (!rules_.on) return;
  // Lengths outside of the sector count for the homoplasy of each point.
  const scored_tree whole =
      outer.optimised(buffer_form(outer_data, outer_data.tree.anc, nullptr), outer_data.all_taxa);
  const std::vector<std::int32_t> own = tree_of_sector(outer_data.tree.anc, outer_data.n, sector);
  const scored_tree inside = optimised(buffer_form(inner, own, nullptr), inner.all_taxa);
  for (std::size_t p = 0; p < place_.size(); ++p)
    costs_[at(place_[p])].minimum -= whole.lengths[p] - inside.lengths[p];
}

landmark_point searched_landmarks::position_of(const node_positions& positions, std::size_t point,
                                               int node) const {
  const point_block& block = blocks_.blocks[at(place_[point] / block_lanes)];
  const double* const there = positions.of(block, node) + place_[point] % block_lanes;
  return {there[0], there[block_lanes], block.dimensions == 3 ? there[2 * block_lanes] : 0};
}

namespace {

/// The terminals of the tree in work within the clades of some nodes, as marks.
std::vector<std::uint8_t> terminals_below(const search_data& data, int top) {
  std::vector<std::uint8_t> marks(at(data.n), 0);
  std::vector<std::int32_t> waiting = {top};
  while (!waiting.empty()) {
    const int v = waiting.back();
    waiting.pop_back();
    if (v < data.n) {
      marks[at(v)] = 1;
      continue;
    }
    waiting.push_back(data.tree.first[at(v)]);
    waiting.push_back(data.tree.second[at(v)]);
  }
  return marks;
}

}  // namespace

/// The ends of a sector lie where the nodes of the tree do that stand for them; they lack a point
/// where all that is beyond them does.
void searched_landmarks::place_ends(const searched_landmarks& outer, const search_data& outer_data,
                                    const tree_sector& sector) {
  const tree_arrays& tree = outer_data.tree;
  const listed_walk whole({outer_data.n, tree.anc.data(), tree.first.data(), tree.second.data()},
                          {0, tree.sister[0]});
  node_positions positions(outer.blocks_, outer_data.nodes);
  share_out(outer.blocks_.count(), [&](int block) {
    relax_positions(outer.blocks_, block, whole.walk, from_nothing, positions);
  });
  const int above = outer_data.tree.anc[at(sector.top)];
  std::vector<std::int32_t> ends = {above == outer_data.n ? 0 : above};
  std::vector<std::vector<std::uint8_t>> beyond = {terminals_below(outer_data, sector.top)};
  for (std::uint8_t& mark : beyond[0]) mark = !mark;
  for (const std::int32_t end : sector.terminals) {
    ends.push_back(end);
    beyond.push_back(terminals_below(outer_data, end));
  }
  for (std::size_t p = 0; p < points_.points.size(); ++p) {
    point_record& point = points_.points[p];
    const int block = outer.place_[p] / block_lanes;
    const int lane = outer.place_[p] % block_lanes;
    const point_record& former = outer.points_.points[p];
    point.terminals.assign(ends.size(), missing_point);
    for (std::size_t e = 0; e < ends.size(); ++e) {
      bool is_there = false;
      for (int t = 0; t < outer_data.n && !is_there; ++t)
        is_there = beyond[e][at(t)] && (outer.blocks_.present(block, t) >> lane & 1);
      if (is_there) point.terminals[e] = outer.position_of(positions, p, ends[e]);
    }
    measure_point(point, lmark.settings);
    point.span = former.span;
    if (former.effort == point_effort::none) point.effort = point_effort::none;
  }
}

/// Points of two dimensions come before those of three, so that a block has points of one kind.
void searched_landmarks::fill_blocks(const search_data& data) {
  groups_ = groups_of_points(points_.points);
  blocks_.terminals = data.n;
  place_.assign(points_.points.size(), 0);
  for (const int dimensions : {2, 3}) {
    std::vector<int> members;
    for (std::size_t p = 0; p < points_.points.size(); ++p)
      if (points_.points[p].dimensions == dimensions) members.push_back(static_cast<int>(p));
    for (std::size_t first = 0; first < members.size(); first += block_lanes) {
      const std::size_t count = std::min<std::size_t>(block_lanes, members.size() - first);
      std::vector<const point_record*> lanes;
      for (std::size_t l = 0; l < count; ++l) {
        const auto p = at(members[first + l]);
        place_[p] = blocks_.count() * block_lanes + static_cast<int>(l);
        lanes.push_back(&points_.points[p]);
      }
      add_block(blocks_, lanes, dimensions, data.pack_to_taxon.first(at(data.n)));
    }
  }
}

/// Other characters of the set would have to be summed with its points, move by move.
void searched_landmarks::enter_set(lane_cost& cost, const packing_request& request) {
  const int set = rules_.set_of_character(cost.character);
  if (set < 0) return;
  for (int c = 0; c < matrix.nchar; ++c)
    if (rules_.set_of_character(c) == set && request.weights[at(c)] > 0 &&
        matrix.characters[at(c)].type != landmark_data)
      error_end_f("Searches can't weight landmarks together with others: character %i with %i",
                  cost.character, c);
  const auto found = std::ranges::find(sets_, set);
  cost.set = static_cast<int>(found - sets_.begin());
  if (found == sets_.end()) sets_.push_back(set);
}

void searched_landmarks::set_costs(const packing_request& request) {
  costs_.assign(at(blocks_.count()) * block_lanes, {});
  for (int i = 0; at(i) < points_.configurations.size(); ++i) {
    const configuration_record& one = points_.configurations[at(i)];
    for (int p = one.first; p < one.end; ++p) {
      const point_record& point = points_.points[at(p)];
      lane_cost& cost = costs_[at(place_[at(p)])];
      cost.character = point.character;
      cost.configuration = i;
      if (point.effort != point_effort::none) cost.weight = one.weight * point.multiplier();
      if (!rules_.on) continue;
      enter_set(cost, request);
      cost.minimum = minimum_of_point(point);
      cost.function =
          function_of_point(rules_, point.character, static_cast<double>(point.counted.size()),
                            static_cast<double>(point.count_of_taxa));
    }
  }
  weights_.clear();
  for (const lane_cost& cost : costs_) weights_.push_back(cost.weight);
}

std::vector<double> searched_landmarks::costs_by_set(std::span<const lane_values> lengths) const {
  std::vector<double> costs(sets_.size(), 0);
  if (sets_.empty()) return costs;
  for (std::size_t i = 0; i < costs_.size(); ++i) {
    const lane_cost& one = costs_[i];
    if (one.set < 0) continue;
    costs[at(one.set)] += one.weight * homoplasy(one, lengths[i / block_lanes][i % block_lanes]);
  }
  for (std::size_t s = 0; s < sets_.size(); ++s) costs[s] = rules_.set_fit(sets_[s], costs[s]);
  return costs;
}

double searched_landmarks::cost_of_sets(std::span<const lane_values> lengths) const {
  double sum = 0;
  for (const double cost : costs_by_set(lengths)) sum += cost;
  return sum;
}

void searched_landmarks::reweight(std::span<const std::uint8_t> factors) {
  for (std::size_t i = 0; i < costs_.size(); ++i)
    costs_[i].weight = weights_[i] * (factors.empty() ? 1 : factors[at(costs_[i].character)]);
}

double searched_landmarks::cost_added(int block, const lane_values& lengths,
                                      const lane_values& added) const {
  double sum = 0;
  for (int l = 0; l < block_lanes; ++l) {
    const lane_cost& one = costs_[at(block) * block_lanes + at(l)];
    sum += rules_.on ? cost(one, lengths[at(l)] + added[at(l)]) - cost(one, lengths[at(l)])
                     : one.weight * added[at(l)];
  }
  return sum;
}

searched_landmarks::scored_tree searched_landmarks::optimised(std::span<const std::int32_t> tree,
                                                              int ntax) const {
  const landmark_tree shape = landmark_tree_of(tree, ntax);
  scored_tree result;
  result.lengths.assign(points_.points.size(), 0);
  std::vector<std::vector<std::uint8_t>> stays(groups_.size());
  share_out(static_cast<int>(groups_.size()), [&](int part) {
    const std::vector<int>& group = groups_[at(part)];
    point_optimiser optimiser(lmark.settings);
    optimiser.optimise(shape, points_.points, group);
    for (std::size_t l = 0; l < group.size(); ++l)
      result.lengths[at(group[l])] = optimiser.length(l);
    stays[at(part)].assign(at(shape.nodes()), 0);
    optimiser.mark_long_branches(same_place, stays[at(part)]);
  });
  result.stays.assign(at(shape.nodes()), 0);
  for (const auto& marks : stays)
    for (std::size_t v = 0; v < marks.size(); ++v) result.stays[v] |= marks[v];
  return result;
}

const searched_landmarks::scored_tree& searched_landmarks::known(const search_data& data,
                                                                 std::span<const std::int32_t> anc,
                                                                 std::vector<int>* numbers) {
  std::vector<std::int32_t> tree = buffer_form(data, anc, numbers);
  if (const auto found = known_.find(tree); found != known_.end()) return found->second;
  if (known_.size() >= most_known) known_.clear();
  scored_tree scored = optimised(tree, data.all_taxa);
  return known_.emplace(std::move(tree), std::move(scored)).first->second;
}

double searched_landmarks::score_of(const search_data& data, std::span<const std::int32_t> anc) {
  double sum = 0;
  for (const double cost : costs_by_configuration(data, anc)) sum += cost;
  return sum;
}

std::vector<double> searched_landmarks::costs_by_configuration(const search_data& data,
                                                               std::span<const std::int32_t> anc) {
  const scored_tree& tree = known(data, anc, nullptr);
  std::vector<double> costs;
  std::vector<double> sums(sets_.size(), 0);
  for (const configuration_record& one : points_.configurations) {
    costs.push_back(0);
    for (int p = one.first; p < one.end; ++p) {
      const lane_cost& lane = costs_[at(place_[at(p)])];
      const double length = tree.lengths[at(p)];
      if (lane.set < 0)
        costs.back() += cost(lane, length);
      else
        sums[at(lane.set)] += lane.weight * homoplasy(lane, length);
    }
  }
  for (std::size_t s = 0; s < sets_.size(); ++s) costs.push_back(rules_.set_fit(sets_[s], sums[s]));
  return costs;
}

void searched_landmarks::add_by_configuration(int block, const lane_values& lengths, double sign,
                                              std::span<double> costs) const {
  for (int l = 0; l < block_lanes; ++l) {
    const lane_cost& one = costs_[at(block) * block_lanes + at(l)];
    costs[at(one.configuration)] += sign * cost(one, lengths[at(l)]);
  }
}

void searched_landmarks::mark_staying(const search_data& data, int /*rule*/,
                                      std::span<std::uint8_t> marks) {
  std::vector<int> numbers;
  const scored_tree& tree = known(data, data.tree.anc, &numbers);
  for (int v = data.n + 1; v < data.nodes; ++v) {
    const int there = numbers[at(data.all_taxa + v - data.n)];
    if (data.tree.anc[at(v)] == data.n || tree.stays[at(there)]) marks[at(v)] = 1;
  }
}

}  // namespace zeb
