// Reading of trees in ZEB's own parenthetical notation, from the command input.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "trees/notation/parenthetical_reader.h"
#include "trees/notation/taxon_names.h"

namespace zeb {

/// Texts met after "=" while one tree was read, by node of the builder.
using tree_tags = std::vector<std::pair<int, std::string>>;

/// Reads single trees through `read_char`. Taxa are numbers, names, "abc...", "{group}", "@T N";
/// "+T N" copies a clade of a stored tree; "=text" is a tag.
class tree_text_reader {
 public:
  explicit tree_text_reader(int ntax);
  tree_text_reader(const tree_text_reader&) = delete;
  tree_text_reader& operator=(const tree_text_reader&) = delete;

  /// Reads one tree; returns its terminator, ";" or "*".
  int read_tree();
  /// Reads one tree in parentheses, up to the one that closes its root.
  void read_enclosed_tree();
  tree_builder& tree() { return tree_; }
  const tree_tags& tags_read() const { return tags_; }

 private:
  int read_by_dialect();
  void read_item();
  void read_taxon_reference();
  void read_tag(int node);
  void add_flagged();

  int ntax_;
  tree_builder tree_;
  tree_tags tags_;
  taxon_names names_;
  std::string word_;
  std::vector<std::uint8_t> flags_;
  bool mended_ = false;
  parenthetical_dialect dialect_;
};

/// Makes the tree just read, with its tags, the tag tree; `title` goes with it. With `tags_add` its
/// texts are put after those that nodes with the same terminals had in the former tag tree.
void take_tag_tree(tree_text_reader& reader, std::string_view title);

}  // namespace zeb
