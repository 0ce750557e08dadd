// Numbers of changes between states against every reconstruction of small trees, tried one by one.
#include "mapping/state_changes.h"
#include "matrix/matrix_layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdlib>

#include "base/arena.h"
#include "engine/collapsing/collapsing.h"
#include "property/random_matrix.h"

namespace zeb {
namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

struct tried {
  long steps = -1;
  int least = 0;
  int most = 0;
};

class every_reconstruction {
 public:
  every_reconstruction(const std::vector<tree_node>& record, int ntax,
                       const std::vector<std::uint32_t>& cells, bool additive, int from, int to)
      : record_(record), ntax_(ntax), additive_(additive), from_(from), to_(to) {
    for (const std::uint32_t c : cells) all_ |= c;
    const int low = all_ ? std::countr_zero(all_) : 0;
    const int high = all_ ? 31 - std::countl_zero(all_) : 0;
    if (additive) all_ = range(low, high);
    for (const std::uint32_t c : cells) {
      const bool widen = additive && c;
      allowed_.push_back(!c      ? all_
                         : widen ? range(std::countr_zero(c), 31 - std::countl_zero(c))
                                 : c);
    }
    allowed_.resize(at(record[at(ntax)]), all_);
    states_.resize(allowed_.size());
  }

  tried best() {
    assign(0);
    return best_;
  }

 private:
  static std::uint32_t range(int low, int high) {
    std::uint32_t states = 0;
    for (int s = low; s <= high; ++s) states |= 1U << s;
    return states;
  }

  void assign(int node) {
    if (at(node) == states_.size()) return judge();
    for (int s = 0; s < 32; ++s) {
      if (!(allowed_[at(node)] >> s & 1U)) continue;
      states_[at(node)] = s;
      assign(node + 1);
    }
  }

  void judge() {
    long steps = 0;
    int changes = 0;
    for (int v = 0; at(v) < states_.size(); ++v) {
      if (v == ntax_) continue;
      const int above = states_[at(record_[at(v)])];
      const int here = states_[at(v)];
      steps += above == here ? 0 : additive_ ? std::abs(above - here) : 1;
      changes += above != here && above == from_ && here == to_;
    }
    if (best_.steps < 0 || steps < best_.steps) {
      best_ = {steps, changes, changes};
    } else if (steps == best_.steps) {
      best_.least = std::min(best_.least, changes);
      best_.most = std::max(best_.most, changes);
    }
  }

  const std::vector<tree_node>& record_;
  int ntax_;
  bool additive_;
  int from_;
  int to_;
  std::uint32_t all_ = 0;
  std::vector<std::uint32_t> allowed_;
  std::vector<int> states_;
  tried best_;
};

TEST(state_changes, least_and_most_are_those_of_all_reconstructions) {
  create_arena(std::size_t{1} << 26);
  for (unsigned seed = 1; seed <= 150; ++seed) {
    std::mt19937 g(seed);
    zeb_test::data_shape shape;
    shape.ntax = 4 + static_cast<int>(seed % 2);
    shape.nchar = 2;
    shape.states = 3;
    shape.additive = 0.4;
    const zeb_test::oracle_matrix oracle = zeb_test::fill_matrix(shape, g);
    const naive::rooted_tree tree = naive::random_tree(shape.ntax, g);
    std::vector<tree_node> record(tree.parent.begin(), tree.parent.end());
    record[at(shape.ntax)] = 2 * shape.ntax - 1;
    std::vector<std::uint8_t> marks(record.size(), 1);
    for (int v = shape.ntax + 1; v < 2 * shape.ntax - 1; ++v)
      marks[at(v)] = zeb_test::chance(g, 0.8);
    condense_tree(record, marks);
    for (int c = 0; c < shape.nchar; ++c) {
      const int from = zeb_test::draw(g, 0, 2);
      const int to = zeb_test::draw(g, 0, 2);
      const tried expected = every_reconstruction(record, shape.ntax, oracle.cells[at(c)],
                                                  oracle.additive[at(c)], from, to)
                                 .best();
      const change_range found = count_changes(tree_shape(record), c, 1U << from, 1U << to);
      EXPECT_EQ(found.least, expected.least) << "seed " << seed << " character " << c;
      EXPECT_EQ(found.most, expected.most) << "seed " << seed << " character " << c;
    }
  }
  wipe_matrix();
  release_arena();
}

}  // namespace
}  // namespace zeb
