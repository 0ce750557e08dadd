// Swaps that don't only go down: what a perturbing swap may accept, and what it did.
//
// A perturbing swap clips in random order and takes, at each clip, the first reconnection that is
// as good as the tree in hand; where it meets a better one, the best. With `accept_worse` it takes
// worse ones too, by chance: the further the tree has drifted already, and the more the characters
// speak against the move in relation to those that speak for it, the less likely it is.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "base/random.h"
#include "search/moves/relative_fit.h"

namespace zeb {

struct perturbation {
  // -- what is wanted --
  int most_moves = 40;  // the swap ends after so many
  int giveup = 99;      // ... or when more than so many per cent of the nodes were clipped; 0 never
  bool accept_worse = false;
  // With `accept_worse`:
  double fit_difference = 1.0;           // moves that are worse by more aren't looked at
  double relative_fit_difference = 0.2;  // likewise, by relative fit difference
  double factor = 3.0;                   // the larger, the more is accepted

  // -- what was done --
  int moves = 0;                    // accepted
  int clips = 0;                    // tried
  bool met_other = false;           // some reconnection was within the bounds
  std::vector<std::int32_t> moved;  // what was clipped, and the nodes beside its old and new place
  double drifted = 0;               // sum of the changes of score, never below 0

  bool is_over(int nodes) const {
    if (moves >= most_moves) return true;
    return giveup > 0 && std::int64_t{clips} * 100 / nodes > giveup;
  }
  void note_move(double change, const std::array<std::int32_t, 3>& nodes) {
    ++moves;
    moved.insert(moved.end(), nodes.begin(), nodes.end());
    drifted = std::max(0.0, drifted + change);
  }
  /// The limit on the costs of candidates, above the cost at home.
  double slack() const { return accept_worse ? fit_difference : 0; }
};

/// Could one be accepted that makes the tree worse, as far as characters for and against it tell?
bool may_accept_worse(const perturbation& how, const search_data& data, const clip_place& home,
                      const clip_place& other);
/// Is a reconnection accepted that makes the tree worse by `worse`, to `score`? Draws from the
/// generator.
bool accepts_worse(const perturbation& how, random_generator& random, const search_data& data,
                   double worse, double score, const clip_place& home, const clip_place& other);

}  // namespace zeb
