// Expression functions of landmark characters.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "landmarks/landmark_scores.h"
#include "landmarks/landmark_settings.h"
#include "landmarks/point_grid.h"
#include "landmarks/point_records.h"
#include "landmarks/search_settings.h"
#include "language/lexer.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "search/search_results.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

void require_landmarks() {
  if (!matrix.present) error_end("No landmark data read!");
  if (landmark_configurations().empty()) error_end("No landmarks were read!");
}

const landmark_configuration& configuration_argument() {
  require_landmarks();
  const int character = character_argument();
  const landmark_configuration* const found = configuration_of(character);
  if (!found) error_end_f("Char. %i is not a landmark configuration!", character);
  return *found;
}

int landmark_argument(const landmark_configuration& configuration) {
  const int landmark = whole_argument();
  if (landmark < 0 || landmark >= configuration.points)
    error_end_f("No landmark %i in character %i", landmark, configuration.character);
  return landmark;
}

const landmark_configuration& one_configuration() {
  open_brackets();
  const landmark_configuration& found = configuration_argument();
  close_brackets();
  return found;
}

std::vector<std::uint8_t> mark_of(const landmark_configuration& configuration) {
  std::vector<std::uint8_t> marks(at(matrix.nchar), 0);
  marks[at(configuration.character)] = 1;
  return marks;
}

double dimensions() { return one_configuration().dimensions; }
double points() { return one_configuration().points; }

/// Of the last search, in per cent as the margin.
double error_of_estimates() {
  const error_margin& margin = landmark_searching.margin;
  if (!brackets_follow()) return 100 * margin.margins[at(margin.stages - 1)];
  const double which = bracketed_whole_values(1, 1)[0];
  if (!(which >= 0 && which < 5)) error_end("Landmark error margin is 0-4");
  const estimate_errors& errors = last_search.landmark_errors;
  const double values[] = {errors.mean(), errors.deviation(), errors.least, errors.most,
                           static_cast<double>(errors.cases) / 100};
  return 100 * values[static_cast<std::size_t>(which)];
}

/// "[C L]"; without L the first landmark.
template <class function>
double value_of_point(function value) {
  open_brackets();
  const landmark_configuration& configuration = configuration_argument();
  const int landmark = skip_blanks_peek() == ']' ? 0 : landmark_argument(configuration);
  close_brackets();
  if (configuration.points == 0) return 0;
  return value(gather_points(mark_of(configuration)).points[at(landmark)]);
}

double factor() {
  return value_of_point([](const point_record& p) { return p.factor; });
}
double weight() {
  return value_of_point([](const point_record& p) { return p.weight; });
}
double largest_distance() {
  return value_of_point([](const point_record& p) { return p.span; });
}

/// "[T C]"; without C the sum over all that are active, with their weights.
double score() {
  if (landmark_configurations().empty())
    error_end("Cannot calculate lmscore for datasets with no landmarks!");
  open_brackets();
  const int tree = tree_argument();
  const bool one = skip_blanks_peek() != ']';
  std::vector<std::uint8_t> marks(at(matrix.nchar), 0);
  for (const landmark_configuration& all : landmark_configurations())
    marks[at(all.character)] = matrix.characters[at(all.character)].active;
  if (one) marks = mark_of(configuration_argument());
  close_brackets();
  landmark_scorer scorer(marks);
  scorer.optimise(stored_tree(tree));
  return one ? scorer.score_of_configuration(0) : scorer.score();
}

struct placed_point {
  landmark_point position;
  landmark_configuration configuration;
  int landmark = 0;
};
/// "[C L N T]": landmark L of character C in node N of tree T; without T the first tree, which a
/// terminal doesn't need.
placed_point position_argument() {
  open_brackets();
  const landmark_configuration& configuration = configuration_argument();
  const int landmark = landmark_argument(configuration);
  const int node = whole_argument();
  const int tree = skip_blanks_peek() == ']' ? 0 : tree_argument();
  close_brackets();
  placed_point found{missing_point, configuration, landmark};
  if (node >= 0 && node < matrix.ntax) {
    found.position = points_of(configuration, node)[at(landmark)];
    return found;
  }
  require_trees();
  check_tree_number(tree);
  check_node_number(tree, node);
  found.position =
      positions_of_landmark(stored_tree(tree), configuration.character, landmark)[at(node)];
  return found;
}

template <double landmark_point::*axis>
double coordinate() {
  return position_argument().position.*axis;
}

/// The point of the grid that is nearest, from 0; -1 for a missing point.
template <double landmark_point::*axis>
double cell_of_grid() {
  const placed_point found = position_argument();
  if (is_missing(found.position)) return -1;
  const auto records = gather_points(mark_of(found.configuration)).points;
  const point_record& record = records[at(found.landmark)];
  const point_grid grid = grid_over(record.least, record.most, lmark.settings.cells);
  const double spacing = grid.spacing.*axis;
  if (!(spacing > 0)) return 0;
  const double number = std::round((found.position.*axis - grid.origin.*axis) / spacing);
  return std::clamp(number, 0.0, static_cast<double>(lmark.settings.cells - 1));
}

// clang-format off
constexpr expression_function rows[] = {
    {"lmdims", "[C]", "dimensions of landmark character C", dimensions},
    {"lmerror", "[N]", "error of the last landmark search: 0 mean, 1 standard deviation, 2 minimum, 3 maximum, 4 cases; without N (optional), 100 times the current margin", error_of_estimates},
    {"lmfactor", "[C L]", "factor of landmark L (0 without one) of character C", factor},
    {"lmmaxdist", "[C L]", "largest distance between two taxa for landmark L of character C", largest_distance},
    {"lmnpoints", "[C]", "landmarks of character C", points},
    {"lmscore", "[T C]", "score of landmark character C on tree T, with factors and weights of landmarks; without C (optional) of all that are active, times their weights", score},
    {"lmwt", "[C L]", "weight of landmark L (0 without one) of character C", weight},
    {"lmxcell", "[C L N T]", "cell of the grid where landmark L of character C lies in node N of tree T; lmycell, lmzcell the same along y, z", cell_of_grid<&landmark_point::x>},
    {"lmxcoord", "[C L N T]", "coordinate x of landmark L of character C in node N of tree T; lmycoord, lmzcoord the others", coordinate<&landmark_point::x>},
    {"lmycell", "[C L N T]", "cell of the grid along y", cell_of_grid<&landmark_point::y>, function_list::unlisted},
    {"lmycoord", "[C L N T]", "coordinate y", coordinate<&landmark_point::y>, function_list::unlisted},
    {"lmzcell", "[C L N T]", "cell of the grid along z", cell_of_grid<&landmark_point::z>, function_list::unlisted},
    {"lmzcoord", "[C L N T]", "coordinate z", coordinate<&landmark_point::z>, function_list::unlisted},
};
// clang-format on

}  // namespace

const std::span<const expression_function> landmark_functions = rows;

}  // namespace zeb
