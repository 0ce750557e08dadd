#include "functions/kept_scores.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/arena.h"
#include "base/indices.h"
#include "engine/fit/weighting_settings.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/conversions.h"
#include "engine/passes/passes.h"
#include "matrix/matrix.h"
#include "matrix/matrix_changes.h"

namespace zeb {
namespace {

// What an optimiser was made from. Its weights are read when it is asked.
struct optimised_matrix {
  int generation = -1;
  unsigned changes = 0;
  std::vector<std::uint8_t> characters;
  std::vector<std::uint8_t> types;
  bool operator==(const optimised_matrix&) const = default;
};

struct kept_score_state {
  optimised_matrix made_from;
  std::unique_ptr<plain_optimiser> optimiser;
};
kept_score_state kept;

optimised_matrix matrix_now(std::span<const std::uint8_t> characters) {
  optimised_matrix now{
      matrix.generation, matrix_changes.count, {characters.begin(), characters.end()}, {}};
  for (const character_record& c : matrix.characters)
    now.types.push_back(
        static_cast<std::uint8_t>(c.additive * 4 + c.is_sankoff * 2 + c.is_continuous));
  return now;
}

bool is_binary_and_complete(const_tree_span tree) {
  const auto terminals = tree.first(at(matrix.ntax));
  return node_limit(tree, matrix.ntax) == 2 * matrix.ntax - 1 &&
         std::ranges::find(terminals, 0) == terminals.end();
}

bool has_plain_characters_only() {
  // Sums of weights beyond this might not fit what packed data count with.
  constexpr std::int64_t most = 100'000'000;
  std::int64_t sum = 0;
  for (const character_record& c : matrix.characters) {
    if (!c.active || c.weight == 0) continue;
    if (c.is_sankoff || c.is_continuous || c.type == landmark_data) return false;
    sum += c.weight;
  }
  return sum * matrix.ntax * 32 < most;
}

// Packed data are made only between two uses of temporary memory, and where they take little.
bool may_pack() {
  const bool quiet = arena.live_scopes == 0 && arena.low == arena.low_mark &&
                     arena.high == arena.high_mark && locks.search_lock == 0;
  constexpr std::size_t bytes_of_cell = 64;  // of all sets that it is in
  return quiet && (locks.optimisation_lock != 0 ||
                   bytes_of_cell * at(matrix.ntax) * at(matrix.nchar) < arena_free() / 2);
}

}  // namespace

plain_optimiser& kept_optimiser(std::span<const std::uint8_t> characters) {
  optimised_matrix now = matrix_now(characters);
  if (!kept.optimiser || kept.made_from != now) {
    kept.optimiser = std::make_unique<plain_optimiser>(characters);
    kept.made_from = std::move(now);
  }
  return *kept.optimiser;
}

std::optional<double> quick_length(const_tree_span tree) {
  if (weighting.on || active_taxa() != matrix.ntax || matrix.ntax < 3) return {};
  if (!is_binary_and_complete(tree) || !has_plain_characters_only() || !may_pack()) return {};
  search_data& data = packed_matrix(true);
  std::vector<std::int32_t> ancestors(at(data.nodes));
  if (!to_internal(data, tree, ancestors, false)) return {};
  return tree_length(data, ancestors);
}

}  // namespace zeb
