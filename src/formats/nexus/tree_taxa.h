// Taxa as the trees of a NEXUS file name them.
#pragma once

#include <string>
#include <unordered_map>

#include "formats/labelled_trees.h"
#include "formats/nexus/nexus_file.h"

namespace zeb {

/// Taxa by what "translate" says, by name, and by number from 1.
class tree_taxa {
 public:
  explicit tree_taxa(const nexus_file& file);
  /// "1 name, 2 name;", after the word "translate".
  void read_translation(nexus_file& file);
  /// -1 for none; translations aside.
  int find(const std::string& label);
  /// For readers of trees. Good as long as this object.
  label_lookup lookup();

 private:
  std::unordered_map<std::string, int> by_label_;  // of the file's own data
  std::unordered_map<std::string, int> translated_;
  foreign_names names_;
};

/// Error: a taxon that stands in a tree twice.
[[noreturn]] void refuse_repeated_taxon(int taxon);

}  // namespace zeb
