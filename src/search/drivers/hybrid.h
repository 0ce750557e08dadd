// Hybridisation: trees of a pool are crossed. Where fusing needs clades of the same terminals, a
// hybrid takes over what a clade of the one and a clade of the other tree have in common, so that
// it works on trees that are far apart, too; it pays for that by swapping each hybrid.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "search/moves/piece_exchange.h"
#include "search/search_context.h"

namespace zeb {

/// How trees are hybridised, by `tfuse`, `hybrid` and `rebuild`.
struct hybrid_settings {
  int pairings = 1000;  // of two trees, in each round
  int rounds = 1;
  int sample = 50;      // best trees that go on to the next round; 0: as many as at the start
  int autostop = 3;     // stop after so many rounds without a better tree; 0 never
  bool replace = true;  // a hybrid better than the tree that it was made from takes its place
  int clog = 15;  // once the pool has grown by so many times its size the best stay; 0 no limit
};

struct hybrid_task {
  std::vector<int> slots;   // the pool: at least two
  double target_score = 0;  // stop at this score or a better one; 0: none
  bool reseeds = true;      // the generator starts from the user's seed
  bool shows_rounds = true;
};

struct hybrid_result {
  double best = unknown_score;
  int rounds = 0;            // done
  bool buffer_full = false;  // trees were dropped for want of room
};

/// Hybridises; trees made take places of the pool, or are stored in the context's slots. Trees of
/// the pool that aren't good enough to stay are dropped, so that slots move; other trees stay.
hybrid_result hybridize_trees(search_context& context, const hybrid_settings& options,
                              const hybrid_task& task);

/// What one crossing of two trees came to.
struct crossing {
  shared_piece piece;
  std::array<std::vector<std::int32_t>, 2> hybrids;  // from the one tree, from the other
  std::array<double, 2> scores{};                    // before any swapping
};
/// Crosses two trees (internal numbering, no slots) at a piece drawn at random. False where so many
/// draws come to none that can be exchanged.
bool cross_trees(search_context& context, std::span<const std::int32_t> a,
                 std::span<const std::int32_t> b, int draws, crossing* made);

/// Per cent of the groups of a tree that it could exchange with another one of the pool, in the
/// mean: clades of the same terminals that leave `minfork` branches or more in the consensus of the
/// two. Low values speak for hybridising, not fusing.
double exchange_score(const search_context& context, const std::vector<int>& slots, int minfork);

}  // namespace zeb
