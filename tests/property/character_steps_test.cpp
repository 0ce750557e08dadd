// Minimum and maximum steps of characters against all trees for few taxa, and the smallest hitting
// set against all sets of states.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <functional>
#include <random>
#include <vector>

#include "../support/program.h"
#include "matrix/character_steps.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "matrix/smallest_hitting_set.h"
#include "matrix/symbols.h"

namespace {

using zeb::matrix;

constexpr int taxa = 6;
constexpr int states = 5;

// What changes cost, by the state before and the state after.
struct cost_rule {
  int cost[states][states] = {};
  bool ranges = false;  // a polymorphic cell stands for the range of its states
};

cost_rule plain_costs(bool additive) {
  cost_rule rule;
  rule.ranges = additive;
  for (int a = 0; a < states; ++a) {
    for (int b = 0; b < states; ++b) rule.cost[a][b] = additive ? std::abs(a - b) : a != b;
  }
  return rule;
}

using cost_row = std::vector<int>;  // least steps below a node, by state of the node

cost_row row_of_cell(std::uint32_t cell, const cost_rule& rule) {
  if (rule.ranges) {
    const int low = std::countr_zero(cell);
    const int high = 31 - std::countl_zero(cell);
    cell = ((2U << high) - 1) & ~((1U << low) - 1);
  }
  cost_row row(states, 100'000);
  for (int s = 0; s < states; ++s) {
    if (cell >> s & 1U) row[static_cast<std::size_t>(s)] = 0;
  }
  return row;
}

cost_row joined(const cost_row& a, const cost_row& b, const cost_rule& rule) {
  cost_row row(states, 0);
  for (int s = 0; s < states; ++s) {
    for (const cost_row* below : {&a, &b}) {
      int best = INT_MAX;
      for (int x = 0; x < states; ++x) {
        best = std::min(best, (*below)[static_cast<std::size_t>(x)] + rule.cost[s][x]);
      }
      row[static_cast<std::size_t>(s)] += best;
    }
  }
  return row;
}

// Every way to join the subtrees two by two is a rooted tree, some of them many times.
void for_each_length(const std::vector<cost_row>& subtrees, const cost_rule& rule,
                     const std::function<void(int)>& visit) {
  if (subtrees.size() == 1) {
    visit(*std::min_element(subtrees[0].begin(), subtrees[0].end()));
    return;
  }
  for (std::size_t i = 1; i < subtrees.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      std::vector<cost_row> rest = subtrees;
      rest[j] = joined(subtrees[i], subtrees[j], rule);
      rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(i));
      for_each_length(rest, rule, visit);
    }
  }
}

int bush_length(const std::vector<std::uint32_t>& cells, const cost_rule& rule) {
  int best = INT_MAX;
  for (int root = 0; root < states; ++root) {
    int length = 0;
    for (const std::uint32_t cell : cells) {
      const cost_row row = row_of_cell(cell, rule);
      int least = INT_MAX;
      for (int s = 0; s < states; ++s) {
        least = std::min(least, row[static_cast<std::size_t>(s)] + rule.cost[root][s]);
      }
      length += least;
    }
    best = std::min(best, length);
  }
  return best;
}

TEST(character_steps, agree_with_all_trees) {
  zeb_test::start_program();
  std::mt19937 random(11);
  for (int round = 0; round < 60; ++round) {
    const bool additive = round % 2 == 1;
    const cost_rule rule = plain_costs(additive);
    zeb::wipe_matrix();
    zeb::begin_matrix(taxa, 1);
    std::vector<std::uint32_t> cells;
    for (int t = 0; t < taxa; ++t) {
      std::uint32_t cell = 1U << random() % states;
      while (random() % 3 == 0) cell |= 1U << random() % states;
      if (random() % 8 == 0) {
        zeb::set_cell(t, 0, matrix.state_mask);
      } else {
        zeb::set_cell(t, 0, cell);
        cells.push_back(cell);
      }
    }
    zeb::finish_matrix();
    matrix.characters[0].additive = additive;
    if (cells.empty()) continue;
    int shortest = INT_MAX;
    int longest = 0;
    std::vector<cost_row> rows;
    for (const std::uint32_t cell : cells) rows.push_back(row_of_cell(cell, rule));
    for_each_length(rows, rule, [&](int length) {
      shortest = std::min(shortest, length);
      longest = std::max(longest, length);
    });
    EXPECT_EQ(zeb::minimum_steps(0), shortest) << "round " << round;
    EXPECT_EQ(zeb::maximum_steps(0), bush_length(cells, rule)) << "round " << round;
    EXPECT_LE(longest, zeb::maximum_steps(0)) << "round " << round;
  }
}

cost_rule random_costs(std::mt19937& random) {
  const bool symmetric = random() % 2 == 0;
  const unsigned dearest = 1 + static_cast<unsigned>(random() % 9);
  cost_rule rule;
  for (int a = 0; a < states; ++a) {
    for (int b = 0; b < states; ++b) {
      if (a == b) continue;
      const bool forbidden = random() % 12 == 0;
      rule.cost[a][b] = forbidden ? zeb::forbidden_cost : static_cast<int>(random() % dearest) + 1;
      if (symmetric && b < a) rule.cost[a][b] = rule.cost[b][a];
    }
  }
  return rule;
}

TEST(character_steps, of_step_matrices_are_bounds_for_all_trees) {
  zeb_test::start_program();
  std::mt19937 random(12);
  int exact = 0;
  for (int round = 0; round < 60; ++round) {
    const cost_rule rule = random_costs(random);
    zeb::wipe_matrix();
    zeb::begin_matrix(taxa, 1);
    std::vector<std::uint32_t> cells;
    std::vector<cost_row> rows;
    for (int t = 0; t < taxa; ++t) {
      std::uint32_t cell = 1U << random() % states;
      while (random() % 5 == 0) cell |= 1U << random() % states;
      zeb::set_cell(t, 0, cell);
      cells.push_back(cell);
      rows.push_back(row_of_cell(cell, rule));
    }
    zeb::finish_matrix();
    zeb::cost_table table = zeb::costs_all_alike(1);
    table.states = (1U << states) - 1;
    for (std::size_t a = 0; a < states; ++a)
      for (std::size_t b = 0; b < states; ++b) table.costs[a][b] = rule.cost[a][b];
    zeb::set_costs(0, std::make_shared<const zeb::cost_table>(table));
    int shortest = INT_MAX;
    for_each_length(rows, rule, [&](int length) { shortest = std::min(shortest, length); });
    EXPECT_LE(zeb::minimum_steps(0), shortest) << "round " << round;
    EXPECT_EQ(zeb::maximum_steps(0), bush_length(cells, rule)) << "round " << round;
    exact += zeb::minimum_steps(0) == shortest;
  }
  EXPECT_GT(exact, 15);
}

TEST(character_steps, follow_the_active_taxa) {
  zeb_test::run_program("nstates num 16; xread 2 5 a 00 b 00 c 11 d 12 e 23;");
  EXPECT_EQ(zeb::minimum_steps(0), 2);
  EXPECT_EQ(zeb::minimum_steps(1), 3);
  matrix.taxon_active[4] = 0;
  EXPECT_EQ(zeb::minimum_steps(0), 1);
  EXPECT_EQ(zeb::maximum_steps(0), 2);
  EXPECT_TRUE(zeb::is_informative(0));
  EXPECT_FALSE(zeb::is_informative(1));
}

TEST(character_steps, cells_that_say_nothing_count_for_nothing) {
  zeb_test::run_program(
      "nstates 8 nogaps; xread 3 6\n&[dna]\na AN?\nb A-A\nc CYC\nd CTA\ne NAC\nf *A*\n;");
  zeb::recheck_steps();
  EXPECT_EQ(matrix.characters[0].observed, 0b101U);  // A and C
  EXPECT_EQ(matrix.characters[0].max_steps, 2);
  EXPECT_EQ(matrix.characters[1].observed, 0b1101U);  // "Y" counts with its states
  zeb_test::run_program("xread 2 4 a 70 b *1 c 7* d *2;");
  EXPECT_EQ(zeb::minimum_steps(0), 1);  // "*" is any state but 7
  EXPECT_EQ(zeb::minimum_steps(1), 2);
  zeb_test::run_program("xread 1 5\n&[dna gaps]\na A\nb -\nc -\nd N\ne A\n;");
  zeb::recheck_steps();
  EXPECT_EQ(matrix.characters[0].observed, 0b11111U);  // with gaps, "any base" isn't a gap
  EXPECT_EQ(matrix.characters[0].max_steps, 2);
}

TEST(character_steps, continuous_ranges) {
  zeb_test::run_program("nstates 32; xread 2 4\n&[cont]\na 1-2 ?\nb 4-5 *\nc 1.5-4.5 3\nd 3 1\n;");
  EXPECT_EQ(zeb::minimum_steps(0), 2000);
  EXPECT_EQ(zeb::maximum_steps(0), 2000);
  EXPECT_EQ(zeb::minimum_steps(1), 2000);
}

TEST(smallest_hitting_set, agrees_with_all_sets) {
  std::mt19937 random(5);
  for (int round = 0; round < 400; ++round) {
    const int universe = 2 + static_cast<int>(random() % 9);
    std::vector<std::uint32_t> cells(random() % 14);
    for (std::uint32_t& cell : cells) {
      do {
        cell = static_cast<std::uint32_t>(random() & random()) & ((1U << universe) - 1);
      } while (cell == 0);
    }
    int best = universe;
    for (std::uint32_t set = 0; set < 1U << universe; ++set) {
      const bool hits_all =
          std::all_of(cells.begin(), cells.end(), [set](std::uint32_t c) { return c & set; });
      if (hits_all) best = std::min(best, std::popcount(set));
    }
    EXPECT_EQ(zeb::smallest_hitting_set(cells), best) << "round " << round;
    EXPECT_GE(zeb::greedy_hitting_set(cells), best) << "round " << round;
  }
}

// The hardest kind of data for the exact search: every cell many states of 32.
TEST(smallest_hitting_set, ends_soon_with_many_wide_cells) {
  std::mt19937 random(9);
  std::vector<std::uint32_t> cells;
  for (int i = 0; i < 300; ++i) {
    std::uint32_t cell = 0;
    while (std::popcount(cell) < 4) cell |= 1U << random() % 32;
    cells.push_back(cell);
  }
  EXPECT_GE(zeb::smallest_hitting_set(cells), 8);
}

}  // namespace
