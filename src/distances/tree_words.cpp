#include "distances/tree_words.h"

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {

tree_word_reader::tree_word_reader(std::size_t most_lists)
    : most_lists_(most_lists), flags_(at(store.ntrees), 0) {
  require_trees();
}

void tree_word_reader::read_at(int c) {
  if (c == '&') {
    next_nonblank();
    close_list();
    if (words_.lists.size() == most_lists_)
      error_end_f("Give at most %i lists of trees", static_cast<int>(most_lists_));
    return;
  }
  list_reader reader(list_slash_ends | list_in_tree_buffer, 0, store.ntrees, find_list_kind("tree"),
                     flags_);
  reader.read_item_at(c);
  any_ = true;
}

void tree_word_reader::close_list() {
  std::vector<int> numbers;
  for (int t = 0; t < store.ntrees; ++t)
    if (flags_[at(t)] || !any_) numbers.push_back(t);
  if (numbers.empty()) error_end("No trees specified");
  words_.lists.push_back(std::move(numbers));
  flags_.assign(flags_.size(), 0);
  any_ = false;
}

tree_words tree_word_reader::finish() {
  close_list();
  std::vector<std::uint8_t> excluded(at(matrix.ntax), 0);
  if (accept_char('/')) read_list(list_plain, 0, matrix.ntax, "taxon", excluded);
  words_.excluded = taxon_set::of_flags(excluded);
  check_end();
  return std::move(words_);
}

}  // namespace zeb
