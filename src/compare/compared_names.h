// Which taxa, characters and states two data sets share.
#pragma once

#include "compare/comparison.h"

namespace zeb {

/// Error: a character or a state that occurs is without a name.
void check_names(const data_set& data);
/// Replaces what figures can't show in names by "_", with a warning.
void make_names_fit_figures(data_set& data);

void match_characters(const comparison_task& task, comparison& found);
void match_taxa(const comparison_task& task, comparison& found);
/// By the settings that were chosen, which say where the sequence of states counts.
void match_states_of_characters(const comparison_task& task, comparison& found);

std::vector<std::string> character_names(const data_set& data);
/// "%3i in %s - %s", a line that shows one of two things that may be the same.
std::string line_of_match(int number, const std::string& where, const std::string& name);

}  // namespace zeb
