// `travtree`: a piece of script for each node on a way through a tree.
#include <cctype>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/name_matching.h"
#include "macro/bodies.h"
#include "macro/body_text.h"
#include "macro/macro_language.h"
#include "macro/script_text.h"
#include "macro/variable_reference.h"
#include "macro/variables.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"
#include "walking/commands.h"
#include "walking/node_walk.h"
#include "walking/walk_nesting.h"

namespace zeb {

walk_settings walk_order;

namespace {

class node_items : public body_items {
 public:
  node_items(std::vector<walked_node> nodes, int variable, bool clades)
      : nodes_(std::move(nodes)), variable_(variable), clades_(clades) {}

  bool next() override {
    if (next_ >= nodes_.size()) return false;
    current_ = next_++;
    store_variable(variable_, nodes_[current_].node);
    return true;
  }
  std::string place() const override {
    return text_of("travtree (node %i)", nodes_[current_].node);
  }
  void skip_clade() {
    if (!clades_) error_end("skipdes valid only within travtree up");
    next_ = static_cast<std::size_t>(nodes_[current_].after_clade);
  }

 private:
  std::vector<walked_node> nodes_;
  int variable_;
  bool clades_;  // each node comes before all of its clade
  std::size_t current_ = 0;
  std::size_t next_ = 0;
};

node_walk read_type() {
  read_word();
  const std::string word(token());
  constexpr std::string_view types[] = {"up", "down", "below", "path", "des"};
  constexpr node_walk walks[] = {node_walk::up, node_walk::down, node_walk::below, node_walk::path,
                                 node_walk::descendants};
  for (std::size_t i = 0; i < std::size(types); ++i) {
    if (word != types[i]) continue;
    if (i > 0 || std::tolower(skip_blanks_peek()) != 't') return walks[i];
    read_word();
    if (std::string_view("terms").starts_with(token())) return node_walk::up_with_terminals;
    break;
  }
  error_end_f("Unexpected string in travtree: %s (expecting up, down, below, des, or path)",
              std::string(token()).c_str());
}

int read_node(int tree) {
  const int node = read_int();
  if (node < 0) error_end("Must give node number");
  const const_tree_span record = stored_tree(tree);
  if (node >= node_limit(record, matrix.ntax) || (node < matrix.ntax && is_absent(record, node))) {
    error_end_f("No node %i in tree %i", node, tree);
  }
  return node;
}

variable_reference read_walk_variable() {
  const int next = skip_blanks_peek();
  if (!std::isalnum(next) && next != '(') error_end("Sorry, expected a variable name/number");
  const variable_reference variable = read_variable_reference(false);
  if (variable.is_section()) error_end("Sorry, expected a variable name/number");
  return variable;
}

void report_walk(int tree, int node, const variable_reference& variable) {
  if (!settings.report) return;
  const std::string name(variable_name(variable.base));
  if (name.empty()) {
    emitf("Doing tree %i, node %i, and var. %i (unnamed)", tree, node, variable.cell);
  } else {
    emitf("Doing tree %i, node %i, and var. %s", tree, node, name.c_str());
  }
}

bool accept_order() {
  const bool drawn = accept_char('+');
  if (!drawn && !accept_char('-')) return false;
  no_timing();
  check_end();
  walk_order.as_drawn = drawn;
  if (settings.report) {
    report_line(drawn ? "Using the same sequence for plotting and traversing trees"
                      : "Traversing trees in the sequence of node numbers");
  }
  return true;
}

}  // namespace

void travtree_command() {
  require_macros();
  if (accept_order() || accept_walk_limit(body_kind::travtree)) return;
  check_walk_nesting(body_kind::travtree);
  require_trees();
  const node_walk walk = read_type();
  const int tree = read_walked_tree();
  const int node = read_node(tree);
  const int other = walk == node_walk::path ? read_node(tree) : node;
  const bool without_ends = accept_char('-');
  const variable_reference variable = read_walk_variable();
  body_record body = capture_body(body_kind::travtree);
  std::vector<walked_node> nodes = nodes_of_walk(stored_tree(tree), matrix.ntax, walk, node, other,
                                                 walk_order.as_drawn, matrix.outgroup);
  const bool upward = walk == node_walk::up || walk == node_walk::up_with_terminals;
  if (without_ends)
    nodes = chosen_nodes(nodes, [node, other](int v) { return v != node && v != other; });
  report_walk(tree, node, variable);
  body.items = std::make_unique<node_items>(std::move(nodes), variable.cell, upward);
  enter_body(std::move(body));
}

void killtrav_command() { end_walk(body_kind::travtree); }

void skipdes_command() {
  require_macros();
  check_end();
  body_record& body = reach_body(body_kind::travtree, "travtree");
  static_cast<node_items&>(*body.items).skip_clade();
  skip_to_body_end();
}

void endtrav_command() { unmatched_closing_word("travtree"); }

}  // namespace zeb
