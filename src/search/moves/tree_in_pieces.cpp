#include "search/moves/tree_in_pieces.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/indices.h"
#include "base/interrupts.h"
#include "engine/fit/implied_weighting.h"
#include "engine/joining.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"
#include "engine/passes/waves.h"
#include "landmarks/search_settings.h"
#include "search/landmarks/landmark_moves.h"
#include "search/search_report.h"

namespace zeb {
namespace {

constexpr double unbounded = 1e9;  // above all costs
constexpr int none = -1;           // no piece hangs there
constexpr int free_joint = -2;
constexpr int joins_between_reports = 25;

}  // namespace

tree_in_pieces::tree_in_pieces(search_context& context, std::span<const std::int32_t> tree)
    : context_(context), data_(context.data), main_size_(data_.n - 1) {
  piece_of_top_.assign(at(data_.nodes), none);
  std::ranges::copy(tree.first(at(data_.nodes)), data_.tree.anc.begin());
  rebuild_links(data_);
}

tree_in_pieces::tree_in_pieces(search_context& context, std::vector<tree_piece> pieces)
    : context_(context), data_(context.data), pieces_(std::move(pieces)) {}

tree_in_pieces::~tree_in_pieces() = default;

int tree_in_pieces::terminals_below(int node) const {
  int count = 0;
  std::vector<std::int32_t> stack = {node};
  while (!stack.empty()) {
    const int v = stack.back();
    stack.pop_back();
    if (v < data_.n) {
      ++count;
      continue;
    }
    stack.push_back(data_.tree.first[at(v)]);
    stack.push_back(data_.tree.second[at(v)]);
  }
  return count;
}

bool tree_in_pieces::cut(int node) {
  constexpr int fewest_left = 2;  // beside terminal 0
  if (node <= 0 || node == data_.n || node == data_.tree.sister[0]) return false;
  if (piece_of_top_[at(node)] != none) return false;
  int top = node;  // of the piece that the node is in
  while (data_.tree.anc[at(top)] != data_.n && piece_of_top_[at(top)] < 0)
    top = data_.tree.anc[at(top)];
  const int size = terminals_below(node);
  const int above = data_.tree.anc[at(node)];
  const int holder = piece_of_top_[at(top)];
  if (holder < 0) {
    if (main_size_ - size < fewest_left) return false;
    main_size_ -= size;
  }
  if (above == top && holder >= 0) {
    // The root of that piece goes: what is left of it hangs on the sister.
    const int sister = data_.tree.sister[at(node)];
    pieces_[at(holder)].top = sister;
    piece_of_top_[at(sister)] = holder;
    data_.tree.anc[at(sister)] = pieces_[at(holder)].joint;
  } else {
    detach(data_.tree, node);
  }
  piece_of_top_[at(above)] = free_joint;
  piece_of_top_[at(node)] = static_cast<int>(pieces_.size());
  pieces_.push_back({node, above, size});
  return true;
}

void tree_in_pieces::make_sets() {
  full_pass(data_);
  for (const tree_piece& piece : pieces_) subtree_pass(data_, piece.top);
  if (data_.implied_on) choose_cost_units(data_);
  if (data_.whole) {
    landmarks_ = std::make_unique<landmark_moves>(data_);
    landmarks_->begin_growing();
  }
  if (context_.constraints_in_force) {
    groups_.emplace(context_.constraints_in_force->rows(), data_.nodes);
    groups_->read_growing_tree(data_.tree);
  }
}

void tree_in_pieces::list_branches() {
  branches_.assign(1, data_.tree.sister[0]);
  for (std::size_t i = 0; i < branches_.size(); ++i) {
    const std::int32_t v = branches_[i];
    if (v < data_.n) continue;
    branches_.push_back(data_.tree.first[at(v)]);
    branches_.push_back(data_.tree.second[at(v)]);
  }
  const auto start = context_.random.draw() % static_cast<int>(branches_.size());
  std::rotate(branches_.begin(), branches_.begin() + start, branches_.end());
}

bool tree_in_pieces::is_open(const tree_piece& piece, int branch) const {
  if (groups_ && piece.top < data_.n && !groups_->allows(piece.top, branch)) return false;
  return !context_.slots.forbids || !context_.slots.forbids(data_, piece.top, piece.top, branch);
}

int tree_in_pieces::cheapest_branch(const tree_piece& piece) {
  list_branches();
  if (groups_ || context_.slots.forbids)
    std::erase_if(branches_, [&](std::int32_t v) { return !is_open(piece, v); });
  const int count = static_cast<int>(branches_.size());
  const word* const words = data_.sets[at(piece.top)].down;
  int best = data_.tree.sister[0];
  double below = unbounded;
  for (int i = 0; i < count && below > 0; ++i) {
    double cost = 0;
    if (data_.implied_on) {
      i = data_.kernels.fit.scan_pairs(words, data_.branch_base, data_.set_stride, branches_.data(),
                                       i, count, data_.layout, below, &cost);
    } else {
      std::int32_t steps = 0;
      i = data_.kernels.scan_pairs(words, data_.branch_base, data_.set_stride, branches_.data(), i,
                                   count, data_.layout,
                                   static_cast<std::int32_t>(std::ceil(below)) - 1, &steps);
      cost = steps;
    }
    if (i >= count) break;
    const std::int32_t v = branches_[at(i)];
    if (data_.has_wide) {
      cost +=
          wide_join_cost(data_, {join_end::root, piece.top}, {join_end::branch, v}, below - cost);
      if (cost >= below) continue;
    }
    if (landmarks_) {
      cost += landmarks_->cost_of_adding(piece.top, v, below - cost);
      if (cost >= below) continue;
    }
    below = cost;
    best = v;
  }
  return best;
}

void tree_in_pieces::join(const tree_piece& piece) {
  if (landmarks_ && piece.top >= data_.n) landmarks_->place_clade(piece.top);
  const int branch = cheapest_branch(piece);
  if (data_.implied_on)
    add_attachment_steps(data_, {join_end::root, piece.top}, {join_end::branch, branch});
  if (landmarks_) landmarks_->place_added(piece.top, branch, piece.joint);
  attach(data_.tree, piece.top, piece.joint, branch);
  repair_after_insert(data_, piece.top);
  if (landmarks_)
    landmarks_->settle_added(piece.joint, landmark_searching.refine_depth,
                             landmark_searching.refine_rounds, !landmark_searching.quick_wagner);
  if (!groups_) return;
  if (piece.top < data_.n) {
    groups_->note_added(piece.top);
  } else {
    groups_->read_growing_tree(data_.tree);
  }
}

void tree_in_pieces::join_all(std::span<std::int32_t> tree) {
  int joined = 0;
  for (const tree_piece& piece : pieces_) {
    if (++joined % joins_between_reports == 0) report_status_best(context_);
    if (interrupted()) {
      attach(data_.tree, piece.top, piece.joint, data_.tree.sister[0]);
    } else {
      join(piece);
    }
  }
  pieces_.clear();
  std::ranges::copy(data_.tree.anc.first(at(data_.nodes)), tree.begin());
  tree[at(data_.n)] = data_.nodes;
}

}  // namespace zeb
