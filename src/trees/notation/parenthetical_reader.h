// The one parser of nested parentheses, for every notation that has them.
#pragma once

#include <functional>
#include <string_view>

#include "trees/notation/tree_builder.h"

namespace zeb {

/// What a notation adds to the parentheses. Blanks and commas separate.
struct parenthetical_dialect {
  int (*read)() = nullptr;  // next character; must come to a terminator sooner or later
  void (*unread)() = nullptr;
  std::string_view terminators = ";";  // each ends a tree
  char annotation = 0;                 // the sign before a text for the node just met; 0 none
  bool labels_after_nodes = false;     // what follows ")" at once is a label of the node
  bool bracket_comments = false;       // "[...]" is skipped, with brackets and ";" in it
  bool (*ended)() = nullptr;           // has the text of all trees run out? Wanted for comments
  bool root_ends = false;              // the tree ends with the parenthesis that closes its root
  bool comma_ends = false;             // a comma outside of all parentheses stands for ";"
  /// Reads what is neither parenthesis nor terminator, from its first character: terminals, copies
  /// of clades.
  std::function<void(tree_builder&)> read_item;
  /// Reads the text after the annotation sign, for `node` of the builder.
  std::function<void(tree_builder&, int node)> read_annotation;
  /// Reads a label after a node's closing parenthesis, from its first character.
  std::function<void(tree_builder&, int node)> read_label;
  /// What should be told of commas: two places without one between them, or one next to no place.
  /// Left out where commas are mere blanks.
  std::function<void(const char* what)> odd_commas;
  /// A closing parenthesis too many, which will be ignored: once for a tree.
  std::function<void()> excess;
  /// The tree ends with parentheses open, near the given terminal (-1 without any): must not
  /// return.
  std::function<void(int terminal)> missing;
};

/// Reads one tree into `tree`, up to its terminator, which is returned. Nothing at all before the
/// terminator leaves the builder untouched. Works in a loop, so depth costs no machine stack.
int read_parenthetical(tree_builder& tree, const parenthetical_dialect& dialect);

}  // namespace zeb
