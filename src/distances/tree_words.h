// Trees and taxa among the words of the commands that compare trees.
#pragma once

#include <cctype>
#include <cstdint>
#include <vector>

#include "base/taxon_set.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/options.h"

namespace zeb {

/// What stands beside the options: lists of trees separated by "&", and taxa to be left out.
struct tree_words {
  std::vector<std::vector<int>> lists;  // of numbers, increasing; at least one
  taxon_set excluded;
};

/// Gathers items of lists of trees.
class tree_word_reader {
 public:
  /// At most `most_lists` lists. "Tree(s) are required" without trees.
  explicit tree_word_reader(std::size_t most_lists);
  /// The item of a list, or the "&", that `c`, next in the input, begins.
  void read_at(int c);
  /// The rest, from "/" if that comes next, up to ";", which stays unread. Where no list was given,
  /// the first one has all trees.
  tree_words finish();

 private:
  void close_list();

  std::size_t most_lists_;
  std::vector<std::uint8_t> flags_;
  bool any_ = false;
  tree_words words_;
};

/// Everything up to ";", which stays unread: words are options of the table, the rest as above.
template <class settings>
tree_words read_tree_words(settings& target, const option_table& table, std::size_t most_lists) {
  tree_word_reader reader(most_lists);
  for (int c = skip_blanks_peek(); c != ';' && c != '/'; c = skip_blanks_peek()) {
    if (std::isalpha(c))
      read_option(target, table);
    else if (!read_sign(target, table))
      reader.read_at(c);
  }
  return reader.finish();
}

}  // namespace zeb
