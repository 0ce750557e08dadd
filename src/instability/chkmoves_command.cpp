// chkmoves: how many moves of each node keep the score of a tree, or come close.
#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "instability/commands.h"
#include "instability/node_moves.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "mapping/node_states.h"
#include "matrix/matrix.h"
#include "trees/constraints/constraints.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

struct chkmoves_settings {
  move_search search;
  int shown = 5;  // places of a node
  bool plot = false;
  bool table = false;
};

constexpr command_options rows = {
    real<&chkmoves_settings::search, &move_search::limit>("within", {0, 1e9},
                                                          "Value of within must be 0 or more")
        .help("moves that make the tree worse by up to N, too"),
    choice<&chkmoves_settings::search, &move_search::tbr>("tbr", 1).help(
        "clades may be rerooted where they go"),
    number<&chkmoves_settings::shown>("show", {0, 1'000'000},
                                      "Number of places to show must be 0 - 1000000")
        .help("most places that are shown for a node"),
    toggle<&chkmoves_settings::plot>("plot").help(
        "draw the tree, with moves and longest distance at each node"),
    toggle<&chkmoves_settings::table>("table").help(
        "show moves and longest distances by node as lists instead"),
};

using moves_by_node = std::vector<std::vector<node_move>>;

int furthest(const std::vector<node_move>& moves) {
  int most = 0;
  for (const node_move& one : moves) most = std::max(most, one.distance);
  return most;
}

std::string excess_text(double excess) {
  if (excess == 0) return {};
  return " (" + std::string(excess > 0 ? "+" : "") + text_of("%.5g", excess) + ")";
}

/// The nearest first.
void list_places(std::vector<node_move> moves, int most) {
  std::ranges::stable_sort(moves, {}, &node_move::distance);
  int shown = 0;
  for (const node_move& one : moves) {
    if (shown++ == most) break;
    emit("      over ", counted(one.distance, "group", "groups"),
         one.to_polytomy ? ", into the polytomy of " : ", to the branch of ",
         node_label(one.target), excess_text(one.excess), "\n");
  }
  const auto all = static_cast<int>(moves.size());
  if (most > 0 && all > most) emit(text_of("      and %i more\n", all - most));
}

void show_nodes(const moves_by_node& moves, int most) {
  std::size_t sum = 0;
  int movable = 0;
  for (int v = 0; at(v) < moves.size(); ++v) {
    const std::vector<node_move>& own = moves[at(v)];
    if (own.empty()) continue;
    sum += own.size();
    ++movable;
    emit("   ", v < matrix.ntax ? "" : "Node ", node_label(v), ": ",
         counted(static_cast<long long>(own.size()), "move", "moves"), ", furthest over ",
         counted(furthest(own), "group", "groups"), "\n");
    list_places(own, most);
  }
  emit("   ", counted(static_cast<long long>(sum), "move", "moves"), " of ",
       counted(movable, "node", "nodes"), "\n");
}

void show_lists(const moves_by_node& moves, const_tree_span tree, int number) {
  std::vector<std::int64_t> counts(at(node_limit(tree, matrix.ntax)), no_value);
  std::vector<std::int64_t> distances = counts;
  for (int v = 0; at(v) < counts.size(); ++v) {
    if (v < matrix.ntax && is_absent(tree, v)) continue;
    counts[at(v)] = static_cast<std::int64_t>(moves[at(v)].size());
    distances[at(v)] = furthest(moves[at(v)]);
  }
  print_table(text_of("Moves by node of tree %i", number), counts);
  print_table("Groups that the longest move goes over", distances);
}

void draw(const moves_by_node& moves, const_tree_span tree, int number) {
  std::vector<std::string> texts(tree.size());
  for (std::size_t v = 0; v < texts.size(); ++v)
    if (!moves[v].empty())
      texts[v] = std::to_string(moves[v].size()) + "/" + std::to_string(furthest(moves[v]));
  draw_tree(tree, text_of("Moves and longest distance by node of tree %i", number), texts);
}

void deliver(const chkmoves_settings& how, const moves_by_node& moves, int number) {
  const const_tree_span tree = stored_tree(number);
  if (how.table) return show_lists(moves, tree, number);
  if (how.plot) return draw(moves, tree, number);
  report_line(tree_heading(number));
  show_nodes(moves, how.shown);
}

}  // namespace

constexpr option_table chkmoves_options =
    rows.table("chkmoves", {.unknown = "Unrecognized option for \"chkmoves\": %s"});

void chkmoves_command() {
  require_data("checking moves");
  require_trees();
  chkmoves_settings how;
  while (std::isalpha(skip_blanks_peek())) read_option(how, chkmoves_options);
  const std::vector<std::uint8_t> chosen = read_tree_list();
  check_end();
  const search_running running;
  for (int t = 0; t < store.ntrees && !interrupted(); ++t) {
    if (!chosen[at(t)]) continue;
    const moves_by_node moves = moves_of_nodes(stored_tree(t), how.search);
    if (interrupts.reason == stop_reason::time) emit(end_of_time_text());
    if (interrupted()) emit("Not all moves were looked at\n");
    deliver(how, moves, t);
  }
  if (constraints.active) emit("Moves are those that the current constraints allow\n");
}

}  // namespace zeb
