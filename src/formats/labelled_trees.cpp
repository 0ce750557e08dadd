#include "formats/labelled_trees.h"

#include <algorithm>
#include <cctype>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/text_columns.h"
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
    const std::string length = read_label();
    // A label and a length of one node stand in one tag.
    if (!texts_.empty() && texts_.back().first == node) {
      texts_.back().second += "/" + length;
    } else {
      texts_.emplace_back(node, length);
    }
  };
  dialect_.read_label = [this](tree_builder&, int node) {
    texts_.emplace_back(node, read_label());
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
  note_tags(slot, numbers);
}

// `numbers`: by node of the builder, that in the tree.
void labelled_tree_reader::note_tags(const_tree_span tree, const std::vector<int>& numbers) {
  if (texts_.empty()) return;
  tagged_.assign(tree.begin(), tree.end());
  tagged_texts_.assign(tree.size(), {});
  for (const auto& [node, text] : texts_) {
    const int number = numbers[at(node)];
    if (number >= 0) tagged_texts_[at(number)] = text;
  }
}

bool labelled_tree_reader::read_tree(bool for_tags_only) {
  texts_.clear();
  read_parenthetical(tree_, dialect_);
  if (tree_.untouched()) return false;
  if (tree_.empty()) error_end("Tree without taxa", place());
  if (for_tags_only) {
    std::vector<int> numbers;
    std::vector<tree_node> tree(at(matrix.nnodes));
    tree_.finish(tree, zeb::store.include_absent, &numbers);
    note_tags(tree, numbers);
  } else {
    store();
  }
  return true;
}

bool labelled_tree_reader::keep_tags(std::string_view title) {
  if (tagged_.empty()) return false;
  set_tag_tree(tagged_, tagged_texts_, title);
  return true;
}

int find_foreign_taxon(const std::string& label, taxon_names& names) {
  return names.find(fit_name(text_in_bytes(normal_form(label), at(matrix.name_length) - 1)));
}

std::string quoted_label(std::string_view name) {
  const bool plain = !name.empty() && std::all_of(name.begin(), name.end(), [](unsigned char c) {
    return std::isalnum(c) || c == '_' || c == '.' || c > 127;
  });
  if (plain) return std::string(name);
  std::string quoted = "'";
  for (const char c : name) {
    quoted += c;
    if (c == '\'') quoted += '\'';
  }
  return quoted + "'";
}

}  // namespace zeb
