// The landmark characters of a search: their points in the order in which they are summed up, what
// a length costs, and whole trees scored in full.
//
// A tree is scored in full as reports score it, by grids and all that follows, so that a search
// ends with the scores that reports show. That is dear, so moves are judged by estimates first
// (`landmark_moves.h`), and scores of trees are kept for a while: swaps come back to the same ones.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "engine/fit/fit_rules.h"
#include "engine/search_data.h"
#include "engine/whole_trees.h"
#include "landmarks/landmark_tree.h"
#include "landmarks/point_blocks.h"
#include "landmarks/point_records.h"

namespace zeb {

class landmark_moves;
struct packing_request;

class searched_landmarks final : public whole_tree_characters {
 public:
  searched_landmarks(const search_data& data, const packing_request& request);
  /// Of a sector of the tree in work of `outer_data`.
  searched_landmarks(const searched_landmarks& outer, const search_data& outer_data,
                     const tree_sector& sector, const search_data& inner);

  double score(const search_data& data) override { return score_of(data, data.tree.anc); }
  void mark_staying(const search_data& data, int rule, std::span<std::uint8_t> marks) override;
  void list_characters(std::vector<std::int32_t>& list) const override {
    for (const configuration_record& one : points_.configurations) list.push_back(one.character);
  }
  void reweight(std::span<const std::uint8_t> factors) override;
  std::shared_ptr<whole_tree_characters> of_sector(const search_data& outer,
                                                   const tree_sector& sector,
                                                   const search_data& inner) override {
    return std::make_shared<searched_landmarks>(*this, outer, sector, inner);
  }

  /// The swap that is going on, whose clip moves are asked about; null: none.
  const landmark_moves* moves_in_work() const { return moves_in_work_; }
  void note_moves(const landmark_moves* moves) { moves_in_work_ = moves; }

  /// Of the tree with these ancestors.
  double score_of(const search_data& data, std::span<const std::int32_t> anc);

  const point_blocks& blocks() const { return blocks_; }
  /// What points cost that are weighted together, by set, at these lengths (by block). What is told
  /// of blocks and their lanes leaves them out.
  std::vector<double> costs_by_set(std::span<const lane_values> lengths) const;
  double cost_of_sets(std::span<const lane_values> lengths) const;
  bool has_sets() const { return !sets_.empty(); }
  /// What a length costs, of one lane of a block; 0 of one without a point.
  double cost(int block, int lane, double length) const {
    return cost(costs_[at(block) * block_lanes + at(lane)], length);
  }
  /// ... and of all lanes of a block, summed in order.
  double cost(int block, const lane_values& lengths) const {
    double sum = 0;
    for (int l = 0; l < block_lanes; ++l) sum += cost(block, l, lengths[at(l)]);
    return sum;
  }
  /// Of a tree with these ancestors, in full, by configuration; then of sets that are weighted
  /// together.
  std::vector<double> costs_by_configuration(const search_data& data,
                                             std::span<const std::int32_t> anc);
  /// What the points that lie in a block cost, added to those of their configurations.
  void add_by_configuration(int block, const lane_values& lengths, double sign,
                            std::span<double> costs) const;
  /// Configurations and sets.
  std::size_t parts() const { return points_.configurations.size() + sets_.size(); }
  /// What `added` costs on top of `length`.
  double cost_added(int block, const lane_values& lengths, const lane_values& added) const;

 private:
  struct lane_cost {
    double weight = 0;
    double minimum = 0;  // length that costs nothing, under implied weights
    fit_function function;
    int character = 0;
    int configuration = 0;
    int set = -1;  // of `sets_`: of points that are weighted together
  };
  /// What is known of a tree that was optimised.
  struct scored_tree {
    std::vector<double> lengths;      // by point
    std::vector<std::uint8_t> stays;  // by node of the tree in the form of the buffer
  };
  void place_ends(const searched_landmarks& outer, const search_data& outer_data,
                  const tree_sector& sector);
  landmark_point position_of(const node_positions& positions, std::size_t point, int node) const;
  void fill_blocks(const search_data& data);
  void set_costs(const packing_request& request);
  void enter_set(lane_cost& cost, const packing_request& request);
  double homoplasy(const lane_cost& one, double length) const {
    return std::max(0.0, length - one.minimum);
  }
  double cost(const lane_cost& one, double length) const {
    if (!rules_.on) return one.weight * length;
    if (one.set >= 0) return 0;
    return one.weight * rules_.fit(one.function, homoplasy(one, length));
  }
  scored_tree optimised(std::span<const std::int32_t> tree, int ntax) const;
  const scored_tree& known(const search_data& data, std::span<const std::int32_t> anc,
                           std::vector<int>* numbers);

  const landmark_moves* moves_in_work_ = nullptr;
  fit_rules rules_;
  landmark_points points_;                // their terminals are the taxa of the matrix
  std::vector<std::vector<int>> groups_;  // of points that are scored together
  point_blocks blocks_;                   // terminals are those of the search
  std::vector<lane_cost> costs_;          // by block and lane
  std::vector<int> sets_;        // numbers, in the rules, of sets that points are weighted in
  std::vector<int> place_;       // of each point: block * lanes + lane
  std::vector<double> weights_;  // by place, without `reweight`
  std::map<std::vector<std::int32_t>, scored_tree> known_;  // by tree in the form of the buffer
};

/// The landmarks of a data set; null: it has none.
inline searched_landmarks* landmarks_in(const search_data& data) {
  return static_cast<searched_landmarks*>(data.whole.get());
}

}  // namespace zeb
