#include "formats/labelled_trees.h"

#include <algorithm>
#include <cctype>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/text_columns.h"
#include "formats/labels_from_tags.h"
#include "formats/written_words.h"
#include "language/fit_text.h"
#include "language/input.h"
#include "matrix/matrix.h"
#include "trees/drawing/tags.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

constexpr std::size_t longest_label = 10'000;

bool ends_label(int c) {
  return c < 33 || c == '(' || c == ')' || c == ',' || c == ':' || c == ';' || c == '[';
}

}  // namespace

labelled_tree_reader::labelled_tree_reader(label_lookup lookup, void (*repeated)(int taxon))
    : lookup_(std::move(lookup)), tree_(matrix.ntax) {
  dialect_.read = plain_read_char;
  dialect_.unread = plain_unread_char;
  dialect_.terminators = ";";
  dialect_.annotation = ':';
  dialect_.labels_after_nodes = true;
  dialect_.bracket_comments = true;
  dialect_.ended = input_ended;
  dialect_.odd_commas = [this](const char* what) {
    if (told_commas_) return;
    told_commas_ = true;
    warning("A tree", what, place());
  };
  dialect_.read_item = [this, repeated](tree_builder& tree) {
    const int taxon = lookup_(read_label(), *this);
    if (repeated && tree.holds(taxon)) repeated(taxon);
    tree.add_terminal(taxon);
  };
  dialect_.read_annotation = [this](tree_builder&, int node) {
    if (read_.empty() || read_.back().first != node) read_.push_back({node, {}});
    std::string& length = read_.back().second.length = read_label();
    if (is_number(length) || told_length_) return;
    told_length_ = true;
    warning("A branch length isn't a number, and won't be written again:", length, place());
  };
  dialect_.read_label = [this](tree_builder&, int node) {
    read_.push_back({node, {read_label(), {}}});
  };
  dialect_.excess = [this] { error_end("Too many trailing parentheses in tread", place()); };
  dialect_.missing = [this](int) {
    error_end("Sorry, couldn't read tree (unbalanced parents.)", place());
  };
}

std::string labelled_tree_reader::place() const {
  return text_of("(tree %i of the file, line %i)", count_ + 1, top_frame().line_number + 1);
}

// The next character that is no blank and in no comment.
int labelled_tree_reader::next_sign() const {
  int open = 0;
  for (int c = plain_read_char();; c = plain_read_char()) {
    if (c == '[') ++open;
    if (open == 0 && c > 32) return c;
    if (c == ']') --open;
    if (open > 0 && input_ended()) error_end("A comment isn't closed", place());
  }
}

std::string labelled_tree_reader::read_label() {
  std::string label;
  int c = next_sign();
  if (c == '\'') {
    for (c = plain_read_char();; c = plain_read_char()) {
      if (c == '\'') {
        if (plain_read_char() != '\'') break;
      }
      if (label.size() > longest_label || input_ended() || c == '\n')
        error_end("A quoted name isn't closed:", without_controls(label.substr(0, 60)), place());
      label += static_cast<char>(c);
    }
    plain_unread_char();
    return label;
  }
  for (; !ends_label(c); c = plain_read_char()) {
    label += static_cast<char>(c);
    if (label.size() > longest_label) error_end("Name too long", place());
  }
  plain_unread_char();
  return label;
}

void labelled_tree_reader::store() {
  if (zeb::store.ntrees >= zeb::store.maxtrees) {
    if (zeb::store.vault.maxtrees > 0)
      error_end("Cannot increase tree-space when tree-vault is set");
    if (!set_maxtrees(zeb::store.maxtrees + 100, false, true))
      error_end("No space to store new trees");
  }
  std::vector<int> numbers;
  const tree_span slot = stored_tree(zeb::store.ntrees);
  tree_.finish(slot, zeb::store.include_absent, &numbers);
  take_slot();
  ++count_;
  if (!note_labels(slot, numbers)) return;
  label_tree(zeb::store.ntrees - 1, labels_);
  tagged_is_stored_ = true;
}

// `numbers`: by node of the builder, that in the tree.
bool labelled_tree_reader::note_labels(const_tree_span tree, const std::vector<int>& numbers) {
  if (read_.empty()) return false;
  tagged_.assign(tree.begin(), tree.end());
  labels_.assign(tree.size(), {});
  for (const auto& [node, label] : read_) {
    const int number = numbers[at(node)];
    if (number >= 0) labels_[at(number)] = label;
  }
  return true;
}

bool labelled_tree_reader::read_tree(bool for_tags_only) {
  read_.clear();
  read_parenthetical(tree_, dialect_);
  if (tree_.untouched()) return false;
  if (tree_.empty()) error_end("Tree without taxa", place());
  if (for_tags_only) {
    std::vector<int> numbers;
    std::vector<tree_node> tree(at(matrix.nnodes));
    tree_.finish(tree, zeb::store.include_absent, &numbers);
    if (note_labels(tree, numbers)) tagged_is_stored_ = false;
  } else {
    store();
  }
  return true;
}

bool labelled_tree_reader::read_plain_tree(tree_span tree) {
  read_parenthetical(tree_, dialect_);
  if (tree_.empty()) return false;
  tree_.finish(tree, false);
  return true;
}

bool labelled_tree_reader::keep_tags(std::string_view title) {
  if (tagged_.empty()) return false;
  std::vector<std::string> texts;
  for (const branch_label& one : labels_) texts.push_back(one.text());
  set_tag_tree(tagged_, texts, title);
  if (tagged_is_stored_) note_source_of_tags(tag_source::file);
  return true;
}

int foreign_names::find(const std::string& label) {
  const std::string word(text_in_bytes(normal_form(label), at(matrix.name_length) - 1));
  const int taxon = names_.find(fit_name(word));
  if (taxon >= 0) return taxon;
  if (plain_.empty()) {
    const word_writer words(word_form::plain);
    for (int t = 0; t < matrix.ntax; ++t) plain_.emplace(words.taxon(t), t);
  }
  const auto found = plain_.find(word);
  return found == plain_.end() ? -1 : found->second;
}

}  // namespace zeb
