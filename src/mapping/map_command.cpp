// map: the states of characters at the nodes of trees, as diagrams, lists, tables and figures.
#include <optional>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/numbered_name.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "mapping/commands.h"
#include "mapping/common_groups.h"
#include "mapping/map_figure.h"
#include "mapping/node_states.h"
#include "mapping/requests.h"
#include "matrix/matrix.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

struct map_request {
  enum class form { diagram, list, table } form = form::diagram;
  bool down_pass = false;
  bool over_trees = false;  // what the nodes of the consensus have in any of the trees
  polytomy_kind polytomies = polytomy_kind::hard;
  mapping_request chosen;
  std::optional<figure_request> figure;
};

map_request read_map_request() {
  map_request request;
  for (bool sign = true; sign;) {
    if (accept_char('-'))
      request.form = map_request::form::list;
    else if (accept_char('='))
      request.form = map_request::form::table;
    else if (accept_char(':'))
      request.down_pass = true;
    else if (accept_char('['))
      request.over_trees = true;
    else if (accept_char('!'))
      request.polytomies = polytomy_kind::soft;
    else
      sign = false;
  }
  request.chosen = read_trees_and_characters();
  if (request.down_pass && request.chosen.trees.size() > 1)
    error_end("Can't do down-pass states for multiple trees");
  request.figure = read_figure_or_end(map_figure_defaults());
  if (request.figure && request.figure->coordinate_array >= 0 &&
      request.chosen.trees.size() * request.chosen.characters.size() > 1)
    error_end("Places of nodes can be saved only for a figure of one character on one tree");
  return request;
}

/// A tree to be shown: of the buffer, or the consensus of the trees chosen.
struct shown_tree {
  std::string name;
  int number;  // of the tree, -1 for a consensus
  const_tree_span tree;
};

std::string heading_of(const map_request& request, const shown_tree& shown,
                       const mapped_character& mapped) {
  const std::string heading = character_heading(mapped.character);
  if (shown.number < 0) return heading + ", states in any of the trees";
  const std::string steps = " (" + steps_text(mapped.character, mapped.steps) + ")";
  return heading + steps + (request.down_pass ? ", down-pass states" : "");
}

void list_states(const shown_tree& shown, const mapped_character& mapped) {
  const tree_shape shape(shown.tree);
  const auto text = [&](int node) {
    return values_text(mapped.character, mapped.at_nodes[at(node)]);
  };
  emit("     Root: ", text(shape.root()), "\n");
  for (const int node : shape.inner)
    for (const int d : shape.lists.children(node))
      emit("     Node ", node_label(d), " (from ", node, "): ", text(node), " -> ", text(d), "\n");
}

void show_map(const map_request& request, const shown_tree& shown, const mapped_character& mapped) {
  const std::string heading = heading_of(request, shown, mapped);
  const std::string title = shown.name + ", " + heading;
  if (request.figure) {
    const bool several =
        request.chosen.characters.size() * (shown.number < 0 ? 1 : request.chosen.trees.size()) > 1;
    const std::string& name = request.figure->file_name;
    const std::string file =
        several ? numbered_file_name(name, shown.number, mapped.character) : name;
    return draw_map_figure(*request.figure, file, shown.tree, mapped, {title, heading});
  }
  if (request.form == map_request::form::list) {
    emit(title, "\n");
    list_states(shown, mapped);
    return newline();
  }
  std::vector<std::string> texts(mapped.at_nodes.size());
  const tree_shape shape(shown.tree);
  for (int v = 0; at(v) < texts.size(); ++v)
    if (shape.has(v)) texts[at(v)] = values_text(mapped.character, mapped.at_nodes[at(v)]);
  draw_tree(shown.tree, title, texts);
}

/// Nodes by characters, from the root outward.
void show_table(const map_request& request, const shown_tree& shown,
                const std::vector<mapped_character>& mapped) {
  const tree_shape shape(shown.tree);
  std::vector<int> nodes = shape.inner;
  for (int t = 0; t < matrix.ntax; ++t)
    if (shape.has(t)) nodes.push_back(t);
  std::vector<std::string> rows;
  std::vector<std::string> columns;
  matrix_table table;
  for (const int node : nodes) {
    rows.push_back(node_label(node));
    for (const mapped_character& one : mapped)
      table.cells.push_back(values_text(one.character, one.at_nodes[at(node)]));
  }
  for (const mapped_character& one : mapped) columns.push_back(character_label(one.character));
  const std::string title =
      shown.name + (request.down_pass  ? ", down-pass states of nodes"
                    : shown.number < 0 ? ", states of nodes in any of the trees"
                                       : ", states of nodes");
  table.title = title;
  table.row_labels = rows;
  table.column_labels = columns;
  print_table(table);
}

/// `map(character)` gives what is to be shown on the tree.
template <class function>
void show_characters(const map_request& request, const shown_tree& shown, function map) {
  std::vector<mapped_character> in_table;
  for (const int c : request.chosen.characters) {
    check_interrupt();
    if (is_landmark(c)) {
      emit("Char. ", c, " is a landmark",
           text_of(" (map with \"lmark map %i/%i\")\n", std::max(shown.number, 0), c));
      continue;
    }
    if (request.form == map_request::form::table && !request.figure)
      in_table.push_back(map(c));
    else
      show_map(request, shown, map(c));
  }
  if (!in_table.empty()) show_table(request, shown, in_table);
}

void map_over_trees(const map_request& request) {
  const std::vector<int>& trees = request.chosen.trees;
  std::vector<tree_shape> shapes;
  std::vector<const_tree_span> records;
  for (const int t : trees) {
    shapes.emplace_back(stored_tree(t));
    records.push_back(shapes.back().tree);
  }
  const common_groups common = groups_in_all(records);
  const shown_tree shown = {
      "Consensus of " + counted(static_cast<int>(trees.size()), "tree", "trees"), -1, common.tree};
  show_characters(request, shown, [&](int c) {
    mapped_character united{c, 0, std::vector<node_values>(common.nodes.front().size())};
    for (std::size_t t = 0; t < shapes.size(); ++t) {
      const mapped_character one = map_character(shapes[t], c, pass::final, request.polytomies);
      for (std::size_t v = 0; v < united.at_nodes.size(); ++v)
        if (common.nodes[t][v] >= 0) united.at_nodes[v].join(one.at_nodes[at(common.nodes[t][v])]);
    }
    return united;
  });
}

}  // namespace

void map_command() {
  require_data_and_trees("mapping characters");
  const map_request request = read_map_request();
  if (request.polytomies == polytomy_kind::soft) warn_of_large_polytomies(request.chosen);
  if (request.over_trees) return map_over_trees(request);
  for (const int t : request.chosen.trees) {
    const shown_tree shown = {text_of("Tree %i", t), t, stored_tree(t)};
    const tree_shape shape(shown.tree);
    show_characters(request, shown, [&](int c) {
      return map_character(shape, c, request.down_pass ? pass::down : pass::final,
                           request.polytomies);
    });
  }
}

}  // namespace zeb
