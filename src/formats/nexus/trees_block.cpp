#include "formats/nexus/trees_block.h"

#include <algorithm>
#include <unordered_map>

#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/progress.h"
#include "formats/labelled_trees.h"
#include "language/interpreter.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

// Taxa by what "translate" says, by name, and by number from 1.
struct tree_taxa {
  explicit tree_taxa(const nexus_file& file) {
    for (std::size_t t = 0; t < file.taxon_labels.size() && file.data_read; ++t)
      by_label.emplace(file.taxon_labels[t], static_cast<int>(t));
  }
  std::unordered_map<std::string, int> by_label;  // of the file's own data
  std::unordered_map<std::string, int> translated;
  foreign_names names;
};

// -1 for none.
int taxon_of(const std::string& label, tree_taxa& taxa) {
  std::string word = label;
  std::replace(word.begin(), word.end(), ' ', '_');
  const auto own = taxa.by_label.find(word);
  if (own != taxa.by_label.end()) return own->second;
  const int by_name = taxa.names.find(label);
  int number = 0;
  if (by_name >= 0 || !whole_number(label, 1, matrix.ntax, &number)) return by_name;
  return number - 1;
}

// "1 name, 2 name;"
void read_translation(nexus_file& file, tree_taxa& taxa) {
  while (!file.in.accept(';')) {
    if (file.in.accept(',')) continue;
    const nexus_token key = file.in.token();
    const std::string name =
        key.what == nexus_token::kind::word ? file.in.name(",;") : std::string();
    if (name.empty()) file.in.fail("\"translate\" must give pairs of a key and a name");
    const int taxon = taxon_of(name, taxa);
    if (taxon < 0) file.in.fail("No taxon " + name);
    taxa.translated[key.text] = taxon;
  }
}

// From the end of "tree" to the tree's first parenthesis, which stays unread. Returns the name.
std::string read_tree_head(nexus_file& file) {
  file.in.accept('*');
  const nexus_token name = file.in.token();
  if (name.what != nexus_token::kind::word)
    error_end("Error reading NEXUS file: expected '=' after tree name");
  if (!file.in.accept('=')) error_end("Error reading NEXUS file: expected '=' after tree name");
  if (file.in.peek() != '(') file.in.fail("expected a tree in parentheses after tree name");
  return name.text;
}

}  // namespace

void read_trees_block(nexus_file& file) {
  require_data("reading trees");
  tree_taxa taxa(file);
  labelled_tree_reader reader(
      [&taxa](const std::string& label, const labelled_tree_reader& trees) {
        const auto found = taxa.translated.find(label);
        if (found != taxa.translated.end()) return found->second;
        const int taxon = taxon_of(label, taxa);
        if (taxon < 0) error_end("Error reading NEXUS file: No taxon", label, trees.place());
        return taxon;
      },
      [](int taxon) { error_end("Error reading NEXUS file: Taxon", taxon, "repeated"); });
  const int first = store.ntrees;
  nexus_token word;
  while (file.in.command_follows(word)) {
    if (word.is("translate")) {
      read_translation(file, taxa);
    } else if (word.is("tree") || word.is("utree")) {
      // In a file of ours, the tree that has the tags follows the others and is no tree of its own.
      const bool for_tags_only = read_tree_head(file) == tag_tree_name && file.trees_read > 0;
      reader.read_tree(for_tags_only);
      file.trees_read += !for_tags_only;
      show_progress("Reading trees", reader.trees_read(), store.maxtrees);
    } else {
      file.skip_command(word);
    }
  }
  clear_progress();
  reader.keep_tags(text_of("Tree-tags from %s", file.name.c_str()));
  if (reader.trees_read() > 0) {
    emitf("Read %i trees (%i-%i) from NEXUS file", reader.trees_read(), first, store.ntrees - 1);
  }
}

}  // namespace zeb
