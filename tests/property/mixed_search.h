// What property tests of searches share: random data of all kinds in memory, and trees of them.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "engine/fit/weighting_settings.h"
#include "matrix/matrix_layout.h"
#include "property/random_costs.h"
#include "search/search_session.h"
#include "search/store/stored_trees.h"
#include "support/program.h"

namespace zeb_test {

/// Leaves no data and no weights to the next test.
class mixed_searches : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { start_program(); }
  void TearDown() override {
    zeb::weighting = {};
    zeb::wipe_matrix();
  }
};

/// Data of `ntax` taxa with up to so many characters with costs; `fits`: under implied weights.
/// Then the commands run.
inline void fill_for_search(int ntax, int most_with_costs, bool fits, const std::string& commands,
                            std::mt19937& g) {
  mixed_shape shape;
  shape.ntax = ntax;
  shape.plain = draw(g, 4, 40);
  shape.with_costs = draw(g, 0, most_with_costs);
  shape.continuous = draw(g, 0, 2);
  fill_mixed(shape, g);
  zeb::weighting.on = fits;
  run_program(commands);
}

/// A stored tree without marks of branches that collapse.
inline std::vector<std::int32_t> plain_tree(zeb::search_context& context, int slot) {
  fetch_tree(context, slot_tree(context, slot));
  return {context.working_tree.begin(), context.working_tree.end()};
}

}  // namespace zeb_test
