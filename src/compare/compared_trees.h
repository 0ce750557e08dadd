// What the comparison of trees needs to know of two data sets.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "compare/combined_data.h"
#include "compare/comparison.h"
#include "compare/trees/compared_results.h"

namespace zeb {

/// Do both files have trees?
bool have_trees(const comparison_task& task);
/// Errors: the trees can't be compared, since their first taxon, their root or their taxa don't let
/// them.
void check_trees(const comparison_task& task, const comparison& found);

/// The taxa of the combination that the file lists by name. Error: no such file, no such taxon.
std::vector<std::uint8_t> taxa_in_file(const std::string& file, const data_set& combined);
/// `left_out`: by taxon of the combination; trees are those of the first set, then of the second.
compared_results results_to_compare(const comparison_task& task, const comparison& found,
                                    const combination& combined,
                                    std::vector<std::uint8_t> left_out);

}  // namespace zeb
