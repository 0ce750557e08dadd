// sprdiff: how many SPR moves lead from tree to tree.
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/random.h"
#include "console/output.h"
#include "distances/commands.h"
#include "distances/compared_request.h"
#include "distances/kept_trees.h"
#include "distances/moves/spr_distance.h"
#include "distances/paced_progress.h"
#include "distances/tree_pair.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

struct sprdiff_request {
  forest_effort effort;
  bool similarity = false;
  bool save = false;
  matrix_target target;
  compared_trees_request trees;
};

constexpr auto effort = &sprdiff_request::effort;
constexpr auto trees = &sprdiff_request::trees;

constexpr command_options rows = {
    choice<&sprdiff_request::similarity>("similarity", 1)
        .help("of more than two trees, similarities instead of numbers of moves"),
    choice<trees, &compared_trees_request::unrooted>("unrooted", 1)
        .help("trees without roots: what moves may be the part that has the root"),
    number<effort, &forest_effort::replications>("replications", {1, 1e6},
                                                 "Give number of random runs (1-1000000)")
        .help("random runs for the bound from above"),
    number<effort, &forest_effort::steps>("steps", {0, 1e9},
                                          "Give number of steps of the exact search")
        .help("of the exact search for each number of moves and each part of the trees; 0: no "
              "search"),
    phylip_option<sprdiff_request>,
    csv_option<sprdiff_request>,
    array_option<sprdiff_request>,
    choice<&sprdiff_request::save>("*", 1).help(
        "keep the trees after each move from one of two trees to the other"),
};

sprdiff_request read_request() {
  require_data("counting moves between trees");
  sprdiff_request request;
  read_compared_trees(request, sprdiff_options);
  if (request.save && request.trees.count() != 2) error_end("Option \"*\" is for two trees");
  return request;
}

// ---- two trees ----

/// The first names of a clade, and how many taxa it has where there are more.
std::string clade_text(const tree_pair& pair, const std::vector<int>& terminals) {
  constexpr int most_names = 6;
  const taxon_set taxa = pair.stored_taxa(terminals);
  if (taxa.count() == pair.taxa.count() - 1) return " all others";
  std::string text;
  int shown = 0;
  for (const int taxon : taxa)
    if (shown++ < most_names) text += " " + taxon_label(taxon);
  if (shown > most_names) text += text_of(" ... (%i taxa)", shown);
  return text;
}

void save_path(const tree_pair& pair, const std::vector<clade_move>& moves) {
  const std::vector<int> taxa = members_of(pair.taxa);
  std::vector<std::vector<tree_node>> after_moves;
  for (const clade_move& move : moves)
    after_moves.push_back(with_taxa(move.tree, taxa, matrix.ntax));
  keep_trees(after_moves, "SPR_moves", "Trees after each move");
}

void tell_bounds(const spr_distance& distance, int terminals, bool unrooted) {
  if (distance.is_exact())
    emit("SPR moves: ", distance.at_most, " (exact)\n");
  else
    emit("SPR moves: between ", distance.at_least, " and ", distance.at_most, " (not exact)\n");
  emit("Similarity: ", distance.is_exact() ? "" : "at least ",
       fraction_text(spr_similarity(distance.at_most, terminals, unrooted)), "\n");
  if (distance.resolved && !distance.is_exact())
    emit("Note: polytomies were resolved so that the trees are alike; other ways may need less\n");
}

void compare_two(const sprdiff_request& request, random_generator& generator) {
  const tree_pair pair = pair_of(request.trees);
  const int n = pair.taxa.count();
  paced_progress progress("SPR moves");
  const spr_distance distance =
      count_spr_moves(pair.cut(pair.first), pair.cut(pair.second), request.trees.unrooted,
                      request.effort, generator, [&] { progress.poll(0, 1); });
  emit("Trees ", pair.first, " and ", pair.second, ", ", n, " shared taxa",
       request.trees.unrooted ? ", without roots" : "", ":\n");
  tell_bounds(distance, n, request.trees.unrooted);
  const std::vector<clade_move> moves = distance.moves(n);
  for (std::size_t i = 0; i < moves.size(); ++i)
    emit(text_of("%3i:", static_cast<int>(i) + 1), clade_text(pair, moves[i].clade),
         "  becomes sister of ", clade_text(pair, moves[i].sister).substr(1), "\n");
  newline();
  if (request.save) save_path(pair, moves);
}

// ---- many trees ----

/// Fills the table, and returns how many of the pairs have an upper bound only.
long count_all(const sprdiff_request& request, random_generator& generator, tree_matrix& table) {
  const std::size_t columns = table.columns.size();
  paced_progress progress("SPR moves");
  long bounds = 0;
  table.values.assign(table.rows.size() * columns, request.similarity ? 1 : 0);
  for (std::size_t r = 0; r < table.rows.size(); ++r)
    for (std::size_t c = 0; c < columns; ++c) {
      double& value = table.values[r * columns + c];
      const auto poll = [&] {
        progress.poll(static_cast<double>(r * columns + c),
                      static_cast<double>(table.values.size()));
      };
      if (table.is_square && c < r) {
        value = table.values[c * columns + r];
      } else if (table.rows[r] != table.columns[c]) {
        poll();
        const tree_pair pair = pair_of(table.rows[r], table.columns[c], request.trees.excluded);
        const spr_distance distance =
            count_spr_moves(pair.cut(pair.first), pair.cut(pair.second), request.trees.unrooted,
                            request.effort, generator, poll);
        bounds += !distance.is_exact();
        value = request.similarity
                    ? spr_similarity(distance.at_most, pair.taxa.count(), request.trees.unrooted)
                    : distance.at_most;
      }
    }
  return bounds;
}

void compare_many(const sprdiff_request& request, random_generator& generator) {
  tree_matrix table;
  table.title = request.similarity ? "Similarity by SPR moves" : "SPR moves";
  if (request.trees.unrooted) table.title += ", without roots";
  table.rows = request.trees.rows;
  table.columns = request.trees.column_trees();
  table.is_square = request.trees.is_square();
  table.decimals = request.similarity ? -1 : 0;
  const long bounds = count_all(request, generator, table);
  report_matrix(table, request.target);
  if (bounds == 0)
    emit("All numbers of moves are exact\n");
  else
    emit("Note: for ", bounds, bounds == 1 ? " pair" : " pairs",
         " the number of moves is the fewest found, not exact\n");
}

}  // namespace

constexpr option_table sprdiff_options =
    rows.table("sprdiff", {.unknown = "Unidentified string in sprdiff options: %s"});

void sprdiff_command() {
  const sprdiff_request request = read_request();
  expect_end();
  random_generator generator;
  seed_generator(generator);
  const bool two = request.trees.count() == 2;
  if (two && !request.target.is_given() && !request.similarity)
    compare_two(request, generator);
  else
    compare_many(request, generator);
}

}  // namespace zeb
