// Data sets beside each other: each made of its own taxa, weights and criterion.
#include "engine/packing/packing.h"
#include "matrix/character_steps.h"
#include "matrix/matrix_layout.h"

#include <gtest/gtest.h>

#include "base/arena.h"
#include "engine/fit/weighting_settings.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/passes.h"
#include "engine/registration.h"
#include "engine/settings.h"
#include "property/random_matrix.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

class packing : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    create_arena(std::size_t{1} << 26);
    register_engine();
  }
  static void TearDownTestSuite() {
    wipe_matrix();
    create_arena(16'000'000);
  }
  void TearDown() override {
    engine = {};
    weighting = {};
  }
};

std::vector<word> all_words(const search_data& data) {
  std::vector<word> words;
  const std::size_t size = at(data.nodes) * data.set_stride;
  for (const word* base : {data.down_base, data.final_base, data.unions_base, data.branch_base})
    words.insert(words.end(), base, base + size);
  return words;
}

packing_request random_request(int ntax, int nchar, std::mt19937& g) {
  packing_request request;
  for (int t = 0; t < ntax; ++t) request.taxa.push_back(t);
  std::shuffle(request.taxa.begin(), request.taxa.end(), g);
  request.taxa.resize(at(draw(g, 3, ntax)));
  for (int c = 0; c < nchar; ++c) request.weights.push_back(chance(g, 0.2) ? 0 : draw(g, 1, 5));
  request.rules.on = chance(g, 0.4);
  request.rules.concavity = draw(g, 1, 12);
  const fit_function function{fit_function::form::hyperbola, request.rules.concavity};
  request.rules.functions.assign(at(nchar), function);
  request.long_words = chance(g, 0.7);
  return request;
}

/// Score by the oracle; the fewest steps are those over the taxa of the request.
double oracle_score(const zeb_test::oracle_matrix& oracle, const packing_request& request,
                    const naive::rooted_tree& tree) {
  std::vector<std::uint8_t> taken(at(matrix.ntax), 0);
  for (const std::int32_t t : request.taxa) taken[at(t)] = 1;
  double sum = 0;
  for (int c = 0; c < matrix.nchar; ++c) {
    std::vector<std::uint32_t> column;
    for (const std::int32_t t : request.taxa) column.push_back(oracle.cells[at(c)][at(t)]);
    const auto steps =
        static_cast<double>(naive::least_steps(tree, column, oracle.additive[at(c)]));
    const double extra = steps - steps_over_taxa(c, taken).least;
    const fit_rules& rules = request.rules;
    sum += request.weights[at(c)] * (rules.on ? extra / (rules.concavity + extra) : steps);
  }
  return sum;
}

void expect_score_of_oracle(search_data& data, const zeb_test::oracle_matrix& oracle,
                            const packing_request& request, std::mt19937& g) {
  const naive::rooted_tree tree = naive::random_tree(data.n, g);
  std::vector<std::int32_t> anc(tree.parent.begin(), tree.parent.end());
  anc[at(data.n)] = data.nodes;
  EXPECT_NEAR(tree_length(data, anc), oracle_score(oracle, request, tree), 1e-9);
}

TEST_F(packing, of_other_taxa_and_weights_leaves_the_first_set_alone) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(::testing::Message() << "seed " << seed);
    std::mt19937 g(seed);
    const zeb_test::oracle_matrix oracle =
        zeb_test::fill_matrix(zeb_test::random_shape(g, 14, 20), g);
    weighting.on = chance(g, 0.3);
    search_data& first = packed_matrix(true);
    const packing_request of_first = request_of_settings();
    expect_score_of_oracle(first, oracle, of_first, g);
    const std::vector<word> words = all_words(first);
    const double score = full_pass(first);
    {
      const arena_scope scope;
      search_data second;
      const packing_request of_second = random_request(matrix.ntax, matrix.nchar, g);
      prepare_search_data(second, of_second);
      expect_score_of_oracle(second, oracle, of_second, g);
      search_data third;
      const packing_request of_third = random_request(matrix.ntax, matrix.nchar, g);
      prepare_search_data(third, of_third);
      expect_score_of_oracle(third, oracle, of_third, g);
      expect_score_of_oracle(second, oracle, of_second, g);
    }
    ASSERT_EQ(words, all_words(first));
    ASSERT_EQ(full_pass(first), score);
    ASSERT_EQ(&packed_matrix(true), &first);
    if (HasFailure()) return;
  }
}

TEST_F(packing, follows_the_settings_of_the_user) {
  std::mt19937 g(7);
  zeb_test::data_shape shape;
  const zeb_test::oracle_matrix oracle = zeb_test::fill_matrix(shape, g);
  ASSERT_EQ(packed_matrix(true).n, shape.ntax);
  matrix.taxon_active[3] = 0;
  matrix.outgroup = 2;
  matrix.characters[0].active = 0;
  matrix.characters[1].weight = 7;
  engine.long_words = false;
  search_data& data = packed_matrix(true);
  const packing_request request = request_of_settings();
  EXPECT_EQ(request.taxa.front(), 2);
  EXPECT_EQ(data.n, shape.ntax - 1);
  EXPECT_EQ(data.kernels.width_bits, 32);
  expect_score_of_oracle(data, oracle, request, g);
}

}  // namespace
}  // namespace zeb
