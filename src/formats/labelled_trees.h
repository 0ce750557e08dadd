// Trees with names, labels and branch lengths in nested parentheses, as Newick files and NEXUS
// trees blocks have them.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "trees/notation/parenthetical_reader.h"
#include "trees/notation/taxon_names.h"

namespace zeb {

/// Under this name the tree with the tags is written.
constexpr std::string_view tag_tree_name = "tagged_tree";

class labelled_tree_reader;
/// What a label in a tree stands for: the taxon's number. Must not return for unknown labels, whose
/// place the reader tells.
using label_lookup =
    std::function<int(const std::string& label, const labelled_tree_reader& reader)>;

/// Reads trees from the top frame of the input stack and stores them in the tree buffer, with
/// labels and lengths kept for the tag tree.
class labelled_tree_reader {
 public:
  /// `repeated`, where given, raises the error of a taxon that stands in a tree twice.
  explicit labelled_tree_reader(label_lookup lookup, void (*repeated)(int taxon) = nullptr);
  labelled_tree_reader(const labelled_tree_reader&) = delete;
  labelled_tree_reader& operator=(const labelled_tree_reader&) = delete;

  /// Reads one tree up to its ";" and stores it, or keeps it for its tags only. False where there
  /// was nothing but the ";".
  bool read_tree(bool for_tags_only = false);
  int trees_read() const { return count_; }
  /// "(tree 2 of the file, line 7)": where the reader stands, for messages.
  std::string place() const;
  /// Makes the last tree read with labels or lengths the tag tree. Returns whether there was one.
  bool keep_tags(std::string_view title);

 private:
  int next_sign() const;
  std::string read_label();
  void store();
  void note_tags(const_tree_span tree, const std::vector<int>& numbers);

  label_lookup lookup_;
  tree_builder tree_;
  parenthetical_dialect dialect_;
  std::vector<std::pair<int, std::string>> texts_;  // by node of the builder
  std::vector<tree_node> tagged_;
  std::vector<std::string> tagged_texts_;
  int count_ = 0;
  bool told_commas_ = false;
};

/// The taxon with this name, blanks and the signs that names can't have read as "_", case ignored;
/// -1 none. `names` is kept by the caller from label to label.
int find_foreign_taxon(const std::string& label, taxon_names& names);

/// A label as other programs read it back: in single quotes, doubled inside, where it holds
/// anything but letters, digits, "_" and ".".
std::string quoted_label(std::string_view name);

}  // namespace zeb
