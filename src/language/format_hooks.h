// Readers of foreign formats that `procedure` calls; they live a floor above and are registered at
// start-up.
#pragma once

#include <string>

namespace zeb {

struct format_hook_table {
  /// The file is the top frame; "#NEXUS" has been read. Pops the frame when it is done.
  void (*read_nexus)() = nullptr;
  /// Reads a FASTA file with the number given behind "&" (-1 for none).
  void (*read_fasta)(int option, const std::string& file) = nullptr;
  /// Reads trees in Newick notation.
  void (*read_newick)(const std::string& file) = nullptr;
  /// Reads a PHYLIP matrix.
  void (*read_phylip)(const std::string& file) = nullptr;
};
extern format_hook_table format_hooks;

}  // namespace zeb
