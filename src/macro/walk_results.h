// What walks tell the expression functions about the item they are at.
#pragma once

#include <string>

namespace zeb {

/// The values of the last walk; 0 before the first one.
struct walk_results {
  double percent_swapped = 0;  // of the enumeration of trees
  bool tree_complete = false;  // `bandb`: the tree holds all taxa
  int taxon_added = 0;         // `bandb`: the one added last
  double steps = 0;            // of the current reconstruction
  std::string file;            // of `forfiles`
  bool is_directory = false;
};
extern walk_results walked;

void tell_percent_swapped(double percent);
void tell_growing_tree(bool complete, int taxon_added);
void tell_reconstruction_steps(double steps);
void tell_file(std::string name, bool is_directory) noexcept;

}  // namespace zeb
