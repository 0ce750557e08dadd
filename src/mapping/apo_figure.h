// A tree with a box on its branches for each apomorphy, as papers show it.
#pragma once

#include <span>
#include <string>

#include "mapping/apomorphies.h"
#include "trees/drawing/figure_request.h"

namespace zeb {

/// How it looks without options.
svg_options apo_figure_defaults();
/// Writes the figure under `file_name`. The changes are sorted by node.
void draw_apo_figure(const figure_request& request, const std::string& file_name,
                     const_tree_span tree, std::span<const apomorphy> changes,
                     const std::string& title);

}  // namespace zeb
