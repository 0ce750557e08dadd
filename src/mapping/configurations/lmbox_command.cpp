// lmbox: configurations of nodes and terminals, each in a large box with what it is compared to.
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/numbered_name.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/taxon_reference.h"
#include "mapping/commands.h"
#include "mapping/configurations/node_shapes.h"
#include "mapping/configurations/shape_figures.h"
#include "mapping/configurations/shape_key.h"
#include "mapping/requests.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

struct lmbox_request {
  std::vector<int> trees;
  std::vector<int> characters;
  std::vector<int> nodes;  // that are shown; empty: all
  int compared_with = -1;  // a node; -1: each with its ancestor
  figure_request figure;
};

std::vector<int> marked(const std::vector<std::uint8_t>& marks) {
  std::vector<int> numbers;
  for (std::size_t i = 0; i < marks.size(); ++i)
    if (marks[i]) numbers.push_back(static_cast<int>(i));
  return numbers;
}

std::vector<int> read_configurations() {
  std::vector<std::uint8_t> marks(at(matrix.nchar), 0);
  if (!accept_char('/') || !read_list(list_slash_ends, 0, matrix.nchar, "character", marks)) {
    for (const landmark_configuration& one : landmark_configurations())
      marks[at(one.character)] = 1;
  }
  std::vector<int> characters = marked(marks);
  for (const int c : characters)
    if (!configuration_of(c)) error_end_f("Char. %i is not a landmark configuration!", c);
  return characters;
}

/// Numbers of nodes, and names of terminals.
std::vector<int> read_nodes(const std::vector<int>& trees) {
  std::vector<int> nodes;
  std::vector<std::uint8_t> marks(at(matrix.ntax));
  for (int c = skip_blanks_peek(); c != '>' && c != '&' && c != ';'; c = skip_blanks_peek()) {
    int node = -1;
    if (!read_optional_int(&node)) node = read_taxon(marks);
    for (const int tree : trees) check_node_number(tree, node);
    nodes.push_back(node);
  }
  return nodes;
}

/// "trees / characters / nodes > node & file options".
lmbox_request read_lmbox_request() {
  lmbox_request request;
  std::vector<std::uint8_t> trees(at(store.ntrees), 0);
  constexpr unsigned flags = list_slash_ends | list_in_tree_buffer | list_one_tree;
  if (!read_list(flags, 0, store.ntrees, "tree", trees)) trees.assign(trees.size(), 1);
  request.trees = marked(trees);
  request.characters = read_configurations();
  if (accept_char('/')) {
    request.nodes = read_nodes(request.trees);
    if (request.nodes.empty()) error_end("Expected a list of nodes");
  }
  if (accept_char('>')) {
    const std::vector<int> others = read_nodes(request.trees);
    if (others.size() != 1) error_end("Expected one node to compare with");
    request.compared_with = others.front();
  }
  std::optional<figure_request> figure = read_figure_or_end(svg_options{});
  if (!figure) error_end("Must give \"&\" and the name of the figure's file");
  request.figure = *figure;
  return request;
}

std::string name_of_node(int node) {
  return node < matrix.ntax ? taxon_label(node) : "node " + std::to_string(node);
}

shape_boxes boxes_of(const lmbox_request& request, int tree, int character) {
  const tree_shape shape(stored_tree(tree));
  const node_shapes shapes = shapes_on_tree(shape, character);
  shape_boxes boxes;
  boxes.character = character;
  boxes.title = text_of("Tree %i, ", tree) + name_of_configuration(character);
  const int other = request.compared_with;
  boxes.meaning_of_from = other < 0 ? "its ancestor, named before the arrow"
                                    : "configuration of " + name_of_node(other);
  for (int v = 0; at(v) < shape.nodes(); ++v) {
    const bool shown = request.nodes.empty()
                           ? v != other && v != shape.root()
                           : std::ranges::find(request.nodes, v) != request.nodes.end();
    if (!shown || !shape.has(v)) continue;
    const int from = other >= 0 ? other : v == shape.root() ? -1 : shape.ancestor(v);
    const std::string name = name_of_node(v);
    boxes.pairs.push_back({other < 0 && from >= 0 ? name_of_node(from) + " \u2192 " + name : name,
                           from >= 0 ? shapes.shapes[at(from)] : std::vector<landmark_point>{},
                           shapes.shapes[at(v)]});
  }
  if (boxes.pairs.empty()) error_end("None of the nodes is in tree", tree);
  return boxes;
}

}  // namespace

void lmbox_command() {
  require_data("drawing landmarks");
  if (landmark_configurations().empty()) error_end("No landmark characters in matrix");
  require_trees();
  const lmbox_request request = read_lmbox_request();
  for (const int tree : request.trees) {
    for (const int c : request.characters) {
      const std::string name =
          numbered_file_name(request.figure.file_name, request.trees.size() > 1 ? tree : -1,
                             request.characters.size() > 1 ? c : -1);
      draw_shape_boxes(request.figure, name, boxes_of(request, tree, c));
    }
  }
}

}  // namespace zeb
