#include "landmarks/shortest_positions.h"

#include <cmath>
#include <memory>

#include "landmarks/lane_points.h"

namespace zeb {
namespace {

constexpr double first_softness = 0.1;
constexpr double hardening = 0.5;
constexpr int most_steps = 60;
/// What a step may still gain, in spans, where it is the last: errors of steps go with the square
/// of that.
constexpr double last_gain = 1e-11;
constexpr double next_to_nothing = 1e-30;  // keeps vertices that nothing holds from dividing by 0

/// A symmetric matrix of lanes.
template <int dims>
struct symmetric {
  lanes at[dims][dims];
  void load(const double* from) {
    for (int i = 0, k = 0; i < dims; ++i)
      for (int j = 0; j <= i; ++j, ++k) at[i][j] = at[j][i] = load_lanes(from + k * block_lanes);
  }
};

template <int dims>
symmetric<dims> inverse(const symmetric<dims>& m) {
  symmetric<dims> r;
  const auto& a = m.at;
  if constexpr (dims == 2) {
    const lanes share = 1 / (a[0][0] * a[1][1] - a[0][1] * a[0][1]);
    r.at[0][0] = a[1][1] * share;
    r.at[1][1] = a[0][0] * share;
    r.at[0][1] = r.at[1][0] = -a[0][1] * share;
  } else {
    const lanes x = a[1][1] * a[2][2] - a[1][2] * a[1][2];
    const lanes y = a[0][2] * a[1][2] - a[0][1] * a[2][2];
    const lanes z = a[0][1] * a[1][2] - a[0][2] * a[1][1];
    const lanes share = 1 / (a[0][0] * x + a[0][1] * y + a[0][2] * z);
    r.at[0][0] = x * share;
    r.at[0][1] = r.at[1][0] = y * share;
    r.at[0][2] = r.at[2][0] = z * share;
    r.at[1][1] = (a[0][0] * a[2][2] - a[0][2] * a[0][2]) * share;
    r.at[1][2] = r.at[2][1] = (a[0][1] * a[0][2] - a[0][0] * a[1][2]) * share;
    r.at[2][2] = (a[0][0] * a[1][1] - a[0][1] * a[0][1]) * share;
  }
  return r;
}

/// What is known of each vertex and of the branch above it, in lanes: places in its record.
template <int dims>
struct places {
  static constexpr int way = 0;                      // from its ancestor
  static constexpr int inverse_length = way + dims;  // softened
  static constexpr int pull = inverse_length + 1;    // of the branch, at most 1
  static constexpr int push = pull + dims;           // gradient of what is above it
  static constexpr int stiffness = push + dims;      // ... and second derivatives
  static constexpr int follows =
      stiffness + dims * (dims + 1) / 2;                  // how the ancestor's moves move it
  static constexpr int own_move = follows + dims * dims;  // less what it moves besides
  static constexpr int count = own_move + dims;
};

template <int dims>
class newton_steps {
 public:
  newton_steps(const point_tree& tree, int terminals, const lane_values& spans, double* coordinates)
      : tree_(tree),
        size_(tree.size()),
        ancestor_(tree.ancestor.data()),
        node_(tree.node.data()),
        terminals_(terminals),
        spans_(load_lanes(spans.data())),
        coordinates_(coordinates),
        memory_(std::make_unique_for_overwrite<double[]>(at(size_) * at(record))) {}

  void run() {
    for (int v = 0; v < size_; ++v) store_all<dims>(known(v, place::pull), lanes{});
    step(0, true);
    double softness = first_softness;
    for (int i = 0; i < most_steps; ++i) {
      const lanes gain = step(softness, false);
      if (softness == last_softness && largest(gain / spans_) < last_gain) break;
      softness = softness * hardening > last_softness ? softness * hardening : last_softness;
    }
    for (int v = size_; v-- > 0;) end_on_neighbours(v);
    for (int v = 0; v < size_; ++v) end_on_neighbours(v);
  }

 private:
  using place = places<dims>;
  static constexpr int record = place::count * block_lanes;
  double* known(int v, int what) { return memory_.get() + v * record + what * block_lanes; }
  double* position(int v) { return coordinates_ + v * dims * block_lanes; }
  bool is_fixed(int v) const { return node_[v] < terminals_; }

  /// One step; what it gains at about most. `evenly`: all branches pull by their lengths.
  lanes step(double softness, bool evenly) {
    for (int v = 0; v < size_; ++v) {
      store_all<dims>(known(v, place::push), lanes{});
      store_all<dims*(dims + 1) / 2>(known(v, place::stiffness), lanes{});
    }
    lanes gain{};
    const lanes soft = softness * spans_;
    for (int v = size_; v-- > 1;) gain += pass_on(v, soft * soft, evenly);
    gain += move_top();
    for (int v = 1; v < size_; ++v) move(v, evenly);
    return gain;
  }

  /// Adds what a branch and all above it say to the ancestor of `v`: as that moves, `v` follows to
  /// where it is best.
  lanes pass_on(int v, const lanes& squared_softness, bool evenly) {
    const int a = ancestor_[v];
    lanes way[dims];
    lanes square = squared_softness;
    for (int i = 0; i < dims; ++i) {
      way[i] =
          load_lanes(position(v) + i * block_lanes) - load_lanes(position(a) + i * block_lanes);
      store_lanes(known(v, place::way + i), way[i]);
      square += way[i] * way[i];
    }
    const lanes weight = evenly ? lanes{} + 1 : 1 / square_root(square);
    store_lanes(known(v, place::inverse_length), weight);
    lanes slope[dims];
    symmetric<dims> branch;
    const lanes half = weight * weight * 0.5;
    lanes pull[dims];
    for (int i = 0; i < dims; ++i) {
      pull[i] = load_lanes(known(v, place::pull + i));
      slope[i] = way[i] * weight;
      for (int j = 0; j <= i; ++j) {
        const lanes turned = half * (pull[i] * way[j] + pull[j] * way[i]);
        branch.at[i][j] = branch.at[j][i] = i == j ? weight - turned : -turned;
      }
    }
    if (is_fixed(v)) {
      for (int i = 0, k = 0; i < dims; ++i) {
        for (int j = 0; j <= i; ++j, ++k)
          add_lanes(known(a, place::stiffness + k), branch.at[i][j]);
        add_lanes(known(a, place::push + i), -slope[i]);
      }
      return lanes{};
    }
    return pass_on_inner(v, branch, slope);
  }

  lanes pass_on_inner(int v, const symmetric<dims>& branch, const lanes* slope) {
    const int a = ancestor_[v];
    symmetric<dims> own;
    own.load(known(v, place::stiffness));
    symmetric<dims> both = own;
    for (int i = 0; i < dims; ++i) {
      for (int j = 0; j < dims; ++j) both.at[i][j] += branch.at[i][j];
      both.at[i][i] += next_to_nothing;
    }
    const symmetric<dims> yields = inverse<dims>(both);
    lanes push[dims];
    for (int i = 0; i < dims; ++i) push[i] = load_lanes(known(v, place::push + i)) + slope[i];
    lanes follows[dims][dims];
    lanes moves[dims];
    lanes gain{};
    for (int i = 0; i < dims; ++i) {
      moves[i] = lanes{};
      for (int j = 0; j < dims; ++j) {
        moves[i] += yields.at[i][j] * push[j];
        follows[i][j] = lanes{};
        for (int k = 0; k < dims; ++k) follows[i][j] += yields.at[i][k] * branch.at[k][j];
        store_lanes(known(v, place::follows + i * dims + j), follows[i][j]);
      }
      store_lanes(known(v, place::own_move + i), moves[i]);
      gain += moves[i] * push[i];
    }
    for (int i = 0, k = 0; i < dims; ++i) {
      lanes passed = -slope[i];
      for (int j = 0; j < dims; ++j) passed += branch.at[i][j] * moves[j];
      add_lanes(known(a, place::push + i), passed);
      for (int j = 0; j <= i; ++j, ++k) {
        lanes sum{};
        for (int l = 0; l < dims; ++l) sum += own.at[i][l] * follows[l][j];
        add_lanes(known(a, place::stiffness + k), sum);
      }
    }
    return gain;
  }

  /// Moves are kept where the push was.
  lanes move_top() {
    lanes gain{};
    if (is_fixed(0)) {
      store_all<dims>(known(0, place::push), lanes{});
      return gain;
    }
    symmetric<dims> own;
    own.load(known(0, place::stiffness));
    for (int i = 0; i < dims; ++i) own.at[i][i] += next_to_nothing;
    const symmetric<dims> yields = inverse<dims>(own);
    lanes push[dims];
    for (int i = 0; i < dims; ++i) push[i] = load_lanes(known(0, place::push + i));
    for (int i = 0; i < dims; ++i) {
      lanes moves{};
      for (int j = 0; j < dims; ++j) moves -= yields.at[i][j] * push[j];
      gain -= moves * push[i];
      store_lanes(known(0, place::push + i), moves);
      add_lanes(position(0) + i * block_lanes, moves);
    }
    return gain;
  }

  void move(int v, bool evenly) {
    const int a = ancestor_[v];
    lanes moves[dims];
    lanes apart[dims];
    for (int i = 0; i < dims; ++i) {
      moves[i] = lanes{};
      if (!is_fixed(v)) {
        moves[i] = -load_lanes(known(v, place::own_move + i));
        for (int j = 0; j < dims; ++j)
          moves[i] += load_lanes(known(v, place::follows + i * dims + j)) *
                      load_lanes(known(a, place::push + j));
        add_lanes(position(v) + i * block_lanes, moves[i]);
      }
      store_lanes(known(v, place::push + i), moves[i]);
      apart[i] = moves[i] - load_lanes(known(a, place::push + i));
    }
    if (!evenly) update_pull(v, apart);
  }

  void update_pull(int v, const lanes* apart) {
    const lanes weight = load_lanes(known(v, place::inverse_length));
    lanes along{};
    for (int i = 0; i < dims; ++i) along += load_lanes(known(v, place::way + i)) * apart[i];
    along *= weight;
    lanes pull[dims];
    lanes square{};
    for (int i = 0; i < dims; ++i) {
      double* const former = known(v, place::pull + i);
      pull[i] =
          weight * (apart[i] + load_lanes(known(v, place::way + i)) - load_lanes(former) * along);
      square += pull[i] * pull[i];
    }
    const lanes share = 1 / square_root(at_least(square, 1));
    for (int i = 0; i < dims; ++i) store_lanes(known(v, place::pull + i), pull[i] * share);
  }

  /// Softness leaves vertices beside others on which they should lie.
  void end_on_neighbours(int v) {
    const auto children = tree_.children_of(v);
    if (is_fixed(v) || children.size() + (v > 0) != 3) return;
    const auto a = load_point<dims>(position(children[0]));
    const auto b = load_point<dims>(position(children[1]));
    const auto c = load_point<dims>(position(v > 0 ? ancestor_[v] : children[2]));
    store_point(fermat_of_lanes(a, b, c), position(v));
  }

  const point_tree& tree_;
  const int size_;
  const int* const ancestor_;
  const int* const node_;
  const int terminals_;
  const lanes spans_;
  double* const coordinates_;
  const std::unique_ptr<double[]> memory_;
};

template <int dims>
lane_values sum_of_lengths(const point_tree& tree, const double* coordinates) {
  lanes sum{};
  const double* here = coordinates;
  for (int v = 1; v < tree.size(); ++v) {
    here += dims * block_lanes;
    const double* const above = coordinates + tree.ancestor[at(v)] * dims * block_lanes;
    lanes square{};
    for (int i = 0; i < dims; ++i) {
      const lanes way = load_lanes(here + i * block_lanes) - load_lanes(above + i * block_lanes);
      square += way * way;
    }
    sum += square_root(square);
  }
  lane_values lengths{};
  store_lanes(lengths.data(), sum);
  return lengths;
}

}  // namespace

ZEB_ALSO_FOR_WIDE_VECTORS
void find_shortest(const point_tree& tree, int terminals, int dimensions, const lane_values& spans,
                   std::span<double> coordinates) {
  if (dimensions == 2) {
    newton_steps<2>(tree, terminals, spans, coordinates.data()).run();
  } else {
    newton_steps<3>(tree, terminals, spans, coordinates.data()).run();
  }
}

ZEB_ALSO_FOR_WIDE_VECTORS
lane_values lengths_of_lanes(const point_tree& tree, int dimensions,
                             std::span<const double> coordinates) {
  return dimensions == 2 ? sum_of_lengths<2>(tree, coordinates.data())
                         : sum_of_lengths<3>(tree, coordinates.data());
}

}  // namespace zeb
