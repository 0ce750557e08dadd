// What the commands that show characters on trees read: trees, characters, a figure.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "engine/plain/range_optimisation.h"
#include "trees/drawing/figure_request.h"

namespace zeb {

/// "trees / characters": all trees, and the active characters, where no list comes.
struct mapping_request {
  std::vector<int> trees;
  std::vector<int> characters;
  bool characters_listed = false;
};
/// Errors without data and trees: `doing` is what the command does.
void require_data_and_trees(const char* doing);
/// Characters that are listed count even if they are inactive. Error where the list of trees has
/// none.
mapping_request read_trees_and_characters();
/// "& file options", on top of `defaults`, up to the semicolon, which is consumed in any case.
std::optional<figure_request> read_figure_or_end(const svg_options& defaults);
/// Error for a landmark character among them where polytomies are soft.
void refuse_soft_landmarks(const std::vector<int>& characters, polytomy_kind polytomies);

/// Some soft polytomies are too large to be resolved, and taken as hard: warns of the first tree
/// with one of so many branches that they aren't resolved, for all characters by one rule or by
/// their own.
void warn_of_large_polytomies(const std::vector<int>& trees,
                              const std::function<bool(std::size_t)>& is_resolved);
void warn_of_large_polytomies(const mapping_request& request);

}  // namespace zeb
