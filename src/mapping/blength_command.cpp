// blength: lengths of branches, as tables or on diagrams.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/progress.h"
#include "engine/fit/fit_rules.h"
#include "language/lexer.h"
#include "mapping/branch_lengths.h"
#include "mapping/commands.h"
#include "mapping/node_states.h"
#include "mapping/requests.h"
#include "matrix/matrix.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr int decimals_of_continuous = 3;
constexpr int most_decimals = 9;

struct length_request {
  enum class kind { least, most, collapsing, changes_in_size } of = kind::least;
  bool on_diagram = false;
  int decimals = 3;  // on diagrams
  polytomy_kind polytomies = polytomy_kind::hard;
  mapping_request chosen;
};

int read_decimals() {
  const int decimals = read_int();
  if (decimals < 0 || decimals > most_decimals)
    error_end_f("Decimals of branch lengths must be 0-%i", most_decimals);
  return decimals;
}

void check(const length_request& request) {
  using kind = length_request::kind;
  if (request.polytomies == polytomy_kind::hard) return;
  if (request.of == kind::collapsing) error_end("Cannot do \"soft\" polytomies with \"/\"");
  if (request.of == kind::changes_in_size) error_end("Cannot do \"soft\" polytomies with \">\"");
}

void read_signs(length_request& request) {
  using kind = length_request::kind;
  for (bool sign = true; sign;) {
    if (accept_char('*')) {
      request.on_diagram = true;
      if (accept_char('=')) request.decimals = read_decimals();
    } else if (accept_char('+')) {
      request.of = kind::most;
    } else if (accept_char('/')) {
      request.of = kind::collapsing;
    } else if (accept_char('>')) {
      request.of = kind::changes_in_size;
    } else if (accept_char('!')) {
      request.polytomies = polytomy_kind::soft;
    } else {
      sign = false;
    }
  }
}

length_request read_length_request() {
  length_request request;
  read_signs(request);
  check(request);
  request.chosen = read_trees_and_characters();
  expect_end();
  refuse_soft_landmarks(request.chosen.characters, request.polytomies);
  if (request.of != length_request::kind::changes_in_size) return request;
  std::erase_if(request.chosen.characters,
                [](int c) { return !matrix.characters[at(c)].is_continuous; });
  if (request.chosen.characters.empty())
    error_end("Decreases/increases can be displayed only for continuous characters");
  if (!request.on_diagram)
    warning("Decreases/increases can't be displayed as tables; will use a tree");
  return request;
}

bool any_continuous(const std::vector<int>& characters) {
  return std::any_of(characters.begin(), characters.end(), [](int c) {
    return matrix.characters[at(c)].is_continuous || is_landmark(c);
  });
}

std::string collapsing_title(int tree, const fit_rules& rules) {
  const std::string title = text_of("Tree %i, cost of branch collapsing", tree);
  if (!rules.on) return title;
  if (!rules.user.empty()) return title + " (user weighting function)";
  return title + text_of(" (under k=%.5f)", rules.concavity);
}

void show_on_diagram(const length_request& request, int tree, const std::string& title,
                     const std::vector<double>& lengths) {
  std::vector<std::string> texts(lengths.size());
  for (std::size_t v = 0; v < lengths.size(); ++v)
    if (!std::isnan(lengths[v])) texts[v] = text_of("%.*f", request.decimals, lengths[v]);
  draw_tree(stored_tree(tree), title, texts);
}

void show_table(const std::string& title, const std::vector<double>& lengths, int decimals) {
  if (decimals > 0) return print_table(title, lengths, decimals);
  std::vector<std::int64_t> whole;
  for (const double v : lengths)
    whole.push_back(std::isnan(v) ? no_value : static_cast<std::int64_t>(std::llround(v)));
  print_table(title, whole);
}

void show_lengths(const length_request& request, int tree) {
  const tree_shape shape(stored_tree(tree));
  const std::vector<int>& characters = request.chosen.characters;
  int decimals = any_continuous(characters) ? table_decimals(decimals_of_continuous) : 0;
  std::string title;
  std::vector<double> lengths;
  if (request.of == length_request::kind::collapsing) {
    const fit_rules rules = current_fit_rules();
    lengths = costs_of_collapsing(shape, characters, rules);
    title = collapsing_title(tree, rules);
    if (rules.on) decimals = table_decimals();
  } else {
    length_ranges ranges = branch_lengths(shape, characters, request.polytomies);
    const bool most = request.of == length_request::kind::most;
    lengths = std::move(most ? ranges.most : ranges.least);
    title = text_of(request.on_diagram ? "Tree %i %s branch lengths" : "Tree %i, %s branch lengths",
                    tree, most ? "max." : "min.");
  }
  if (request.on_diagram) return show_on_diagram(request, tree, title, lengths);
  show_table(title, lengths, decimals);
}

/// The larger of the two, both where they are equal; with the character where there are several.
void show_changes_in_size(const length_request& request, int tree) {
  const tree_shape shape(stored_tree(tree));
  const std::vector<largest_changes> changes = changes_in_size(shape, request.chosen.characters);
  const bool several = request.chosen.characters.size() > 1;
  const auto text = [&](char sign, std::int64_t size, int character) {
    const std::string number =
        text_of("%c%.*f", sign, request.decimals, static_cast<double>(size) / 1000);
    return several ? number + text_of(" (%i)", character) : number;
  };
  std::vector<std::string> texts(shape.nodes());
  for (int v = 0; at(v) < texts.size(); ++v) {
    const largest_changes& one = changes[at(v)];
    if (one.rise > 0 && one.rise >= one.fall)
      texts[at(v)] = text('+', one.rise, one.character_of_rise);
    if (one.fall > 0 && one.fall >= one.rise)
      texts[at(v)] +=
          (texts[at(v)].empty() ? "" : "/") + text('-', one.fall, one.character_of_fall);
  }
  draw_tree(stored_tree(tree), text_of("Tree %i, largest increases/decreases", tree), texts);
}

}  // namespace

void blength_command() {
  require_data_and_trees("calculating branch lengths");
  const length_request request = read_length_request();
  const std::vector<int>& trees = request.chosen.trees;
  if (request.polytomies == polytomy_kind::soft) warn_of_large_polytomies(request.chosen);
  for (std::size_t i = 0; i < trees.size(); ++i) {
    show_progress("Optimizing", static_cast<double>(i), static_cast<double>(trees.size()));
    check_interrupt();
    if (request.of == length_request::kind::changes_in_size)
      show_changes_in_size(request, trees[i]);
    else
      show_lengths(request, trees[i]);
  }
  clear_progress();
}

}  // namespace zeb
