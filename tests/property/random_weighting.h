// Random settings of implied weights, given by commands and kept for the oracle beside them.
#pragma once

#include <string>

#include "matrix/character_steps.h"
#include "property/random_costs.h"
#include "support/weighting_oracle.h"

namespace zeb_test {

/// The commands that set `how`; the data must have been read under implied weights.
struct random_weights {
  naive::implied_weights how;
  std::string commands;
};

inline std::string list_of(const std::vector<int>& characters) {
  std::string text;
  for (const int c : characters) text += " " + std::to_string(c);
  return text;
}

inline void add_sets(random_weights& w, std::mt19937& g) {
  const int nchar = static_cast<int>(w.how.characters.size());
  const int sets = draw(g, 1, 3);
  std::vector<std::vector<int>> members(static_cast<std::size_t>(sets) + 1);
  for (int c = 0; c < nchar; ++c) {
    const int set = draw(g, -1, sets);
    if (set < 0) continue;
    members[static_cast<std::size_t>(set)].push_back(c);
  }
  w.how.constant_steps = draw(g, 0, 3);
  w.how.constant_factor = draw(g, 1, 4) / 2.0;
  for (const int c : members.back()) w.how.characters[static_cast<std::size_t>(c)].constant = true;
  if (!members.back().empty())
    w.commands += "xpiwe/" + std::to_string(w.how.constant_steps) + "x" +
                  std::to_string(w.how.constant_factor) + list_of(members.back()) + ";";
  int number = 0;
  for (int s = 0; s < sets; ++s) {
    const std::vector<int>& own = members[static_cast<std::size_t>(s)];
    if (own.empty()) continue;
    w.commands += "xpiwe[" + list_of(own) + ";";
    for (const int c : own) w.how.characters[static_cast<std::size_t>(c)].set = number;
    ++number;
  }
}

inline void add_own_concavities(random_weights& w, std::mt19937& g) {
  if (chance(g, 0.5)) {
    w.how.extrapolates = true;
    w.how.share = draw(g, 0, 4) / 4.0;
    w.how.most_ratio = draw(g, 2, 10) / 2.0;
    w.commands +=
        "xpiwe(*" + std::to_string(w.how.share) + "<" + std::to_string(w.how.most_ratio) + ";";
  }
  if (chance(g, 0.5)) return;
  const int nchar = static_cast<int>(w.how.characters.size());
  const int meant = draw(g, 0, nchar - 1);
  const double k = draw(g, 1, 60) / 4.0;
  w.commands += "xpiwe(" + std::to_string(meant) + "/" + std::to_string(k) + ";";
  const int set = w.how.characters[static_cast<std::size_t>(meant)].set;
  for (int c = 0; c < nchar; ++c) {
    naive::implied_weights::character& own = w.how.characters[static_cast<std::size_t>(c)];
    if (c == meant || (set >= 0 && own.set == set)) own.own_k = k;
  }
}

/// For the matrix as it is, which `data` tells the oracle: cells by character, then taxon, 0 for
/// missing; and weights.
template <class data_matrix>
random_weights draw_weights(const data_matrix& data, bool user_costs_allowed, std::mt19937& g) {
  random_weights w;
  w.how.k = draw(g, 1, 60) / 4.0;
  w.commands = "piwe=" + std::to_string(w.how.k) + ";";
  for (std::size_t c = 0; c < data.cells.size(); ++c) {
    naive::implied_weights::character own;
    own.weight = data.weight[c];
    own.active = zeb::matrix.characters[c].active && own.weight > 0;
    own.entries = own.observed = 0;
    for (std::size_t t = 0; t < data.cells[c].size(); ++t) {
      own.entries += zeb::matrix.taxon_active[t];
      own.observed += zeb::matrix.taxon_active[t] && data.cells[c][t] != 0;
    }
    w.how.characters.push_back(own);
  }
  if (user_costs_allowed && chance(g, 0.4)) {
    w.commands += "piwe[";
    for (int i = draw(g, 1, 4); i > 0; --i) {
      w.how.user_costs.push_back(draw(g, 0, 8) / 4.0);
      w.commands += " " + std::to_string(w.how.user_costs.back());
    }
    w.commands += ";";
  }
  if (chance(g, 0.6)) add_sets(w, g);
  if (chance(g, 0.6)) add_own_concavities(w, g);
  if (chance(g, 0.1)) {
    w.how.extended = false;
    w.commands += "xpiwe-;";
  }
  return w;
}

/// Homoplasy of every character as the oracle counts steps; what it counts from is the program's.
inline std::vector<double> homoplasy_on(const mixed_matrix& data, const naive::rooted_tree& tree) {
  std::vector<double> all;
  for (std::size_t c = 0; c < data.cells.size(); ++c) {
    const int character = static_cast<int>(c);
    const int base = zeb::homoplasy_base(character, zeb::minimum_steps(character));
    const double unit = data.ranges[c].empty() ? 1 : 1000;
    const double extra = static_cast<double>(data.steps(c, tree) - base) / unit;
    all.push_back(std::max(0.0, extra) + zeb::matrix.characters[c].internal_steps);
  }
  return all;
}

}  // namespace zeb_test
