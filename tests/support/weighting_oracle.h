// Implied weights the slow and obvious way: what homoplasy costs, by the settings as a user thinks
// of them. Shares no code with the program.
#pragma once

#include <vector>

namespace naive {

struct implied_weights {
  double k = 3;
  std::vector<double> user_costs;  // of the first extra step, the second...; empty: by k
  bool extended = true;            // what follows is in force
  bool extrapolates = false;       // to missing entries,
  double share = 0.5;              // with this share of homoplasy,
  double most_ratio = 5;           // and no larger ratio of k to that of a character
  int constant_steps = 0;          // characters of constant weight cost as a step after so many,
  double constant_factor = 1;      // times this

  struct character {
    double weight = 1;
    bool active = true;
    double observed = 1;  // entries
    double entries = 1;
    int set = -1;
    bool constant = false;
    double own_k = 0;  // 0: none
  };
  std::vector<character> characters;
};

/// Score of a tree with so much homoplasy in each character (unweighted).
double score(const implied_weights& how, const std::vector<double>& homoplasy);

}  // namespace naive
