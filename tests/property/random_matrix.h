// Random data put into the program's matrix, and kept for the oracle beside it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "support/naive_parsimony.h"

namespace zeb_test {

enum class weighting { one, same, few, many };

/// What random data should be like.
struct data_shape {
  int ntax = 8;
  int nchar = 10;
  int states = 2;             // most states in a character
  double additive = 0;        // share of additive characters
  double missing = 0.1;       // share of missing cells
  double polymorphic = 0.05;  // share of cells with several states
  weighting weights = weighting::one;
};

/// The same data as the oracle sees them: rows in matrix order, 0 for missing.
struct oracle_matrix {
  std::vector<std::vector<std::uint32_t>> cells;  // by character, then taxon
  std::vector<bool> additive;
  std::vector<int> weight;

  /// Weighted length; `rows` gives the row of each terminal of the tree.
  long length(const naive::rooted_tree& tree, const std::vector<int>& rows) const {
    long sum = 0;
    std::vector<std::uint32_t> column(rows.size());
    for (std::size_t c = 0; c < cells.size(); ++c) {
      for (std::size_t t = 0; t < rows.size(); ++t)
        column[t] = cells[c][static_cast<std::size_t>(rows[t])];
      sum += weight[c] * naive::least_steps(tree, column, additive[c]);
    }
    return sum;
  }
};

inline int draw(std::mt19937& g, int low, int high) {
  return std::uniform_int_distribution<int>(low, high)(g);
}
inline bool chance(std::mt19937& g, double p) {
  return std::uniform_real_distribution<double>(0, 1)(g) < p;
}

inline data_shape random_shape(std::mt19937& g, int most_taxa, int most_characters) {
  data_shape shape;
  shape.ntax = draw(g, 4, most_taxa);
  shape.nchar = draw(g, 1, most_characters);
  constexpr int state_counts[] = {2, 2, 3, 4, 6, 8, 9, 12, 32};
  shape.states = state_counts[draw(g, 0, 8)];
  shape.additive = chance(g, 0.5) ? 0 : std::uniform_real_distribution<double>(0, 1)(g);
  shape.missing = chance(g, 0.3) ? 0 : 0.3 * draw(g, 0, 3);
  shape.polymorphic = chance(g, 0.5) ? 0 : 0.15 * draw(g, 0, 2);
  shape.weights = static_cast<weighting>(draw(g, 0, 3));
  return shape;
}

inline int random_weight(std::mt19937& g, weighting weights, int same) {
  switch (weights) {
    case weighting::one:
      return 1;
    case weighting::same:
      return same;
    case weighting::few:
      return 1 << draw(g, 0, 2);
    case weighting::many:
      break;
  }
  return draw(g, 0, 40);
}

/// States of one character along a random tree, with a change on a share of the branches; some
/// characters come out as noise, some with states of a single taxon.
inline std::vector<std::uint32_t> random_character(const data_shape& shape, std::mt19937& g) {
  const naive::rooted_tree tree = naive::random_tree(shape.ntax, g);
  const double change = 0.05 * draw(g, 1, 12);
  const int states = draw(g, 2, shape.states);
  std::vector<int> state(tree.parent.size(), 0);
  std::vector<int> order = {shape.ntax};
  for (std::size_t i = 0; i < order.size(); ++i)
    for (std::size_t v = 0; v < tree.parent.size(); ++v)
      if (tree.parent[v] == order[i]) {
        state[v] =
            chance(g, change) ? draw(g, 0, states - 1) : state[static_cast<std::size_t>(order[i])];
        if (static_cast<int>(v) >= shape.ntax) order.push_back(static_cast<int>(v));
      }
  std::vector<std::uint32_t> cells;
  for (int t = 0; t < shape.ntax; ++t) {
    std::uint32_t c = 1U << state[static_cast<std::size_t>(t)];
    if (chance(g, shape.polymorphic)) c |= 1U << draw(g, 0, states - 1);
    cells.push_back(chance(g, shape.missing) ? 0 : c);
  }
  return cells;
}

/// Makes such data the program's matrix.
inline oracle_matrix fill_matrix(const data_shape& shape, std::mt19937& g) {
  oracle_matrix data;
  const bool wide = shape.states > 16;
  zeb::matrix.cell_bytes = wide ? 4 : 2;
  zeb::matrix.state_mask = wide ? 0xffffffffU : 0xffffU;
  zeb::begin_matrix(shape.ntax, shape.nchar);
  const int same = draw(g, 2, 9);
  for (int c = 0; c < shape.nchar; ++c) {
    data.cells.push_back(random_character(shape, g));
    data.additive.push_back(chance(g, shape.additive));
    data.weight.push_back(random_weight(g, shape.weights, same));
    for (int t = 0; t < shape.ntax; ++t) {
      const std::uint32_t states = data.cells.back()[static_cast<std::size_t>(t)];
      if (states) zeb::set_cell(t, c, states);
    }
  }
  zeb::finish_matrix();
  for (int c = 0; c < shape.nchar; ++c) {
    zeb::character_record& record = zeb::matrix.characters[static_cast<std::size_t>(c)];
    record.additive = data.additive[static_cast<std::size_t>(c)];
    record.weight = data.weight[static_cast<std::size_t>(c)];
    record.needs_recheck = 1;
  }
  return data;
}

}  // namespace zeb_test
