#include "macro/walk_results.h"

#include <utility>

namespace zeb {

walk_results walked;

void tell_percent_swapped(double percent) { walked.percent_swapped = percent; }

void tell_growing_tree(bool complete, int taxon_added) {
  walked.tree_complete = complete;
  walked.taxon_added = taxon_added;
}

void tell_reconstruction_steps(double steps) { walked.steps = steps; }

void tell_file(std::string name, bool is_directory) noexcept {
  walked.file = std::move(name);
  walked.is_directory = is_directory;
}

}  // namespace zeb
