// Scores of the trees in memory: `length`, `scores`, `cscores`, `fit`, `chomo`.
#include <string>
#include <vector>

#include "engine/commands.h"
#include "engine/fits.h"
#include "engine/plain_optimisation.h"
#include "engine/search_data.h"
#include "matrix/matrix.h"
#include "shell/errors.h"
#include "shell/input.h"
#include "shell/interpreter.h"
#include "shell/lexer.h"
#include "shell/lists.h"
#include "shell/output.h"
#include "trees/tables.h"

namespace zeb {
namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

/// "[!] trees [/ characters]".
struct score_request {
  polytomy_kind polytomies = polytomy_kind::hard;
  std::vector<std::uint8_t> trees;
  std::vector<std::uint8_t> characters;
};

/// Characters that are listed count even if they are inactive; without a list, the active ones do.
score_request read_request(const char* doing) {
  require_data(doing);
  require_trees();
  score_request request;
  if (accept_char('!')) request.polytomies = polytomy_kind::soft;
  request.trees.assign(at(store.ntrees), 0);
  if (!read_list(list_slash_ends | list_in_tree_buffer, 0, store.ntrees, "tree", request.trees))
    request.trees.assign(at(store.ntrees), 1);
  request.characters = scored_characters();
  if (!accept_char('/')) return request;
  std::vector<std::uint8_t> listed(at(matrix.nchar), 0);
  if (!read_list(list_plain, 0, matrix.nchar, "character", listed))
    error_end("Expected a list of characters");
  request.characters = listed;
  return request;
}

std::string score_text(double score, bool fractional) {
  return fractional ? text_of("%.3f", score) : text_of("%.0f", score);
}

/// One list, whole numbers where all values are.
void print_values(const std::string& title, const std::vector<double>& values, bool fractional) {
  if (fractional) return print_table(title, values, 3);
  std::vector<std::int64_t> whole;
  for (const double v : values) whole.push_back(v == v ? static_cast<std::int64_t>(v) : no_value);
  print_table(title, whole);
}

/// Calls `visit(tree number)` with the optimiser run on each chosen tree.
template <class function>
void for_each_tree(const score_request& request, plain_optimiser& optimiser, function visit) {
  for (int t = 0; t < store.ntrees; ++t) {
    if (!request.trees[at(t)]) continue;
    show_progress("Optimizing", t, store.ntrees);
    optimiser.optimise(stored_tree(t), request.polytomies, false);
    visit(t);
  }
  clear_progress();
}

/// Fits have five decimals, whole or not.
void show_fits() {
  require_data("showing fits");
  require_trees();
  fit_form form = fit_form::cost;
  bool soft = accept_char('!');
  if (accept_char('*')) form = fit_form::gain;
  soft = soft || skip_blanks_peek() == '!';
  if (soft && form == fit_form::gain) error_end("Cannot do \"soft\" polytomies with \"*\"");
  score_request request = read_request("showing fits");
  if (soft) request.polytomies = polytomy_kind::soft;
  plain_optimiser optimiser(request.characters);
  std::vector<double> fits(at(store.ntrees), no_fraction);
  for_each_tree(request, optimiser,
                [&](int t) { fits[at(t)] = tree_fit(optimiser, request.characters, form); });
  print_table(form == fit_form::gain ? "Tree fits (to be maximised)" : "Tree fits", fits, 5);
}

void show_scores(const char* doing, const char* title) {
  const score_request request = read_request(doing);
  plain_optimiser optimiser(request.characters);
  std::vector<double> scores(at(store.ntrees), no_fraction);
  for_each_tree(request, optimiser, [&](int t) { scores[at(t)] = optimiser.score(); });
  print_values(title, scores, optimiser.has_continuous());
}

double unit_of(int character) {
  return matrix.characters[at(character)].is_continuous ? 0.001 : 1.0;
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
  const double unit = unit_of(character) * weight;
  return {static_cast<double>(optimiser.steps(character)) * unit, minimum_steps(character) * unit,
          maximum_steps(character) * unit};
}

std::string index_text(double value) { return value == value ? text_of("%.3f", value) : "-"; }

void show_homoplasy(const score_request& request, const plain_optimiser& optimiser, int tree) {
  homoplasy total;
  std::vector<std::string> rows;
  matrix_table table;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!request.characters[at(c)]) continue;
    const homoplasy one = homoplasy_of(optimiser, c, 1);
    total.add(homoplasy_of(optimiser, c, matrix.characters[at(c)].weight));
    rows.push_back(character_label(c));
    const bool fractional = matrix.characters[at(c)].is_continuous != 0;
    for (const double value : {one.steps, one.least, one.most, one.steps - one.least})
      table.cells.push_back(score_text(value, fractional));
    table.cells.push_back(index_text(one.consistency()));
    table.cells.push_back(index_text(one.retention()));
  }
  const std::vector<std::string> columns = {"Steps", "Min", "Max", "Extra", "CI", "RI"};
  const std::string title = text_of("Tree %i, total length ", tree) +
                            score_text(total.steps, optimiser.has_continuous()) +
                            ", CI = " + index_text(total.consistency()) +
                            ", RI = " + index_text(total.retention());
  table.title = title;
  table.row_labels = rows;
  table.column_labels = columns;
  printers.matrix(table);
}

}  // namespace

void length_command() { show_scores("showing tree lengths", "Tree lengths"); }

void scores_command() {
  if (skip_blanks_peek() == '*')
    error_end("The fit to be maximised needs implied weights, which are not available yet");
  show_scores("showing tree scores", "Tree scores");
}

void cscores_command() {
  const score_request request = read_request("showing character scores");
  plain_optimiser optimiser(request.characters);
  for_each_tree(request, optimiser, [&](int t) {
    const bool fractional = optimiser.has_continuous();
    std::vector<double> scores(at(matrix.nchar), no_fraction);
    for (int c = 0; c < matrix.nchar; ++c)
      if (request.characters[at(c)])
        scores[at(c)] =
            static_cast<double>(optimiser.steps(c)) * matrix.characters[at(c)].weight * unit_of(c);
    print_values(text_of("Tree %i, total length ", t) + score_text(optimiser.score(), fractional),
                 scores, fractional);
  });
}

void fit_command() { show_fits(); }

void chomo_command() {
  const score_request request = read_request("showing homoplasy");
  plain_optimiser optimiser(request.characters);
  for_each_tree(request, optimiser, [&](int t) { show_homoplasy(request, optimiser, t); });
}

}  // namespace zeb
