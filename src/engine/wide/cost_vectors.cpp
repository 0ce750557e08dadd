#include "engine/wide/cost_vectors.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "base/arena.h"
#include "base/indices.h"
#include "matrix/costs/character_costs.h"

namespace zeb {
namespace {

constexpr int lanes = 8;
constexpr int largest_small_cost = 4000;

/// Costs of one character, in rows of whole vectors. What is beyond the states costs too much to be
/// ever the least.
template <class number>
struct cost_model {
  int states;
  int width;  // states rounded up to whole vectors
  bool rooted;
  number detour;
  number* to;    // row t: cost of going to state t, by the state before
  number* from;  // row s: cost of going from state s, by the state after
  number* root;  // what the root pays for a state
  std::span<std::uint32_t> cells;
};

template <class number>
struct limits;
template <>
struct limits<std::int16_t> {
  static constexpr std::int16_t beyond = 8000;
  static constexpr std::int16_t absent = 16000;  // of a terminal: a state that it doesn't have
};
template <>
struct limits<std::int32_t> {
  static constexpr std::int32_t beyond = 1 << 24;
  static constexpr std::int32_t absent = 1 << 25;
};

bool is_small(const character_costs& costs) {
  return !costs.is_rooted() && costs.most_cost <= largest_small_cost;
}

template <class number>
struct vectors {
  // Vectors lie among words of any type.
  using lane [[gnu::may_alias]] = number;
  using model = cost_model<number>;
  static constexpr bool has_roots = sizeof(number) > 2;
  enum place : word { in_main, at_top, in_clip };

  static const model& model_of(const wide_character& c) {
    return *static_cast<const model*>(c.model);
  }
  static int words(const model& m) { return m.width * static_cast<int>(sizeof(number)) / 4; }
  static lane* at_word(word* sets, int where) { return reinterpret_cast<lane*>(sets + where); }
  static const lane* at_word(const word* sets, int where) {
    return reinterpret_cast<const lane*>(sets + where);
  }

  // ---- arithmetic on vectors ----

  /// out[x] = the least of rows[s][x] + in[s].
  static void cheapest_ways(const model& m, const number* rows, const lane* in, lane* out) {
    for (int from = 0; from < m.width; from += lanes) {
      number least[lanes];
      for (int x = 0; x < lanes; ++x) least[x] = std::numeric_limits<number>::max();
      for (int s = 0; s < m.states; ++s) {
        const number* const row = rows + s * m.width + from;
        for (int x = 0; x < lanes; ++x) {
          const auto sum = static_cast<number>(row[x] + in[s]);
          least[x] = sum < least[x] ? sum : least[x];
        }
      }
      for (int x = 0; x < lanes; ++x) out[from + x] = least[x];
    }
  }
  static void sum_of(const model& m, const lane* a, const lane* b, lane* out) {
    for (int x = 0; x < m.width; ++x) out[x] = static_cast<number>(a[x] + b[x]);
  }
  static void difference_of(const model& m, const lane* a, const lane* b, lane* out) {
    for (int x = 0; x < m.width; ++x) out[x] = static_cast<number>(a[x] - b[x]);
  }
  static number least_of(const model& m, const lane* a) {
    number least = a[0];
    for (int x = 1; x < m.states; ++x) least = std::min<number>(least, a[x]);
    return least;
  }
  static number least_sum(const model& m, const lane* a, const lane* b) {
    number least[lanes];
    for (int x = 0; x < lanes; ++x) least[x] = std::numeric_limits<number>::max();
    for (int from = 0; from < m.width; from += lanes)
      for (int x = 0; x < lanes; ++x) {
        const auto sum = static_cast<number>(a[from + x] + b[from + x]);
        least[x] = sum < least[x] ? sum : least[x];
      }
    return *std::min_element(least, least + lanes);
  }
  static std::uint32_t cheapest(const model& m, const lane* a) {
    const number least = least_of(m, a);
    std::uint32_t set = 0;
    for (int s = 0; s < m.states; ++s)
      if (a[s] == least) set |= std::uint32_t{1} << s;
    return set;
  }

  // ---- the row ----

  static bool takes(int character) {
    if (!matrix.characters[at(character)].is_sankoff) return false;
    return is_small(costs_of_character(character)) == !has_roots;
  }

  static const void* make_model(int character) {
    const character_costs costs = costs_of_character(character);
    model& m = alloc_low<model>(1)[0];
    m.states = costs.count();
    m.width = (m.states + lanes - 1) / lanes * lanes;
    m.rooted = costs.is_rooted();
    m.detour = static_cast<number>(costs.detour_gain);
    const std::size_t row = at(m.width);
    m.to = alloc_low<number>(row * at(m.states), 64).data();
    m.from = alloc_low<number>(row * at(m.states), 64).data();
    m.root = calloc_low<number>(row, 64).data();
    for (int s = 0; s < m.states; ++s) {
      if (costs.root_states && !(costs.root_states >> s & 1U))
        m.root[s] = static_cast<number>(forbidden_cost);
      for (int x = 0; x < m.width; ++x) {
        const bool is_state = x < m.states;
        m.to[s * m.width + x] =
            is_state ? static_cast<number>(costs.of(x, s)) : limits<number>::beyond;
        m.from[s * m.width + x] =
            is_state ? static_cast<number>(costs.of(s, x)) : limits<number>::beyond;
      }
    }
    m.cells = alloc_low<std::uint32_t>(costs.cells.size());
    std::copy(costs.cells.begin(), costs.cells.end(), m.cells.begin());
    return &m;
  }

  static const void* model_of_part(const wide_character& c, const word* above, const word* down,
                                   word* outside) {
    const model& whole = model_of(c);
    model& m = alloc_low<model>(1)[0];
    m = whole;
    m.root = calloc_low<number>(at(m.width), 64).data();
    const lane* const final = at_word(above, c.final_at);
    const lane* const part = at_word(down, c.down_at) + m.width;
    for (int s = 0; s < m.states; ++s) m.root[s] = static_cast<number>(final[s] - part[s]);
    const number least = *std::min_element(m.root, m.root + m.states);
    for (int s = 0; s < m.states; ++s) m.root[s] = static_cast<number>(m.root[s] - least);
    write_terminal(m, 0, at_word(outside, c.down_at));
    return &m;
  }

  static wide_room room(const wide_character& c) {
    const int own = words(model_of(c));
    return {2 * own, own + (has_roots ? 1 : 0), 2 * own};
  }
  static bool is_rooted(const wide_character& c) { return has_roots && model_of(c).rooted; }

  /// `states` 0: says nothing.
  static void write_terminal(const model& m, std::uint32_t states, lane* own) {
    for (int x = 0; x < m.width; ++x) {
      const bool has = x < m.states && (states == 0 || (states >> x & 1U) != 0);
      own[x] = has ? number{0} : limits<number>::absent;
    }
    cheapest_ways(m, m.to, own, own + m.width);
  }

  static int encode(const wide_character& c, int taxon, word* down) {
    const model& m = model_of(c);
    write_terminal(m, m.cells[at(taxon)], at_word(down, c.down_at));
    return -m.detour;
  }

  static void down(wide_characters all, const word* left, const word* right, word* own,
                   std::int64_t* steps) {
    for (std::size_t i = 0; i < all.size(); ++i) {
      const model& m = model_of(all[i]);
      lane* const costs = at_word(own, all[i].down_at);
      sum_of(m, at_word(left, all[i].down_at) + m.width, at_word(right, all[i].down_at) + m.width,
             costs);
      const number least = least_of(m, costs);
      for (int x = 0; x < m.width; ++x) costs[x] = static_cast<number>(costs[x] - least);
      cheapest_ways(m, m.to, costs, costs + m.width);
      steps[i] += std::int64_t{least} + m.detour;
    }
  }

  static void top(wide_characters all, const word* down, word* final, bool whole,
                  std::int64_t* steps) {
    for (std::size_t i = 0; i < all.size(); ++i) {
      const model& m = model_of(all[i]);
      const lane* const costs = at_word(down, all[i].down_at);
      lane* const own = at_word(final, all[i].final_at);
      std::memcpy(own, costs, at(m.width) * sizeof(number));
      if (!has_roots) continue;
      final[all[i].final_at + words(m)] = whole ? in_main : at_top;
      if (!whole) continue;
      sum_of(m, costs, m.root, own);
      const number least = least_of(m, own);
      for (int x = 0; x < m.width; ++x) own[x] = static_cast<number>(own[x] - least);
      steps[i] += std::int64_t{least} + m.detour;
    }
  }

  /// What the rest of the tree costs by the state of the node on the near end of the branch, or of
  /// a joint on it; `joint` says which of the two. They differ at the top of a clip, which isn't
  /// there any more if the clip is rooted elsewhere: the branches to its descendants are one.
  static void rest_of_tree(const model& m, const wide_character& c, const word* above,
                           const word* down, lane* rest) {
    difference_of(m, at_word(above, c.final_at), at_word(down, c.down_at) + m.width, rest);
    const word where = has_roots ? above[c.final_at + words(m)] : word{in_main};
    if (where == at_top) return;
    number without[32];
    std::memcpy(without, rest, at(m.states) * sizeof(number));
    cheapest_ways(m, where == in_main ? m.from : m.to, reinterpret_cast<const lane*>(without),
                  rest);
  }

  static void final(wide_characters all, const word* above, const word* down, word* own) {
    for (const wide_character& c : all) {
      const model& m = model_of(c);
      lane* const costs = at_word(own, c.final_at);
      rest_of_tree(m, c, above, down, costs);
      sum_of(m, costs, at_word(down, c.down_at), costs);
      if (has_roots)
        own[c.final_at + words(m)] =
            above[c.final_at + words(m)] == in_main ? word{in_main} : word{in_clip};
    }
  }

  static void branch(wide_characters all, const word* above, const word* final, const word* down,
                     word* own) {
    for (const wide_character& c : all) {
      const model& m = model_of(c);
      lane* const costs = at_word(own, c.branch_at);
      // The rest of the tree is in the node's `final` already.
      if (final)
        difference_of(m, at_word(final, c.final_at), at_word(down, c.down_at), costs);
      else
        rest_of_tree(m, c, above, down, costs);
      sum_of(m, costs, at_word(down, c.down_at) + m.width, costs);
      cheapest_ways(m, m.to, costs, costs + m.width);
    }
  }

  static void empty(wide_characters all, word* cluster) {
    for (const wide_character& c : all) {
      lane* const costs = at_word(cluster, c.branch_at);
      std::fill_n(costs, 2 * model_of(c).width, limits<number>::absent);
    }
  }
  static void widen(wide_characters all, const word* branch, word* cluster) {
    for (const wide_character& c : all) {
      const lane* const more = at_word(branch, c.branch_at);
      lane* const costs = at_word(cluster, c.branch_at);
      const int width = 2 * model_of(c).width;
      for (int x = 0; x < width; ++x) costs[x] = more[x] < costs[x] ? more[x] : costs[x];
    }
  }

  /// Cheapest change between the best states of two nodes.
  static std::int64_t change_between(const wide_character& c, wide_operand below,
                                     wide_operand above) {
    const model& m = model_of(c);
    const auto states = [&](wide_operand side) {
      return cheapest(m, at_word(side.words, side.end == join_end::root ? c.down_at : c.final_at));
    };
    const std::uint32_t ends = states(below);
    number least = std::numeric_limits<number>::max();
    for (std::uint32_t from = states(above); from; from &= from - 1)
      for (std::uint32_t to = ends; to; to &= to - 1)
        least = std::min(least, m.from[std::countr_zero(from) * m.width + std::countr_zero(to)]);
    return least;
  }

  static void join(wide_characters all, wide_operand clip, wide_operand main, std::int64_t* steps) {
    if (main.end == join_end::final) {
      for (std::size_t i = 0; i < all.size(); ++i) steps[i] += change_between(all[i], clip, main);
      return;
    }
    for (std::size_t i = 0; i < all.size(); ++i) steps[i] += steps_of_joining(all[i], clip, main);
  }

  static std::int64_t join_sum(wide_characters all, wide_operand clip, wide_operand main,
                               std::int64_t bound) {
    std::int64_t sum = 0;
    for (const wide_character& c : all) {
      sum += c.weight * steps_of_joining(c, clip, main);
      if (sum > bound) return sum;
    }
    return sum;
  }

  static std::int64_t steps_of_joining(const wide_character& c, wide_operand clip,
                                       wide_operand main) {
    const model& m = model_of(c);
    const bool by_root = clip.end == join_end::root;
    const lane* const own = at_word(clip.words, by_root ? c.down_at : c.branch_at) + m.width;
    if (main.end == join_end::root)
      return join_at_root(c, own, at_word(main.words, c.down_at) + m.width, by_root);
    const std::int64_t least = least_sum(m, own, at_word(main.words, c.branch_at));
    return has_roots ? least + m.detour - (by_root ? 0 : c.least_rooting) : least;
  }

  /// The joint is the root of the tree: the other side is a terminal that hangs on it.
  static std::int64_t join_at_root(const wide_character& c, const lane* own, const lane* terminal,
                                   bool by_root) {
    const model& m = model_of(c);
    number sum[32];
    for (int x = 0; x < m.width; ++x) sum[x] = static_cast<number>(terminal[x] + m.root[x]);
    const std::int64_t least = least_sum(m, own, reinterpret_cast<const lane*>(sum));
    return has_roots ? least + 2 * m.detour - (by_root ? 0 : c.least_rooting) : least;
  }

  static std::int64_t rooting(const wide_character& c, const word* branch) {
    const model& m = model_of(c);
    return least_of(m, at_word(branch, c.branch_at));
  }

  static bool stays(wide_characters all, int rule, const word* above, const word* down,
                    const word* final) {
    return std::any_of(all.begin(), all.end(), [&](const wide_character& c) {
      const model& m = model_of(c);
      const std::uint32_t from = cheapest(m, at_word(above, c.final_at));
      const std::uint32_t own = rule == 1 ? cheapest(m, at_word(down, c.down_at))
                                          : cheapest(m, at_word(final, c.final_at));
      return rule == 1 ? (from & ~own) != 0 : rule == 2 ? from != own : (from & own) == 0;
    });
  }

  static constexpr wide_kind kind(const char* name) {
    return {.name = name,
            .takes = takes,
            .model = make_model,
            .model_of_part = has_roots ? model_of_part : nullptr,
            .room = room,
            .is_rooted = is_rooted,
            .encode = encode,
            .down = down,
            .top = top,
            .final = final,
            .branch = branch,
            .empty = empty,
            .widen = widen,
            .join = join,
            .join_sum = join_sum,
            .stays = stays,
            .rooting = has_roots ? rooting : nullptr};
  }
};

}  // namespace

const wide_kind small_cost_vectors = vectors<std::int16_t>::kind("small costs");
const wide_kind large_cost_vectors = vectors<std::int32_t>::kind("costs");

}  // namespace zeb
