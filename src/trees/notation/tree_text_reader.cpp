#include "trees/notation/tree_text_reader.h"

#include <algorithm>
#include <cctype>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/taxon_reference.h"
#include "matrix/matrix.h"
#include "trees/drawing/tags.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

constexpr const char* must_balance =
    "Sorry, for reading trees with tags, parentheses *must* be balanced";

}  // namespace

tree_text_reader::tree_text_reader(int ntax) : ntax_(ntax), tree_(ntax), flags_(at(ntax)) {
  dialect_.read = read_char;
  dialect_.unread = unread_char;
  dialect_.terminators = "*;";
  dialect_.annotation = '=';
  dialect_.read_item = [this](tree_builder&) { read_item(); };
  dialect_.read_annotation = [this](tree_builder&, int node) { read_tag(node); };
  dialect_.excess = [this] {
    if (!tags_.empty()) error_end(must_balance);
    mended_ = true;
    warning(
        "Parenthetical tree contains excess/unbalanced parentheses;\nexcess parentheses will be "
        "ignored");
  };
  dialect_.missing = [this](int terminal) {
    if (!tags_.empty()) error_end(must_balance);
    if (terminal >= 0) {
      emit(text_of("Note: error seems to be around terminal %i (%s)\n", terminal,
                   std::string(taxon_name(terminal)).c_str()));
    }
    error_end("Sorry, couldn't fix excess of opening parentheses!");
  };
}

int tree_text_reader::read_tree() {
  dialect_.root_ends = false;
  return read_by_dialect();
}

void tree_text_reader::read_enclosed_tree() {
  dialect_.root_ends = true;
  read_by_dialect();
  if (!tags_.empty()) error_end("Trees of constraints can't have tags");
}

int tree_text_reader::read_by_dialect() {
  tags_.clear();
  mended_ = false;
  // Typed commas end commands; within the parentheses of a tree they separate as in files.
  const comma_reading commas;
  commas.set_literal(true);
  dialect_.comma_ends = input.top == 0;
  return read_parenthetical(tree_, dialect_);
}

void tree_text_reader::read_item() {
  const int c = read_char();
  if (std::isdigit(c)) {
    // The hot path: a plain number. What turns out longer is looked up as a word.
    int number = c - '0';
    word_.assign(1, static_cast<char>(c));
    int next = read_char();
    for (; std::isdigit(next) && word_.size() < 9; next = read_char()) {
      number = 10 * number + (next - '0');
      word_ += static_cast<char>(next);
    }
    unread_char();
    if (ends_taxon_name(next)) {
      if (number >= ntax_) error_end("Error: no taxon", number);
      tree_.add_terminal(number);
      return;
    }
  } else if (c == '+') {
    const int tree = read_int();
    check_tree_number(tree);
    const int node = read_int();
    check_node_number(tree, node);
    tree_.add_subtree(stored_tree(tree), node);
    return;
  } else {
    unread_char();
    word_.clear();
  }
  read_taxon_reference();
}

/// A reference that isn't a plain number; `word_` holds its beginning.
void tree_text_reader::read_taxon_reference() {
  const int c = read_char();
  unread_char();
  if (word_.empty() && (c == ':' || ends_taxon_name(c))) {
    const int taxon = read_taxon(flags_);
    if (taxon >= 0) {
      tree_.add_terminal(taxon);
    } else {
      add_flagged();
    }
    return;
  }
  int next = read_char();
  for (; !ends_taxon_name(next); next = read_char()) {
    word_ += static_cast<char>(next);
    if (word_.size() > 2000) error_end("Name too long");
  }
  unread_char();
  int taxon = names_.find(word_);
  if (taxon < 0) {
    std::fill(flags_.begin(), flags_.end(), std::uint8_t{0});
    taxon = taxon_of_word(word_, flags_);
  }
  if (taxon >= 0) {
    tree_.add_terminal(taxon);
  } else {
    add_flagged();
  }
}

void tree_text_reader::add_flagged() {
  for (int t = 0; t < ntax_; ++t) {
    if (flags_[at(t)]) tree_.add_terminal(t);
  }
}

void tree_text_reader::read_tag(int node) {
  if (mended_) error_end(must_balance);
  std::string text;
  int c = read_char();
  const auto ends_tag = [&](int next) {
    return next < 33 || next == '*' || next == ';' || (next == ',' && dialect_.comma_ends);
  };
  for (; !ends_tag(c); c = read_char()) {
    if (text.size() < longest_tag) text += static_cast<char>(c);
  }
  unread_char();
  tags_.emplace_back(node, std::move(text));
}

void take_tag_tree(tree_text_reader& reader, std::string_view title) {
  std::vector<tree_node> record(at(matrix.nnodes), 0);
  std::vector<int> numbers;
  reader.tree().finish(record, store.include_absent, &numbers);
  std::vector<std::string> texts(record.size());
  for (const auto& [node, text] : reader.tags_read()) {
    const int number = numbers[at(node)];
    if (number >= 0) texts[at(number)] = text;
  }
  if (tags.tags_add) {
    set_tag_tree_with_former(record, texts, title);
  } else {
    set_tag_tree(record, texts, title);
  }
}

}  // namespace zeb
