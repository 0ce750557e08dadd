#include "compare/comparing.h"

#include "compare/compared_cells.h"
#include "compare/compared_landmarks.h"
#include "compare/compared_names.h"
#include "compare/compared_scales.h"
#include "compare/compared_settings.h"

namespace zeb {
namespace {

void count_what_is_unique(comparison& found) {
  comparison_counts& counts = found.counts;
  counts.taxa_added = static_cast<int>(found.taxa.only_in_first().size());
  counts.taxa_deleted = static_cast<int>(found.taxa.only_in_second().size());
  counts.characters_added = static_cast<int>(found.characters.only_in_first().size());
  counts.characters_deleted = static_cast<int>(found.characters.only_in_second().size());
}

}  // namespace

comparison compare_data(const comparison_task& task) {
  check_names(task.first);
  check_names(task.second);
  if (has_step_matrices(task.first) || has_step_matrices(task.second)) warn_of_step_matrices();
  comparison found;
  match_characters(task, found);
  match_taxa(task, found);
  count_what_is_unique(found);
  compare_settings(task, found);
  match_states_of_characters(task, found);
  compare_cells(task, found);
  compare_scales(task, found);
  compare_landmarks(task, found);
  return found;
}

}  // namespace zeb
