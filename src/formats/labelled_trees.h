// Trees with names, labels and branch lengths in nested parentheses, as Newick files and NEXUS
// trees blocks have them.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "trees/branch_labels.h"
#include "trees/notation/parenthetical_reader.h"
#include "trees/notation/taxon_names.h"

namespace zeb {

/// Under this name the tree with the tags is written.
constexpr std::string_view tag_tree_name = "tagged_tree";

/// Taxa by the names that files have.
class foreign_names {
 public:
  /// The taxon with this name, blanks and the signs that names can't have read as "_", case
  /// ignored; or the one whose name is written so in plain form. -1 none.
  int find(const std::string& label);

 private:
  taxon_names names_;
  std::unordered_map<std::string, int> plain_;  // filled when it is needed
};

class labelled_tree_reader;
/// What a label in a tree stands for: the taxon's number. Must not return for unknown labels, whose
/// place the reader tells.
using label_lookup =
    std::function<int(const std::string& label, const labelled_tree_reader& reader)>;

/// Reads trees from the top frame of the input stack and stores them in the tree buffer, with their
/// labels and lengths; those of the last tree that has any can become the tags as well.
class labelled_tree_reader {
 public:
  /// `repeated`, where given, raises the error of a taxon that stands in a tree twice.
  explicit labelled_tree_reader(label_lookup lookup, void (*repeated)(int taxon) = nullptr);
  labelled_tree_reader(const labelled_tree_reader&) = delete;
  labelled_tree_reader& operator=(const labelled_tree_reader&) = delete;

  /// Reads one tree up to its ";" and stores it, or keeps it for its tags only. False where there
  /// was nothing but the ";".
  bool read_tree(bool for_tags_only = false);
  /// Reads one tree up to its ";" into `tree`, and nothing of its labels. Taxa that it lacks are
  /// absent. False where there was nothing.
  bool read_plain_tree(tree_span tree);
  int trees_read() const { return count_; }
  /// "(tree 2 of the file, line 7)": where the reader stands, for messages.
  std::string place() const;
  /// Makes the last tree read with labels or lengths the tag tree. Returns whether there was one.
  bool keep_tags(std::string_view title);

 private:
  int next_sign() const;
  std::string read_label();
  void store();
  /// False where the tree has none.
  bool note_labels(const_tree_span tree, const std::vector<int>& numbers);

  label_lookup lookup_;
  tree_builder tree_;
  parenthetical_dialect dialect_;
  std::vector<std::pair<int, branch_label>> read_;  // of this tree, by node of the builder
  std::vector<tree_node> tagged_;                   // the last tree that had any
  std::vector<branch_label> labels_;                // of that tree, by node
  bool tagged_is_stored_ = false;
  int count_ = 0;
  bool told_commas_ = false;
  bool told_length_ = false;
};

}  // namespace zeb
