// Scores of the trees in memory: `length`, `scores`, `cscores`, `fit`, `chomo`.
#include <algorithm>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/progress.h"
#include "engine/fit/fits.h"
#include "engine/plain/plain_optimisation.h"
#include "engine/plain/tree_scores.h"
#include "engine/search_data.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "mapping/commands.h"
#include "matrix/character_steps.h"
#include "matrix/matrix.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// "[!] trees [/ characters]"; "*" in place of "!" where fits can be shown.
struct score_request {
  polytomy_kind polytomies = polytomy_kind::hard;
  bool maximised = false;
  std::vector<std::uint8_t> trees;
  std::vector<std::uint8_t> characters;
};

/// Characters that are listed count even if they are inactive; without a list, the active ones do.
void read_characters(score_request& request) {
  if (accept_char('/')) {
    request.characters.assign(at(matrix.nchar), 0);
    if (!read_list(list_plain, 0, matrix.nchar, "character", request.characters))
      error_end("Expected a list of characters");
    return;
  }
  request.characters = scored_characters();
  if (std::count(request.characters.begin(), request.characters.end(), 1) == 0)
    warning("No characters are active.  Sure you want to calculate \"scores\"?");
}

score_request read_request(const char* doing, bool may_maximise = false) {
  require_data(doing);
  require_trees();
  score_request request;
  bool soft = accept_char('!');
  request.maximised = may_maximise && accept_char('*');
  if (request.maximised) soft = soft || skip_blanks_peek() == '!';
  if (soft && request.maximised) error_end("Cannot do \"soft\" polytomies with \"*\"");
  if (soft) request.polytomies = polytomy_kind::soft;
  request.trees.assign(at(store.ntrees), 0);
  constexpr unsigned flags = list_slash_ends | list_in_tree_buffer | list_one_tree;
  if (!read_list(flags, 0, store.ntrees, "tree", request.trees))
    request.trees.assign(at(store.ntrees), 1);
  read_characters(request);
  return request;
}

std::string score_text(double score, int decimals) { return text_of("%.*f", decimals, score); }

constexpr int decimals_of_continuous = 3;

/// Of scores in tables; whole numbers have none.
int decimals_in_tables(bool are_fits, bool has_continuous) {
  if (are_fits) return table_decimals();
  return has_continuous ? table_decimals(decimals_of_continuous) : 0;
}

/// Calls `visit(tree number)` with the optimiser run on each chosen tree.
template <class function>
void for_each_tree(const score_request& request, plain_optimiser& optimiser, function visit) {
  for (int t = 0; t < store.ntrees; ++t) {
    if (!request.trees[at(t)]) continue;
    show_progress("Optimizing", t, store.ntrees);
    check_interrupt();
    optimiser.optimise(stored_tree(t), request.polytomies);
    visit(t);
  }
  clear_progress();
}

/// One table of what `score(optimiser)` says of each chosen tree.
template <class function>
void show_table(const score_request& request, const char* title, function score, bool are_fits) {
  plain_optimiser optimiser(request.characters);
  std::vector<double> scores(at(store.ntrees), no_fraction);
  for_each_tree(request, optimiser, [&](int t) { scores[at(t)] = score(optimiser); });
  print_table(title, scores, decimals_in_tables(are_fits, optimiser.has_continuous()));
}

void show_fits(const score_request& request, fit_form form) {
  const fit_rules rules = current_fit_rules();
  if (!rules.user.empty()) error_end("With user weighting functions, cannot do fits");
  show_table(
      request, form == fit_form::gain ? "Tree fits (to be maximised)" : "Tree fits",
      [&](const plain_optimiser& o) { return tree_fit(o, rules, request.characters, form); }, true);
}

/// Steps of one character on a tree beside the least and most that any tree has; weighted.
struct homoplasy {
  double steps = 0;
  double least = 0;
  double most = 0;

  void add(const homoplasy& other) {
    steps += other.steps;
    least += other.least;
    most += other.most;
  }
  /// Consistency index (Kluge and Farris 1969) and retention index (Farris 1989); no value where
  /// they aren't defined.
  double consistency() const { return steps > 0 ? least / steps : no_fraction; }
  double retention() const { return most > least ? (most - steps) / (most - least) : no_fraction; }
};

homoplasy homoplasy_of(const plain_optimiser& optimiser, int character, double weight) {
  const length_range range = lengths_over_active_taxa(character);
  return {optimiser.length(character) * weight, range.least * weight, range.most * weight};
}

std::string index_text(double value) { return value == value ? text_of("%.3f", value) : "-"; }

void show_homoplasy(const score_request& request, const plain_optimiser& optimiser, int tree) {
  const std::vector<std::string> columns = {"Steps", "Min", "Max", "Extra", "CI", "RI"};
  homoplasy total;
  std::vector<std::string> rows;
  matrix_table table;
  table.cells.reserve(columns.size() * at(matrix.nchar));
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!request.characters[at(c)]) continue;
    const homoplasy one = homoplasy_of(optimiser, c, 1);
    total.add(homoplasy_of(optimiser, c, matrix.characters[at(c)].weight));
    rows.push_back(character_label(c));
    const bool whole = !(matrix.characters[at(c)].type & (continuous_data | landmark_data));
    const int decimals = decimals_in_tables(false, !whole);
    for (const double value : {one.steps, one.least, one.most, one.steps - one.least})
      table.cells.push_back(score_text(value, decimals));
    table.cells.push_back(index_text(one.consistency()));
    table.cells.push_back(index_text(one.retention()));
  }
  const int decimals = optimiser.has_continuous() ? decimals_of_continuous : 0;
  const std::string title =
      text_of("Tree %i, total length ", tree) + score_text(total.steps, decimals) +
      ", CI = " + index_text(total.consistency()) + ", RI = " + index_text(total.retention());
  table.title = title;
  table.row_labels = rows;
  table.column_labels = columns;
  print_table(table);
}

}  // namespace

/// Always in steps.
void length_command() {
  const score_request request = read_request("showing tree lengths");
  show_table(
      request, "Tree lengths", [](const plain_optimiser& o) { return o.score(); }, false);
}

void scores_command() {
  const score_request request = read_request("showing tree scores", true);
  if (request.maximised) return show_fits(request, fit_form::gain);
  const fit_rules rules = current_fit_rules();
  show_table(
      request, "Tree scores",
      [&](const plain_optimiser& o) { return tree_score(o, rules, request.characters); }, rules.on);
}

void cscores_command() {
  const score_request request = read_request("showing character scores");
  const fit_rules rules = current_fit_rules();
  plain_optimiser optimiser(request.characters);
  for_each_tree(request, optimiser, [&](int t) {
    std::vector<double> scores(at(matrix.nchar), 0);
    if (rules.on) scores = fit_by_character(optimiser, rules, request.characters);
    for (int c = 0; c < matrix.nchar; ++c) {
      if (!request.characters[at(c)])
        scores[at(c)] = no_fraction;
      else if (!rules.on)
        scores[at(c)] = homoplasy_of(optimiser, c, matrix.characters[at(c)].weight).steps;
    }
    const double total = tree_score(optimiser, rules, request.characters);
    const int decimals = score_decimals(optimiser.has_continuous());
    print_table(rules.on ? text_of("Tree %i, total adjusted homoplasy %f", t, total)
                         : text_of("Tree %i, total length %.*f", t, decimals, total),
                scores, decimals_in_tables(rules.on, optimiser.has_continuous()));
  });
}

void fit_command() {
  const score_request request = read_request("showing fits", true);
  show_fits(request, request.maximised ? fit_form::gain : fit_form::cost);
}

void chomo_command() {
  const score_request request = read_request("showing homoplasy");
  plain_optimiser optimiser(request.characters);
  for_each_tree(request, optimiser, [&](int t) { show_homoplasy(request, optimiser, t); });
}

}  // namespace zeb
