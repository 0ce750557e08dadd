#include "formats/nexus/tree_taxa.h"

#include <algorithm>

#include "base/errors.h"
#include "matrix/matrix.h"

namespace zeb {

tree_taxa::tree_taxa(const nexus_file& file) {
  for (std::size_t t = 0; t < file.taxon_labels.size() && file.data_read; ++t)
    by_label_.emplace(file.taxon_labels[t], static_cast<int>(t));
}

int tree_taxa::find(const std::string& label) {
  std::string word = label;
  std::replace(word.begin(), word.end(), ' ', '_');
  const auto own = by_label_.find(word);
  if (own != by_label_.end()) return own->second;
  const int by_name = names_.find(label);
  int number = 0;
  if (by_name >= 0 || !whole_number(label, 1, matrix.ntax, &number)) return by_name;
  return number - 1;
}

void tree_taxa::read_translation(nexus_file& file) {
  while (!file.in.accept(';')) {
    if (file.in.accept(',')) continue;
    const nexus_token key = file.in.token();
    const std::string name =
        key.what == nexus_token::kind::word ? file.in.name(",;") : std::string();
    if (name.empty()) file.in.fail("\"translate\" must give pairs of a key and a name");
    const int taxon = find(name);
    if (taxon < 0) file.in.fail("No taxon " + name);
    translated_[key.text] = taxon;
  }
}

label_lookup tree_taxa::lookup() {
  return [this](const std::string& label, const labelled_tree_reader& trees) {
    const auto found = translated_.find(label);
    if (found != translated_.end()) return found->second;
    const int taxon = find(label);
    if (taxon < 0) error_end("Error reading NEXUS file: No taxon", label, trees.place());
    return taxon;
  };
}

void refuse_repeated_taxon(int taxon) {
  error_end("Error reading NEXUS file: Taxon", taxon, "repeated");
}

}  // namespace zeb
