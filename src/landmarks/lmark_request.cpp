#include "landmarks/lmark_request.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "console/output.h"
#include "console/progress.h"
#include "landmarks/hooks.h"
#include "landmarks/landmark_lists.h"
#include "landmarks/landmark_scores.h"
#include "landmarks/lmark_reports.h"
#include "landmarks/point_minima.h"
#include "landmarks/point_search.h"
#include "language/lexer.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// Calls `change(choice, configuration, landmark)` with what stands for each landmark listed.
template <class function>
void change_choices(const landmark_lists& lists, function change) {
  for (const int i : lists.configurations) {
    for (int l = 0; l < landmark_configurations()[at(i)].points; ++l) {
      if (!lists.landmarks[at(l)]) continue;
      point_choice choice = lmark.choices[at(i)][at(l)];
      change(choice, i, l);
      set_point_choice(i, l, choice);
    }
  }
  drop_packed_data();
}

double read_positive(const char* what) {
  double value = 0;
  constexpr double most = 1e12;  // sums of scores stay far from what a double can hold
  if (!read_optional_float(&value) || !(value >= 0 && value <= most))
    error_end_f("Must give %s (0 to 1e+12)", what);
  return value;
}

/// "=X C/L": sets a member of the choices; "=*" gives it back its default, where there is one;
/// alone it shows what holds.
void read_choice(lmark_request& request, double point_choice::*member, bool has_default,
                 const char* what, double (*shown)(const point_record& point)) {
  std::optional<double> value;
  if (accept_char('=')) {
    value = has_default && accept_char('*') ? point_choice().*member : read_positive(what);
  }
  const landmark_lists lists = read_landmark_lists(false, true);
  if (!value) {
    request.work.emplace_back([lists, what, shown] { show_choices(lists, what, shown); });
    return;
  }
  request.work.emplace_back([lists, member, value] {
    change_choices(lists, [&](point_choice& choice, int, int) { choice.*member = *value; });
  });
}

void set_minima_by_search(const landmark_lists& lists) {
  std::vector<std::uint8_t> characters(at(matrix.nchar), 0);
  for (const landmark_configuration& one : landmark_configurations())
    characters[at(one.character)] = 1;
  const landmark_points data = gather_points(characters);
  change_choices(lists, [&](point_choice& choice, int configuration, int landmark) {
    const point_record& point =
        data.points[at(data.configurations[at(configuration)].first + landmark)];
    show_progress("Minima of landmarks", landmark,
                  landmark_configurations()[at(configuration)].points);
    choice.minimum = shortest_tree_of_point(point.counted, point.dimensions, lmark.settings);
  });
  clear_progress();
}

/// The lengths that a tree has become the minima.
void set_minima_by_tree(const landmark_lists& lists, int tree) {
  check_tree_number(tree);
  std::vector<std::uint8_t> characters(at(matrix.nchar), 0);
  for (const landmark_configuration& one : landmark_configurations())
    characters[at(one.character)] = 1;
  landmark_scorer scorer(characters);
  scorer.optimise(stored_tree(tree));
  change_choices(lists, [&](point_choice& choice, int configuration, int landmark) {
    const int first = scorer.data().configurations[at(configuration)].first;
    choice.minimum = scorer.lengths()[at(first + landmark)];
  });
}

int axis_of(int letter) {
  constexpr std::string_view axes = "xyz";
  const std::size_t found = axes.find(static_cast<char>(letter | 32));
  return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

double& coordinate(landmark_point& point, int axis) {
  return axis == 0 ? point.x : axis == 1 ? point.y : point.z;
}

template <class function>
void change_positions(const std::vector<int>& configurations, function change) {
  for (const int i : configurations) {
    for (int t = 0; t < matrix.ntax; ++t)
      change(changeable_landmarks_of(landmark_configurations()[at(i)].character, t));
  }
  drop_packed_data();
}

/// Centroid size, the root of the summed squared distances from the mean of the points, becomes 1.
void rescale(std::span<landmark_point> points) {
  landmark_point sum;
  double count = 0;
  for (const landmark_point& p : points) {
    if (is_missing(p)) continue;
    sum = {sum.x + p.x, sum.y + p.y, sum.z + p.z};
    ++count;
  }
  double squares = 0;
  for (const landmark_point& p : points) {
    if (is_missing(p)) continue;
    squares += std::pow(p.x - sum.x / count, 2) + std::pow(p.y - sum.y / count, 2) +
               std::pow(p.z - sum.z / count, 2);
  }
  if (!(squares > 0)) return;
  const double size = std::sqrt(squares);
  for (landmark_point& p : points) {
    if (!is_missing(p)) p = {p.x / size, p.y / size, p.z / size};
  }
}

void read_figure_of_map(lmark_request& request, bool together) {
  const landmark_lists lists = read_landmark_lists(true, false);
  if (!accept_char('&')) {
    request.work.emplace_back([lists] { show_positions(lists); });
    return;
  }
  landmark_map map{lists.trees, {}, together, read_figure_request({})};
  for (const int i : lists.configurations)
    map.characters.push_back(landmark_configurations()[at(i)].character);
  if (!hooks_of_landmarks.draw_map) error_end("Figures of landmarks are not available");
  request.work.emplace_back([lists, map = std::move(map)] {
    if (lmark.settings.show_internal_nodes) show_positions(lists);
    hooks_of_landmarks.draw_map(map);
  });
}

}  // namespace

/// "-": terminals without a grid.
void read_termpoints(lmark_request& request) {
  request.settings.use_terminals = true;
  request.settings.use_grid = !accept_char('-');
}

void read_nest(lmark_request& request) {
  const char* const form = "Give number of nesting rounds (0-100), and window in cells (above 0)";
  int rounds = -1;
  if (!read_optional_int(&rounds) || rounds < 0 || rounds > 100) error_end(form);
  double window = request.settings.nest_window;
  if (read_optional_float(&window) && !(window > 0 && std::isfinite(window))) error_end(form);
  request.settings.nest_rounds = rounds;
  request.settings.nest_window = window;
}

void read_maxiters(lmark_request& request) {
  const char* const form = "Give maximum number of iterations (above 0), and cut-off (0 or more)";
  int iterations = 0;
  if (!read_optional_int(&iterations) || iterations < 1) error_end(form);
  double cut = request.settings.cut;
  if (read_optional_float(&cut) && !(cut >= 0 && std::isfinite(cut))) error_end(form);
  request.settings.max_iterations = iterations;
  request.settings.cut = cut;
}

/// "+x-y": the largest x, then the smallest y; "*": no order.
void read_ambig(lmark_request& request) {
  tie_order wanted = {0, 0, 0};
  std::size_t count = 0;
  if (!accept_char('*')) {
    while (skip_blanks_peek() == '+' || skip_blanks_peek() == '-') {
      const bool largest = next_nonblank() == '+';
      const int axis = axis_of(next_nonblank());
      if (axis < 0 || count == wanted.size()) break;
      wanted[count++] = static_cast<char>((largest ? 'x' : 'X') + axis);
    }
    if (count == 0)
      error_end("Give up to three coordinates, as +x for the largest and -y for the smallest");
  }
  request.settings.ties = wanted;
}

void read_factors(lmark_request& request) {
  read_choice(request, &point_choice::factor, true, "factor",
              [](const point_record& p) { return p.factor; });
}

void read_weights(lmark_request& request) {
  read_choice(request, &point_choice::weight, false, "weight",
              [](const point_record& p) { return p.weight; });
}

/// Beside what other choices have: "=!" for the best tree of the point alone, "=(T)" for tree T.
void read_minima(lmark_request& request) {
  const auto shown = [](const point_record& p) { return minimum_of_point(p); };
  if (skip_blanks_peek() != '=')
    return read_choice(request, &point_choice::minimum, true, "minimum", shown);
  next_nonblank();
  if (accept_char('!')) {
    const landmark_lists lists = read_landmark_lists(false, true);
    request.work.emplace_back([lists] { set_minima_by_search(lists); });
    return;
  }
  if (accept_char('(')) {
    require_trees();
    const int tree = read_int();
    if (!accept_char(')')) error_end("Closing parenthesis expected");
    const landmark_lists lists = read_landmark_lists(false, true);
    request.work.emplace_back([lists, tree] { set_minima_by_tree(lists, tree); });
    return;
  }
  const double value = accept_char('*') ? -1 : read_positive("minimum");
  const landmark_lists lists = read_landmark_lists(false, true);
  request.work.emplace_back([lists, value] {
    change_choices(lists, [&](point_choice& choice, int, int) { choice.minimum = value; });
  });
}

/// "C/ 0-1-2 4-5": landmarks to be joined; none: those of the configuration go.
void read_connections(lmark_request& request) {
  const std::vector<int> configurations = read_configurations();
  std::vector<landmark_wire> wires;
  if (accept_char('/')) {
    int from = 0;
    while (read_optional_int(&from)) {
      while (accept_char('-')) {
        int to = 0;
        if (!read_optional_int(&to)) error_end("Give landmarks to connect, as 0-1-2");
        wires.push_back({from, to});
        from = to;
      }
    }
  }
  for (const int i : configurations) {
    const landmark_configuration& one = landmark_configurations()[at(i)];
    for (const landmark_wire& wire : wires) {
      const int worst = std::min(wire.from, wire.to) < 0 ? std::min(wire.from, wire.to)
                                                         : std::max(wire.from, wire.to);
      if (worst < 0 || worst >= one.points)
        error_end_f("No landmark %i in character %i", worst, one.character);
    }
  }
  request.work.emplace_back([configurations, wires] {
    for (const int i : configurations) set_wires(i, wires);
  });
}

void read_rescale(lmark_request& request) {
  const std::vector<int> configurations = read_configurations();
  request.work.emplace_back([configurations] {
    for (const int i : configurations) {
      const int character = landmark_configurations()[at(i)].character;
      for (int t = 0; t < matrix.ntax; ++t) {
        const auto former = landmarks_of(character, t);
        std::vector<landmark_point> points(former.begin(), former.end());
        rescale(points);
        for (std::size_t p = 0; p < points.size(); ++p)
          if (!is_missing(former[p]) && !can_hold(points[p]))
            error_end("Rescaled, coordinates of char.", character, "would be below -1000000");
      }
    }
    change_positions(configurations, rescale);
  });
}

/// "xy C": these axes change places.
void read_swapped_axes(lmark_request& request) {
  const int first = axis_of(next_nonblank());
  const int second = axis_of(next_nonblank());
  if (first < 0 || second < 0 || first == second) error_end("Give two axes to swap, as xy");
  const std::vector<int> configurations = read_configurations();
  for (const int i : configurations) {
    const landmark_configuration& one = landmark_configurations()[at(i)];
    if (std::max(first, second) >= one.dimensions)
      error_end_f("Char. %i has no z-coordinates", one.character);
  }
  request.work.emplace_back([=] {
    change_positions(configurations, [=](std::span<landmark_point> points) {
      for (landmark_point& p : points) {
        if (!is_missing(p)) std::swap(coordinate(p, first), coordinate(p, second));
      }
    });
  });
}

void read_numlands(lmark_request& request) { request.work.emplace_back(show_landmark_counts); }

void read_dims(lmark_request& request) {
  int dimensions = 0;
  if (read_optional_int(&dimensions) && dimensions != 2 && dimensions != 3)
    error_end("Landmark data must be 2D or 3D");
  landmark_lists lists;
  accept_char('/');
  lists.configurations = read_configurations();
  request.work.emplace_back([=] { show_dimensions(lists, dimensions); });
}

void read_list_of_landmarks(lmark_request& request) {
  const landmark_lists lists = read_landmark_lists(false, true);
  request.work.emplace_back([lists] { list_landmarks(lists); });
}

void read_landmark_scores(lmark_request& request) {
  const landmark_lists lists = read_landmark_lists(true, true);
  request.work.emplace_back([lists] { show_landmark_scores(lists); });
}

void read_map(lmark_request& request) { read_figure_of_map(request, false); }
void read_multimap(lmark_request& request) { read_figure_of_map(request, true); }

}  // namespace zeb
