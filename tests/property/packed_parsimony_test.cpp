// Packed words against the oracle: lengths, costs of joining, and waves against full passes, in
// every width and weight mode.
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

#include "base/arena.h"
#include "base/scores.h"
#include "engine/joining.h"
#include "engine/kernels/kernel_choice.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"
#include "engine/passes/undo.h"
#include "engine/passes/waves.h"
#include "engine/registration.h"
#include "engine/search_data.h"
#include "engine/settings.h"
#include "engine/wide/wide_costs.h"
#include "engine/wide/wide_sets.h"
#include "matrix/matrix_layout.h"
#include "property/clipped_trees.h"
#include "property/plain_wide_kind.h"
#include "property/random_matrix.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

/// Uses the kernels of one width whatever the processor would choose.
void use_width(search_data& data, int bits) {
  const scoring_mode mode = data.uniform_mode    ? scoring_mode::uniform
                            : data.per_char_mode ? scoring_mode::per_character
                                                 : scoring_mode::word_weights;
  data.kernels = kernels_of_width(bits, mode);
  data.undo.piece_words = bits / 32;
  data.undo.capacity = static_cast<std::int32_t>(
      std::min(data.undo.where_size, data.undo.words_size / at(bits / 32)));
}

std::vector<int> usable_widths() {
  std::vector<int> widths;
  for (const int bits : {32, 64, 256, 512})
    if (bits <= widest_kernels()) widths.push_back(bits);
  return widths;
}

class packed_parsimony : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    create_arena(std::size_t{1} << 28);
    register_engine();
  }
  static void TearDownTestSuite() {
    wipe_matrix();
    create_arena(16'000'000);
  }
};

/// Sets of every node of the subtree that a pass defines, in one row.
std::vector<word> all_sets(const search_data& data, int top) {
  std::vector<word> row;
  for (const int v : zeb_test::nodes_below(data, top)) {
    const node_sets& s = data.sets[at(v)];
    const auto add = [&](const word* p) { row.insert(row.end(), p, p + data.nwords); };
    const auto add_wide = [&](const word* base, std::size_t words) {
      if (data.has_wide) row.insert(row.end(), base + at(v) * words, base + at(v + 1) * words);
    };
    if (v >= data.n) {
      add(s.down);
      add(s.final);
      add(s.unions);
      add_wide(data.wide.down, data.wide.down_words);
      add_wide(data.wide.final, data.wide.final_words);
    }
    if (v == top) continue;
    add(s.branch);
    add_wide(data.wide.branch, data.wide.branch_words);
  }
  return row;
}

/// Do all four arrays say the same?
bool links_agree(const search_data& data) {
  const tree_arrays& t = data.tree;
  for (int v = data.n; v < data.nodes; ++v) {
    const int a = t.first[at(v)];
    const int b = t.second[at(v)];
    if (t.anc[at(a)] != v || t.anc[at(b)] != v) return false;
    if (t.sister[at(a)] != b || t.sister[at(b)] != a) return false;
  }
  return true;
}

naive::rooted_tree as_naive(const search_data& data) {
  naive::rooted_tree tree;
  tree.terminals = data.n;
  tree.parent.assign(data.tree.anc.begin(), data.tree.anc.end());
  tree.parent[at(data.n)] = -1;
  return tree;
}

std::vector<std::int32_t> random_ancestors(const search_data& data, std::mt19937& g) {
  const naive::rooted_tree tree = naive::random_tree(data.n, g);
  std::vector<std::int32_t> anc(tree.parent.begin(), tree.parent.end());
  anc[at(data.n)] = data.nodes;
  return anc;
}

/// Random clusters, as a swapper has them: nodes in groups of a few, each with the union of their
/// branch sets.
struct random_clusters {
  random_clusters(search_data& data, std::mt19937& g) : data_(data) {
    const int count = 1 + data.nodes / 5;
    unions_.assign(at((count + 1) * data.nwords) + words_per_block, 0);
    word* const base =
        unions_.data() +
        (64 - reinterpret_cast<std::uintptr_t>(unions_.data()) % 64) % 64 / sizeof(word);
    for (int c = 0; c < count; ++c) {
      records_.push_back({});
      records_.back().union_now = base + c * data.nwords;
    }
    for (int v = 0; v < data.nodes; ++v) member_.push_back(draw(g, 0, count - 1));
    data.cluster_of = member_;
    data.clusters = records_;
    data.cluster_count = count;
    data.in_swap = true;
    if (data.has_wide) {
      allocate_wide_clusters(data, count);
      for (int c = 0; c < count; ++c) empty_wide_cluster(data, c);
    }
    full_pass(data);
  }
  ~random_clusters() {
    data_.in_swap = false;
    data_.cluster_count = 0;
  }
  bool hold(const std::vector<int>& nodes, int top) const {
    for (const int v : nodes) {
      if (v == top) continue;
      const word* const wide = records_[at(member_[at(v)])].union_now;
      for (int w = 0; w < data_.nwords; ++w)
        if (data_.sets[at(v)].branch[w] & ~wide[w]) return false;
      if (!data_.has_wide) continue;
      // No cluster costs more than a branch that is in it.
      for (const int other : nodes) {
        if (other == top) continue;
        const join_side from{join_end::branch, other};
        if (wide_join_cost(data_, from, {join_end::cluster, member_[at(v)]}, no_bound) >
            wide_join_cost(data_, from, {join_end::branch, v}, no_bound))
          return false;
      }
    }
    return true;
  }
  std::vector<word> all_unions() const {
    std::vector<word> row;
    for (const cluster_record& c : records_)
      row.insert(row.end(), c.union_now, c.union_now + data_.nwords);
    if (data_.has_wide)
      row.insert(row.end(), data_.wide.cluster,
                 data_.wide.cluster + records_.size() * data_.wide.branch_words);
    return row;
  }

 private:
  const arena_scope memory_;
  search_data& data_;
  std::vector<word> unions_;
  std::vector<cluster_record> records_;
  std::vector<std::int32_t> member_;
};

/// One clip, undone, then put elsewhere with another root; the sets must be those of passes all
/// along, and the cost of joining the difference in length.
void check_one_move(search_data& data, double length, std::mt19937& g) {
  const std::vector<word> before = all_sets(data, data.n);
  const int clip = zeb_test::draw_clip(data, g);
  const int sister = data.tree.sister[at(clip)];

  std::optional<random_clusters> clusters;
  if (chance(g, 0.3)) clusters.emplace(data, g);
  const std::vector<word> unions = clusters ? clusters->all_unions() : std::vector<word>();
  begin_undo(data);
  const int joint = detach(data.tree, clip);
  repair_after_clip(data, sister, clip);
  if (clusters) {
    ASSERT_TRUE(clusters->hold(zeb_test::nodes_below(data, data.n), data.n));
    ASSERT_TRUE(clusters->hold(zeb_test::nodes_below(data, clip), clip));
  }
  const std::vector<word> main_sets = all_sets(data, data.n);
  const std::vector<word> clip_sets = all_sets(data, clip);
  const bool undone = undo_sets(data);
  attach(data.tree, clip, joint, sister);
  if (!undone) repair_after_clip(data, sister, -1);  // the log had overflowed
  ASSERT_EQ(before, all_sets(data, data.n)) << "undone clip " << clip;
  end_undo(data);
  if (clusters && undone) {
    ASSERT_EQ(unions, clusters->all_unions());
  }
  clusters.reset();

  detach(data.tree, clip);
  repair_after_clip(data, sister, clip);
  const double main_length = full_pass(data);
  const double clip_length = subtree_pass(data, clip);
  ASSERT_EQ(main_sets, all_sets(data, data.n)) << "main tree, clip " << clip;
  ASSERT_EQ(clip_sets, all_sets(data, clip)) << "subtree, clip " << clip;

  const std::vector<int> subtree = zeb_test::nodes_below(data, clip);
  std::vector<int> main_tree = zeb_test::nodes_below(data, data.n);
  std::erase_if(main_tree, [&](int v) { return v == data.n || v == 0; });
  const int target = main_tree[at(draw(g, 0, static_cast<int>(main_tree.size()) - 1))];
  const int root_at = subtree[at(draw(g, 0, static_cast<int>(subtree.size()) - 1))];
  const join_side operand{root_at == clip ? join_end::root : join_end::branch, root_at};
  const double cost = join_cost(data, operand, {join_end::branch, target}, no_bound);
  if (root_at != clip) reroot_subtree(data, root_at, clip);
  attach(data.tree, clip, joint, target);
  ASSERT_TRUE(links_agree(data));
  repair_after_insert(data, clip);
  const std::vector<word> moved = all_sets(data, data.n);
  const double moved_length = full_pass(data);
  ASSERT_EQ(moved, all_sets(data, data.n))
      << clip << " rerooted at " << root_at << " to " << target;
  ASSERT_EQ(moved_length, main_length + clip_length + cost);
  static_cast<void>(length);
}

void check_matrix(std::mt19937& g, const zeb_test::data_shape& shape, int trees) {
  SCOPED_TRACE(::testing::Message()
               << shape.ntax << " taxa, " << shape.nchar << " characters, " << shape.states
               << " states, additive " << shape.additive << ", polymorphic " << shape.polymorphic
               << ", weights " << static_cast<int>(shape.weights));
  const zeb_test::oracle_matrix oracle = zeb_test::fill_matrix(shape, g);
  if (chance(g, 0.2)) matrix.outgroup = draw(g, 0, shape.ntax - 1);
  if (chance(g, 0.2))
    for (int t = 0; t < shape.ntax; ++t)
      if (t != matrix.outgroup && active_taxa() > 4 && chance(g, 0.3))
        matrix.taxon_active[at(t)] = 0;
  engine.long_words = chance(g, 0.5);
  std::optional<zeb_test::plain_wide_kind> wide;
  if (chance(g, 0.4)) wide.emplace(0.25 * draw(g, 1, 4), g);
  search_data& data = packed_matrix(true);
  std::vector<int> rows(data.pack_to_taxon.begin(), data.pack_to_taxon.begin() + data.n);
  for (int i = 0; i < trees; ++i) {
    const std::vector<std::int32_t> anc = random_ancestors(data, g);
    std::vector<word> sets;
    for (const int width : usable_widths()) {
      use_width(data, width);
      const double length = tree_length(data, anc);
      if (width == 32) {
        ASSERT_EQ(length, static_cast<double>(oracle.length(as_naive(data), rows)));
        sets = all_sets(data, data.n);
      }
      ASSERT_EQ(sets, all_sets(data, data.n)) << "width " << width;
      if (data.n > 3) check_one_move(data, length, g);
      if (::testing::Test::HasFatalFailure()) {
        ADD_FAILURE() << "width " << width;
        return;
      }
    }
  }
}

/// Many more cases with ZEB_SLOW_TESTS set.
unsigned cases(unsigned fast, unsigned slow) {
  return std::getenv("ZEB_SLOW_TESTS") != nullptr ? slow : fast;
}

TEST_F(packed_parsimony, agrees_with_the_oracle_in_all_modes) {
  for (unsigned seed = 1; seed <= cases(3000, 34000); ++seed) {
    std::mt19937 g(seed);
    const zeb_test::data_shape shape = zeb_test::random_shape(g, 14, 20);
    ASSERT_NO_FATAL_FAILURE(check_matrix(g, shape, 3)) << "seed " << seed;
  }
}

TEST_F(packed_parsimony, new_data_with_the_same_settings_are_packed_anew) {
  // Only the cells differ, so nothing but the release of the former data tells.
  for (unsigned seed = 1; seed <= 5; ++seed) {
    std::mt19937 g(seed);
    zeb_test::data_shape shape;
    const zeb_test::oracle_matrix oracle = zeb_test::fill_matrix(shape, g);
    search_data& data = packed_matrix(true);
    const std::vector<int> rows(data.pack_to_taxon.begin(), data.pack_to_taxon.begin() + data.n);
    const double length = tree_length(data, random_ancestors(data, g));
    ASSERT_EQ(length, static_cast<double>(oracle.length(as_naive(data), rows)));
  }
}

TEST_F(packed_parsimony, agrees_with_the_oracle_on_large_data) {
  for (unsigned seed = 1; seed <= cases(12, 60); ++seed) {
    std::mt19937 g(seed);
    zeb_test::data_shape shape = zeb_test::random_shape(g, 14, 20);
    shape.ntax = draw(g, 40, 200);
    shape.nchar = draw(g, 50, seed <= 12 ? 150 : 2000);
    ASSERT_NO_FATAL_FAILURE(check_matrix(g, shape, 1)) << "seed " << seed;
  }
}

}  // namespace
}  // namespace zeb
