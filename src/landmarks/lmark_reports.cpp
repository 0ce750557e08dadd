#include "landmarks/lmark_reports.h"

#include <algorithm>
#include <span>

#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "landmarks/landmark_scores.h"
#include "landmarks/point_records.h"
#include "landmarks/search_settings.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

const landmark_configuration& configuration(int number) {
  return landmark_configurations()[at(number)];
}

std::vector<std::uint8_t> marks_of(const landmark_lists& lists) {
  std::vector<std::uint8_t> marks(at(matrix.nchar), 0);
  for (const int i : lists.configurations) marks[at(configuration(i).character)] = 1;
  return marks;
}

std::string coordinate_text(double value) {
  return text_of("%.*f", lmark.settings.decimals, value);
}

int taxa_with(const landmark_configuration& one) {
  int count = 0;
  for (int t = 0; t < matrix.ntax; ++t) count += !all_missing(points_of(one, t));
  return count;
}

std::string number_text(double value) { return text_of("%.*f", 5, value); }

void print_rows(const std::string& title, const std::vector<std::string>& rows,
                const std::vector<std::string>& columns, std::vector<std::string> cells) {
  matrix_table table;
  table.title = title;
  table.row_labels = rows;
  table.column_labels = columns;
  table.cells = std::move(cells);
  print_table(table);
}

/// A label for each internal node after those of the taxa: numbers.
std::string node_label(int node) {
  return node < matrix.ntax ? taxon_label(node) : std::to_string(node);
}

std::string ties_text(const tie_order& order) {
  std::string text;
  for (const char axis : order) {
    if (axis == 0) break;
    text += axis >= 'x' ? '+' : '-';
    text += static_cast<char>(axis | 32);
  }
  return text;
}

void show_search_settings() {
  const landmark_search_settings& set = landmark_searching;
  emit(error_margin_in_words(set.margin), "\n");
  if (set.refine_depth == 0 || set.refine_rounds == 0)
    emit("Not doing fermat incremental recalculations\n");
  else
    emit(text_of("Fermat incremental recalculations of %i branches, %i rounds\n", set.refine_depth,
                 set.refine_rounds));
  emit(text_of("Threads: %i%s\n", landmark_threads(), set.threads_stay ? ", always up" : ""));
  if (!set.quick_wagner) emit("Wagner trees recalculate each point\n");
}

/// The labels of the landmarks listed of the `k`th configuration listed; `add_cells` is called for
/// each, with its place in the data.
template <class adder>
std::vector<std::string> rows_of_landmarks(const landmark_lists& lists, const landmark_points& data,
                                           std::size_t k, adder add_cells) {
  std::vector<std::string> rows;
  for (int i = data.configurations[k].first; i < data.configurations[k].end; ++i) {
    const int landmark = data.points[at(i)].landmark;
    if (!lists.landmarks[at(landmark)]) continue;
    rows.push_back(landmark_label(lists.configurations[k], landmark));
    add_cells(i);
  }
  return rows;
}

}  // namespace

std::string landmark_label(int number, int landmark) {
  const auto character = at(configuration(number).character);
  if (character < matrix.char_names.size()) {
    const auto& names = matrix.char_names[character].states;
    if (at(landmark) < names.size() && !names[at(landmark)].empty()) return names[at(landmark)];
  }
  return text_of("Land. %i", landmark);
}

std::string position_text(const landmark_point& point, int dimensions) {
  if (is_missing(point)) return "?";
  std::string text = coordinate_text(point.x) + "," + coordinate_text(point.y);
  if (dimensions == 3) text += "," + coordinate_text(point.z);
  return text;
}

void show_landmark_counts() {
  for (const landmark_configuration& one : landmark_configurations()) {
    emit(character_name(one.character), ": ", counted(one.points, "landmark", "landmarks"), "\n");
  }
}

void show_dimensions(const landmark_lists& lists, int dimensions) {
  for (const int i : lists.configurations) {
    const landmark_configuration& one = configuration(i);
    if (dimensions != 0 && one.dimensions != dimensions) continue;
    emit(character_name(one.character), text_of(": %iD\n", one.dimensions));
  }
}

void list_landmarks(const landmark_lists& lists) {
  const landmark_points data = gather_points(marks_of(lists));
  for (std::size_t k = 0; k < data.configurations.size(); ++k) {
    const int number = lists.configurations[k];
    const landmark_configuration& one = configuration(number);
    std::vector<std::string> cells;
    const std::vector<std::string> rows = rows_of_landmarks(lists, data, k, [&](int i) {
      const point_record& p = data.points[at(i)];
      cells.push_back(std::to_string(p.counted.size()));
      for (const double value : {p.span, p.factor, p.weight}) cells.push_back(number_text(value));
    });
    print_rows(
        character_name(one.character) + text_of(" (%iD, in %s)", one.dimensions,
                                                counted(taxa_with(one), "taxon", "taxa").c_str()),
        rows, {"Taxa", "Span", "Factor", "Weight"}, std::move(cells));
  }
}

void show_choices(const landmark_lists& lists, std::string_view title,
                  double (*value)(const point_record& point)) {
  const landmark_points data = gather_points(marks_of(lists));
  for (std::size_t k = 0; k < data.configurations.size(); ++k) {
    const int number = lists.configurations[k];
    std::vector<std::string> cells;
    const std::vector<std::string> rows = rows_of_landmarks(
        lists, data, k, [&](int i) { cells.push_back(number_text(value(data.points[at(i)]))); });
    print_rows(character_name(configuration(number).character), rows, {std::string(title)},
               std::move(cells));
  }
}

void show_landmark_scores(const landmark_lists& lists) {
  landmark_scorer scorer(marks_of(lists));
  const auto& data = scorer.data();
  for (const int tree : lists.trees) {
    scorer.optimise(stored_tree(tree));
    for (std::size_t k = 0; k < data.configurations.size(); ++k) {
      const int number = lists.configurations[k];
      std::vector<std::string> cells;
      const std::vector<std::string> rows = rows_of_landmarks(lists, data, k, [&](int i) {
        cells.push_back(number_text(scorer.lengths()[at(i)]));
        cells.push_back(number_text(scorer.lengths()[at(i)] * data.points[at(i)].multiplier()));
      });
      print_rows(text_of("Tree %i, %s, score ", tree,
                         character_name(configuration(number).character).c_str()) +
                     number_text(scorer.score_of_configuration(k)),
                 rows, {"Length", "Score"}, std::move(cells));
    }
  }
}

void show_positions(const landmark_lists& lists) {
  for (const int tree : lists.trees) {
    for (const int number : lists.configurations) {
      const landmark_configuration& one = configuration(number);
      const auto positions = positions_of_configuration(stored_tree(tree), one.character);
      std::vector<std::string> rows;
      std::vector<std::string> columns;
      std::vector<std::string> cells;
      for (int l = 0; l < one.points; ++l) columns.push_back(landmark_label(number, l));
      const int nodes = node_limit(stored_tree(tree), matrix.ntax);
      for (int v = 0; v < nodes; ++v) {
        if (v < matrix.ntax && is_absent(stored_tree(tree), v)) continue;
        rows.push_back(node_label(v));
        for (const auto& of_landmark : positions)
          cells.push_back(position_text(of_landmark[at(v)], one.dimensions));
      }
      print_rows(text_of("Tree %i, %s", tree, character_name(one.character).c_str()), rows, columns,
                 std::move(cells));
    }
  }
}

void show_landmark_settings() {
  const landmark_settings& set = lmark.settings;
  const auto line = [](const std::string& text) { emit("     * ", text, "\n"); };
  emit("Settings of landmarks:\n");
  if (!set.use_grid) {
    line("positions of terminals only (no grid)");
  } else {
    line(text_of("grid of %i cells along each axis", set.cells) +
         (set.use_terminals ? ", and positions of terminals" : ""));
    line(set.nest_rounds > 0
             ? text_of("nested %i times, window of %g cells", set.nest_rounds, set.nest_window)
             : std::string("not nested"));
    line(set.shakes > 0 ? text_of("shaken %i times", set.shakes) : std::string("not shaken"));
  }
  line(set.iterate ? text_of("Fermat points iterated up to %i times, cut-off %g",
                             set.max_iterations, set.cut)
                   : std::string("Fermat points not iterated"));
  if (set.precision > 0) line(text_of("precision %g", set.precision));
  if (set.shrink) line("frames leave out outliers");
  if (set.skip) line("candidates that aren't needed are passed over");
  if (set.low_memory || lmark.low_memory_forced) line("low-mem algorithms");
  line(set.in_scale ? "automatic factors by landmark" : "automatic factors by configuration");
  if (set.sample_configurations) line("whole configurations are resampled");
  if (set.ties[0]) line("order of candidates of the same cost: " + ties_text(set.ties));
  show_search_settings();
}

}  // namespace zeb
