// Matrices made at random.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zeb {

/// Replaces the data by `nchar` characters of `nstates` equally frequent states for `ntax` taxa
/// named TAX0, TAX1... Re-seeds first.
void make_random_matrix(int nchar, int ntax, int nstates);

/// How characters change along a tree. A change leads to one of the other states, each as likely.
struct evolution_model {
  enum kind : std::uint8_t {
    stasis,       // along each branch a state stays in `amount` per cent of the cases
    uniform,      // branches have lengths between 0 and `amount`, each as likely ...
    exponential,  // ... or from an exponential distribution with the mean `amount`; along a branch
                  // of length b a state stays with the probability exp(-b)
    changes,      // each character changes `amount` times, on branches drawn at random
  };
  kind model = stasis;
  double amount = 0;
};
/// The title of data made so, without quotes.
std::string title_of(const evolution_model& model);

/// Replaces the data by characters that evolve along a tree of the present taxa, given as an array
/// of ancestors. Taxa that the tree lacks get missing entries. Re-seeds first.
void make_matrix_from_tree(const std::vector<std::int32_t>& ancestors, const evolution_model& model,
                           int nchar, int nstates);

}  // namespace zeb
