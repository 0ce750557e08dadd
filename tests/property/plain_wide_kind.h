// Plain characters as a kind of wide ones: sets of states, a word for each field, by the same rules
// as those of packed words. What is done with them must come out the same either way.
#pragma once

#include <bit>
#include <cstdint>
#include <random>
#include <vector>

#include "engine/packing/informative_states.h"
#include "engine/packing/packing_request.h"
#include "engine/wide/wide_kinds.h"
#include "matrix/matrix.h"
#include "property/random_matrix.h"

namespace zeb_test {

/// As long as it lives, some characters of the matrix are wide.
class plain_wide_kind {
 public:
  /// `taken` by character; `together` as in wide_kind.
  plain_wide_kind(std::vector<std::uint8_t> taken, int together) {
    in_force = {std::move(taken), {}, {}};
    const zeb::packing_request request = zeb::request_of_settings();
    for (int c = 0; c < zeb::matrix.nchar; ++c) {
      const zeb::informative_states states = zeb::trim_states(c, request.taxa);
      in_force.states.push_back(states);
      in_force.fields.push_back(!states.additive ? 1
                                : states.kept    ? highest(states.kept) - lowest(states.kept)
                                                 : 0);
    }
    kind_.together = together;
    zeb::add_wide_kind(kind_);
    zeb::drop_packed_data();
  }
  /// Takes each character with this chance.
  plain_wide_kind(double share, std::mt19937& g)
      : plain_wide_kind(drawn(share, g), draw(g, 1, 5)) {}
  ~plain_wide_kind() {
    zeb::remove_wide_kind(kind_);
    zeb::drop_packed_data();
  }
  plain_wide_kind(const plain_wide_kind&) = delete;
  plain_wide_kind& operator=(const plain_wide_kind&) = delete;

 private:
  using word = zeb::word;
  using characters = zeb::wide_characters;

  struct settings {
    std::vector<std::uint8_t> taken;
    std::vector<zeb::informative_states> states;
    std::vector<int> fields;
  };
  static inline settings in_force;

  static std::vector<std::uint8_t> drawn(double share, std::mt19937& g) {
    std::vector<std::uint8_t> taken;
    for (int c = 0; c < zeb::matrix.nchar; ++c) taken.push_back(chance(g, share));
    return taken;
  }
  static int lowest(std::uint32_t states) { return std::countr_zero(states); }
  static int highest(std::uint32_t states) { return 31 - std::countl_zero(states); }
  static std::size_t at(int i) { return static_cast<std::size_t>(i); }
  static int fields_of(const zeb::wide_character& c) { return in_force.fields[at(c.character)]; }

  /// Calls `visit(i, f)` for each field `f` of the character at `i`.
  template <class function>
  static void for_fields(characters all, function visit) {
    for (std::size_t i = 0; i < all.size(); ++i)
      for (int f = 0; f < fields_of(all[i]); ++f) visit(i, f);
  }

  static bool takes(int c) { return in_force.taken[at(c)] != 0; }
  static zeb::wide_room room(const zeb::wide_character& c) {
    return {2 * fields_of(c), fields_of(c), fields_of(c)};
  }
  static bool is_rooted(const zeb::wide_character&) { return false; }

  static int encode(const zeb::wide_character& c, int taxon, word* down) {
    const zeb::informative_states& states = in_force.states[at(c.character)];
    word* const own = down + c.down_at;
    for (int f = 0; f < fields_of(c); ++f) own[2 * f] = ~word{0};
    std::uint32_t cell = zeb::cell(taxon, c.character);
    if (zeb::says_nothing(c.character, cell) || states.kept == 0) return 0;
    if (states.additive) {
      const int least = lowest(states.kept);
      const int most = highest(states.kept);
      const int from = std::clamp(lowest(cell), least, most);
      const int to = std::clamp(highest(cell), least, most);
      for (int f = 0; f < fields_of(c); ++f)
        own[2 * f] = (from <= least + f ? 1U : 0U) | (to > least + f ? 2U : 0U);
      return std::max({0, least - highest(cell), lowest(cell) - most});
    }
    if (states.full != 0 && (cell & states.full) == states.full) return 0;
    cell &= ~states.unique;
    if (cell == 0) return 1;
    own[0] = cell;
    return 0;
  }

  static void down(characters all, const word* left, const word* right, word* own,
                   std::int64_t* steps) {
    for_fields(all, [&](std::size_t i, int f) {
      const int p = all[i].down_at + 2 * f;
      const word both = left[p] & right[p];
      own[p] = both ? both : left[p] | right[p];
      own[p + 1] = both ? left[p] | right[p] : ~word{0};
      steps[i] += both == 0;
    });
  }
  static void top(characters all, const word* down, word* final, bool, std::int64_t*) {
    for_fields(all, [&](std::size_t i, int f) {
      final[all[i].final_at + f] = down[all[i].down_at + 2 * f];
    });
  }
  static void final(characters all, const word* above, const word* down, word* own) {
    for_fields(all, [&](std::size_t i, int f) {
      const int p = all[i].final_at + f;
      const word set = down[all[i].down_at + 2 * f];
      const word unions = down[all[i].down_at + 2 * f + 1];
      own[p] = (above[p] & ~set) == 0 ? above[p] : (above[p] & unions) | set;
    });
  }
  static void branch(characters all, const word* above, const word* final, const word* down,
                     word* own) {
    for_fields(all, [&](std::size_t i, int f) {
      const int p = all[i].final_at + f;
      const word set = final ? final[p] : down[all[i].down_at + 2 * f];
      const bool follows = !final && (above[p] & ~set) == 0;
      own[all[i].branch_at + f] = follows ? above[p] : above[p] | set;
    });
  }
  static void empty(characters all, word* cluster) {
    for_fields(all, [&](std::size_t i, int f) { cluster[all[i].branch_at + f] = 0; });
  }
  static void widen(characters all, const word* branch, word* cluster) {
    for_fields(all, [&](std::size_t i, int f) {
      cluster[all[i].branch_at + f] |= branch[all[i].branch_at + f];
    });
  }
  static word set_of(const zeb::wide_character& c, int f, zeb::wide_operand side) {
    return side.words[side.end == zeb::join_end::root ? c.down_at + 2 * f : c.branch_at + f];
  }
  static void join(characters all, zeb::wide_operand clip, zeb::wide_operand main,
                   std::int64_t* steps) {
    for_fields(all, [&](std::size_t i, int f) {
      steps[i] += (set_of(all[i], f, clip) & set_of(all[i], f, main)) == 0;
    });
  }
  static bool stays(characters all, int rule, const word* above, const word* down,
                    const word* final) {
    bool some = false;
    for_fields(all, [&](std::size_t i, int f) {
      const word a = above[all[i].final_at + f];
      const word own = final[all[i].final_at + f];
      const word set = down[all[i].down_at + 2 * f];
      some = some || (rule == 1 ? (a & ~set) != 0 : rule == 2 ? a != own : (a & own) == 0);
    });
    return some;
  }

  zeb::wide_kind kind_{.name = "plain",
                       .takes = takes,
                       .model = nullptr,
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
                       .join_sum = nullptr,
                       .stays = stays,
                       .rooting = nullptr};
};

}  // namespace zeb_test
