// Taxon names in trees: looking them up while reading, and what may stand for a taxon in writing.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

namespace zeb {

/// Taxa by whole name, case folded; the first taxon wins where names are the same.
class taxon_names {
 public:
  /// Takes the names of the matrix when first asked.
  int find(std::string_view word);

 private:
  std::unordered_map<std::string, int> taxa_;
  bool filled_ = false;
};

/// Characters that end a taxon's name in a parenthetical tree.
bool ends_taxon_name(int c);
/// Does the text read back as this taxon's name? Numbers, signs, and names that another taxon bears
/// don't.
bool reads_back_as_name(std::string_view name, int taxon, taxon_names& names);
/// What is written for a taxon in trees that ZEB reads: its name under `taxname =` where that reads
/// back, else its number.
std::string tree_label(int taxon, taxon_names& names);

}  // namespace zeb
