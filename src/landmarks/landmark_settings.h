// What `lmark` sets: how points are optimised, and what each of them weighs. What concerns searches
// is in search_settings.h.
#pragma once

#include <array>
#include <vector>

namespace zeb {

/// Which of several candidates of the same cost is taken: 'x', 'y', 'z' for the largest coordinate,
/// capitals for the smallest; 0: no further one.
using tie_order = std::array<char, 3>;

struct landmark_settings {
  // The grid, and what follows it.
  int cells = 6;              // points of the grid along each axis
  bool use_grid = true;       // off under "termpoints -"
  bool use_terminals = true;  // positions of terminals are candidates, too
  int nest_rounds = 1;        // finer grids around the positions found
  double nest_window = 1;     // their width, in cells of the grid before
  int shakes = 0;             // distorted grids, of which the best counts
  bool shrink = false;        // the frame leaves out an outlier
  bool skip = false;          // candidates that can't be the best are passed over
  bool low_memory = false;    // distances between candidates are made anew for each point
  tie_order ties = {0, 0, 0};
  // Fermat points.
  bool iterate = true;
  int max_iterations = 100000;
  double cut = 1e-6;      // improvement of the score at which they stop, in spans of the point
  double precision = 0;   // points of a smaller range aren't optimised; 0: all are
  bool in_scale = false;  // automatic factors make all points of a configuration alike
  /// Positions end where the tree is shortest, wherever they begin: no grids are needed.
  bool go_to_optimum() const { return iterate && max_iterations >= 100 && cut <= 1e-6; }
  // Others.
  bool sample_configurations = false;  // resampling draws whole configurations
  bool look_ahead = false;
  // Reports and figures of positions.
  bool show_internal_nodes = false;  // with their coordinates, beside figures
  int decimals = 4;                  // of coordinates
  bool lines = true;                 // figures: from a node's points to those of its ancestor
  double tilt = 0;                   // figures of three dimensions: degrees
  double rotation = 0;
  double volume = 0;  // figures of three dimensions: how much larger what is near is drawn, percent
};
/// Landmarks that figures join by a line.
struct landmark_wire {
  int from = 0;
  int to = 0;
  bool operator==(const landmark_wire&) const = default;
};
/// What the user chose for one point.
struct point_choice {
  double weight = 1;
  double factor = -1;   // negative: automatic
  double minimum = -1;  // of its score; negative: a bound by triplets
};

struct landmark_state {
  landmark_settings settings;
  std::vector<std::vector<point_choice>> choices;  // by configuration, then point
  std::vector<std::vector<landmark_wire>> wires;   // by configuration
  bool low_memory_forced = false;                  // by the data: memory was short
};
/// Written in landmarks/ only.
extern landmark_state lmark;

void set_landmark_settings(const landmark_settings& settings);
/// New data: neither choices nor wires.
void make_point_choices();
void set_point_choice(int configuration, int point, const point_choice& choice);
/// A tree has shown that the minimum is too high.
void lower_chosen_minimum(int character, int point, double minimum);
void set_wires(int configuration, std::vector<landmark_wire> wires);
/// Memory for all distances between candidates is short, or isn't.
void force_low_memory(bool forced);

}  // namespace zeb
