// apo: what characterises the groups and terminals of trees.
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/numbered_name.h"
#include "console/progress.h"
#include "language/lexer.h"
#include "mapping/apo_figure.h"
#include "mapping/apo_lists.h"
#include "mapping/apomorphies.h"
#include "mapping/commands.h"
#include "mapping/common_groups.h"
#include "mapping/map_figure.h"
#include "mapping/moved_landmarks.h"
#include "mapping/requests.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

struct apo_request {
  bool common = false;  // to all trees, on their consensus
  bool listed = false;
  bool by_character = false;
  branch_text_style style;
  mapping_request chosen;
  std::optional<figure_request> figure;
};

/// "!C N": one landmark character, on one tree: its landmarks that differ between a node and its
/// ancestor, and by how much.
void show_moved_landmarks() {
  const int character = read_int();
  if (character < 0) error_end("Must give", "character", "number");
  if (character >= matrix.nchar) error_end("Character", character, "is not in the matrix");
  if (!is_landmark(character))
    error_end_f("Option \"apo!\" is applicable only to landmark characters (not %i)", character);
  const std::vector<int> trees = read_trees_and_characters().trees;
  if (trees.size() > 1) error_end("Cannot use multiple trees for individual landmarks");
  expect_end();
  list_moved_landmarks(trees.front(), character);
}

void read_states_style(branch_text_style& style) {
  style.with_states = true;
  if (!accept_char('(')) return;
  constexpr int least = 4;
  constexpr int most = 500;
  style.width = read_int();
  if (style.width < least || style.width > most)
    error_end_f("Width of columns must be %i-%i", least, most);
  if (!accept_char(')')) error_end("Expected \")\" after the width of columns");
}

/// Nothing for a landmark character, which is shown by itself.
std::optional<apo_request> read_apo_request() {
  apo_request request;
  for (bool sign = true; sign;) {
    if (accept_char('['))
      request.common = true;
    else if (accept_char('-'))
      request.listed = true;
    else if (accept_char(']'))
      request.by_character = true;
    else if (accept_char('>'))
      read_states_style(request.style);
    else if (accept_char('!'))
      return std::nullopt;
    else
      sign = false;
  }
  request.chosen = read_trees_and_characters();
  request.figure = read_figure_or_end(apo_figure_defaults());
  if (std::erase_if(request.chosen.characters, is_landmark) > 0)
    warning("Landmark characters are left out; \"apo !C N\" shows one of them");
  if (request.figure && request.figure->coordinate_array >= 0 && !request.common &&
      request.chosen.trees.size() > 1)
    error_end("Places of nodes can be saved only for a figure of one tree");
  return request;
}

std::vector<tree_with_changes> find_changes(const apo_request& request) {
  std::vector<tree_with_changes> trees;
  const std::size_t room = arena_free();
  std::size_t bytes = 0;
  for (const int t : request.chosen.trees) {
    show_progress("Optimizing", static_cast<double>(trees.size()),
                  static_cast<double>(request.chosen.trees.size()));
    const tree_shape shape(stored_tree(t));
    trees.push_back({text_of("Tree %i, synapomorphies", t), t, shape.tree,
                     find_apomorphies(shape, request.chosen.characters)});
    bytes += trees.back().changes.size() * sizeof(apomorphy);
    if (bytes > room) error_end("Not enough RAM");
  }
  clear_progress();
  return trees;
}

void show(const apo_request& request, const tree_with_changes& shown) {
  if (request.figure) {
    const bool several = shown.number >= 0 && request.chosen.trees.size() > 1;
    const std::string& name = request.figure->file_name;
    draw_apo_figure(*request.figure, several ? numbered_file_name(name, shown.number) : name,
                    shown.tree, shown.changes, shown.name);
  } else if (request.by_character) {
    list_by_character(shown, request.chosen.characters);
  } else if (request.listed) {
    list_by_node(shown);
  } else {
    draw_apomorphies(shown, request.style);
  }
}

}  // namespace

void apo_command() {
  require_data_and_trees("finding synapomorphies");
  const std::optional<apo_request> read = read_apo_request();
  if (!read) return show_moved_landmarks();
  const apo_request& request = *read;
  const std::vector<tree_with_changes> trees = find_changes(request);
  if (request.common) {
    std::vector<const_tree_span> records;
    std::vector<std::vector<apomorphy>> changes;
    for (const tree_with_changes& one : trees) {
      records.push_back(one.tree);
      changes.push_back(one.changes);
    }
    const common_groups common = groups_in_all(records);
    return show(request, {"Synapomorphies common to " +
                              counted(static_cast<int>(trees.size()), "tree", "trees"),
                          -1, common.tree, common_apomorphies(common, changes)});
  }
  const bool matched =
      request.listed && !request.by_character && !request.figure && trees.size() > 1;
  if (matched) return list_matched(trees);
  for (const tree_with_changes& one : trees) show(request, one);
}

}  // namespace zeb
