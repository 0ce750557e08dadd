// The states of the new character are all combinations of a state of the controlling character with
// states of those that apply there, so a taxon without the feature has a state of its own, and what
// it would have had to be is not asked. A change costs what differs: the sum over the characters
// that apply at both ends. Where a feature comes or goes, this is at least half of what its
// description can change by, since a way over its absence would be cheaper than a direct change
// otherwise. A character applies in those states of its controlling one in which some taxon tells
// it.
#include "matrix/costs/feature_costs.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <memory>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/costs/character_costs.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/settings/character_settings.h"

namespace zeb {
namespace {

constexpr int no_feature = -1;
constexpr signed char not_there = -1;

/// A character of the scheme, by its name.
struct feature {
  int character;
  std::string controls;       // "tail" in "sup_tail"; empty: none
  std::string controlled_by;  // what follows "sub_", which begins with what another one controls
  int above = no_feature;     // numbers of features
  std::vector<int> below;
  std::vector<int> states;    // that taxa have
  std::uint32_t applies = 0;  // states of the one above in which this one is told
  std::int64_t cost = 1;      // of its changes, in units of the new weight
  std::int64_t most_change = 0;
};
/// A state for each feature.
using combination = std::vector<signed char>;

/// What follows the word in the name, up to the other word.
std::string part_after(const std::string& name, const char* word, const char* other) {
  const std::string sign = std::string(word) + "_";
  std::size_t from = name.rfind(sign, 0) == 0 ? 0 : name.find("_" + sign);
  if (from == std::string::npos) return "";
  from += sign.size() + (from > 0 ? 1 : 0);
  return name.substr(from, name.find(std::string("_") + other + "_", from) - from);
}

class feature_tree {
 public:
  feature_tree() {
    for (int c = 0; c < matrix.nchar; ++c)
      if (matrix.characters[at(c)].active) add_character(c);
    for (std::size_t f = 0; f < all_.size(); ++f) find_controller(static_cast<int>(f));
    for (std::size_t f = 0; f < all_.size(); ++f) check_levels(static_cast<int>(f));
  }

  std::vector<combined_character> combined() {
    std::vector<combined_character> result;
    for (std::size_t f = 0; f < all_.size(); ++f)
      if (all_[f].above == no_feature && !all_[f].below.empty())
        result.push_back(combine(static_cast<int>(f)));
    return result;
  }

 private:
  const feature& of(int f) const { return all_[at(f)]; }

  void add_character(int character) {
    if (at(character) >= matrix.char_names.size()) return;
    const std::string& name = matrix.char_names[at(character)].name;
    feature one{};
    one.character = character;
    one.controls = part_after(name, "sup", "sub");
    one.controlled_by = part_after(name, "sub", "sup");
    if (one.controls.empty() && one.controlled_by.empty()) return;
    if (matrix.characters[at(character)].type != numeric_data)
      error_end("Character", character, "isn't of numbers: it can't be controlled or control");
    std::uint32_t states = states_in_cells(character);
    if (matrix.characters[at(character)].is_sankoff)
      for (const int s : costs_of_character(character).states) states |= std::uint32_t{1} << s;
    for (; states; states &= states - 1) one.states.push_back(std::countr_zero(states));
    for (const feature& other : all_)
      if (!one.controls.empty() && other.controls == one.controls)
        error_end_f("Characters %i and %i are both named sup_%s", other.character, character,
                    one.controls.c_str());
    all_.push_back(std::move(one));
  }

  /// The longest name that the text after "sub_" is, or goes on from with "_".
  void find_controller(int f) {
    const std::string& text = of(f).controlled_by;
    std::size_t longest = 0;
    for (std::size_t g = 0; g < all_.size() && !text.empty(); ++g) {
      const std::string& name = all_[g].controls;
      if (name.size() <= longest || text.rfind(name, 0) != 0) continue;
      if (text.size() > name.size() && text[name.size()] != '_') continue;
      longest = name.size();
      all_[at(f)].above = static_cast<int>(g);
    }
    if (longest > 0) {
      find_where_it_applies(f);
      all_[at(of(f).above)].below.push_back(f);
    } else if (!text.empty()) {
      warning("No character named", "sup_" + text, "controls character", of(f).character);
    }
  }

  void find_where_it_applies(int f) {
    const int controller = of(of(f).above).character;
    for (int t = 0; t < matrix.ntax; ++t) {
      const std::uint32_t above = cell(t, controller);
      if (std::has_single_bit(above) && !says_nothing(of(f).character, cell(t, of(f).character)))
        all_[at(f)].applies |= above;
    }
  }

  void check_levels(int f) const {
    std::size_t levels = 0;
    for (int g = f; g != no_feature; g = of(g).above)
      if (++levels > all_.size()) error_end("Character", of(f).character, "controls itself");
  }

  void add_subtree(int f, std::vector<int>& features) const {
    features.push_back(f);
    for (const int below : of(f).below) add_subtree(below, features);
  }

  bool applies(int f, int state_above) const { return (of(f).applies >> state_above & 1U) != 0; }

  /// Of a feature and what it controls; the others aren't there.
  std::vector<combination> combinations(int f) const {
    std::vector<combination> result;
    for (const int s : of(f).states) {
      combination start(all_.size(), not_there);
      start[at(f)] = static_cast<signed char>(s);
      std::vector<combination> own = {start};
      for (const int below : of(f).below)
        if (applies(below, s)) own = products(own, combinations(below), f);
      result.insert(result.end(), own.begin(), own.end());
      check_room(result.size(), f);
    }
    return result;
  }

  std::vector<combination> products(const std::vector<combination>& left,
                                    const std::vector<combination>& right, int f) const {
    check_room(left.size() * right.size(), f);
    std::vector<combination> all;
    for (const combination& a : left)
      for (const combination& b : right) {
        all.push_back(a);
        for (std::size_t i = 0; i < b.size(); ++i)
          if (b[i] != not_there) all.back()[i] = b[i];
      }
    return all;
  }

  void check_room(std::size_t combinations, int f) const {
    if (combinations > at(8 * matrix.cell_bytes))
      error_end_f(
          "Character %i and those that it controls have more than %i combinations of states",
          of(f).character, 8 * matrix.cell_bytes);
  }

  std::int64_t own_change(int f, int from, int to) const {
    const character_record& record = matrix.characters[at(of(f).character)];
    if (from == to) return 0;
    if (record.is_sankoff) {
      const shared_costs costs = costs_set_for(of(f).character);
      return costs ? costs->costs[at(from)][at(to)] : 1;
    }
    return record.additive ? std::abs(from - to) : 1;
  }

  std::int64_t change(int f, const combination& from, const combination& to) const {
    std::int64_t at_both_ends = 0;
    std::int64_t at_one_end = 0;
    for (const int below : of(f).below) {
      const bool before = from[at(below)] != not_there;
      const bool after = to[at(below)] != not_there;
      if (before && after) at_both_ends += change(below, from, to);
      if (before != after) at_one_end += of(below).most_change;
    }
    const std::int64_t own = of(f).cost * own_change(f, from[at(f)], to[at(f)]);
    return std::max(own, (at_one_end + 1) / 2) + at_both_ends;
  }

  void measure(int f) {
    for (const int below : of(f).below) measure(below);
    const std::vector<combination> all = combinations(f);
    for (const combination& a : all)
      for (const combination& b : all)
        all_[at(f)].most_change = std::max(all_[at(f)].most_change, change(f, a, b));
  }

  /// One weight for all, that of the lightest, where the others are multiples of it; else the
  /// weights go into the costs.
  int take_weights(const std::vector<int>& features) {
    std::vector<int> weights;
    for (const int f : features) weights.push_back(matrix.characters[at(of(f).character)].weight);
    std::sort(weights.begin(), weights.end());
    weights.erase(weights.begin(), std::upper_bound(weights.begin(), weights.end(), 0));
    if (weights.empty()) return 0;
    const bool exact = std::all_of(weights.begin(), weights.end(),
                                   [&](int w) { return w % weights.front() == 0; });
    const int unit = exact ? weights.front() : 1;
    for (const int f : features)
      all_[at(f)].cost = matrix.characters[at(of(f).character)].weight / unit;
    return unit;
  }

  combined_character combine(int top) {
    std::vector<int> features;
    add_subtree(top, features);
    combined_character result;
    result.controller = of(top).character;
    for (const int f : features)
      if (f != top) result.controlled.push_back(of(f).character);
    std::sort(result.controlled.begin(), result.controlled.end());
    result.weight = take_weights(features);
    measure(top);
    const std::vector<combination> all = combinations(top);
    result.costs = costs_all_alike(1);
    result.costs.states = static_cast<std::uint32_t>((std::uint64_t{1} << all.size()) - 1);
    for (std::size_t i = 0; i < all.size(); ++i) {
      for (std::size_t j = 0; j < all.size(); ++j)
        result.costs.costs[i][j] = static_cast<std::int32_t>(
            std::min<std::int64_t>(change(top, all[i], all[j]), forbidden_cost));
      result.state_names.push_back(name_of(all[i], features));
    }
    for (int t = 0; t < matrix.ntax; ++t) result.cells.push_back(cell_of(t, all, features));
    return result;
  }

  std::string name_of(const combination& states, const std::vector<int>& features) const {
    std::string text;
    for (const int f : features) {
      if (states[at(f)] == not_there) continue;
      const auto& names = matrix.char_names[at(of(f).character)].states;
      const std::size_t s = at(states[at(f)]);
      const bool named = s < names.size() && !names[s].empty() && names[s] != "-";
      text += (text.empty() ? "" : "+") +
              (named ? names[s] : state_symbol(of(f).character, states[at(f)]));
    }
    return text;
  }

  /// All combinations that the taxon's cells allow; 0 for all there are.
  std::uint32_t cell_of(int taxon, const std::vector<combination>& all,
                        const std::vector<int>& features) const {
    std::uint32_t allowed = 0;
    std::uint32_t complete = 0;  // those that leave none of its cells out
    for (std::size_t i = 0; i < all.size(); ++i) {
      bool fits = true;
      bool whole = true;
      for (const int f : features) {
        const std::uint32_t states = cell(taxon, of(f).character);
        if (says_nothing(of(f).character, states)) continue;
        const signed char s = all[i][at(f)];
        fits = fits && (s == not_there || (states >> s & 1U) != 0);
        whole = whole && s != not_there;
      }
      if (fits) allowed |= std::uint32_t{1} << i;
      if (fits && whole) complete |= std::uint32_t{1} << i;
    }
    if (complete) allowed = complete;
    return std::popcount(allowed) == static_cast<int>(all.size()) ? 0 : allowed;
  }

  std::vector<feature> all_;
};

}  // namespace

std::vector<combined_character> combine_features() { return feature_tree().combined(); }

void take_over(const combined_character& combined) {
  const int c = combined.controller;
  set_costs(c, std::make_shared<const cost_table>(combined.costs));
  for (int t = 0; t < matrix.ntax; ++t)
    set_cell(t, c, combined.cells[at(t)] ? combined.cells[at(t)] : matrix.state_mask);
  change_character(c, {.weight = combined.weight});
  for (const int other : combined.controlled) change_character(other, {.active = false});
  set_character_name(c, {matrix.char_names[at(c)].name, combined.state_names});
}

}  // namespace zeb
