#include "search/exact/conflicts.h"

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>

#include "base/indices.h"

namespace zeb {
namespace {

/// Are the two fields in conflict? States are joined into components; an edge within one closes a
/// circle.
bool in_conflict(const search_data& data, const single_state_field& a,
                 const single_state_field& b) {
  std::array<int, 64> component;
  std::iota(component.begin(), component.end(), 0);
  const auto root = [&](int s) {
    while (component[at(s)] != s) s = component[at(s)];
    return s;
  };
  std::array<word, 32> seen{};  // by state of a: the states of b that occur with it
  for (int t = 0; t < data.n; ++t) {
    const word x = single_state(data, a, t);
    const word y = single_state(data, b, t);
    if (x == 0 || y == 0) continue;
    const int s = std::countr_zero(x >> a.shift);
    const word other = y >> b.shift;
    if (seen[at(s)] & other) continue;
    seen[at(s)] |= other;
    const int here = root(s);
    const int there = root(32 + std::countr_zero(other));
    if (here == there) return true;
    component[at(here)] = there;
  }
  return false;
}

double first_cost(const search_data& data, const single_state_field& f) {
  if (!data.implied_on) return data.field_weight[at(f.record)];
  const fit_counter& c = data.counters[at(f.counter)];
  const double* const without_homoplasy = c.fit + (f.states - 1);
  return c.weight * (without_homoplasy[1] - without_homoplasy[0]);
}

}  // namespace

/// Members with few conflicts come first: they have the fewest sets to choose from.
character_conflicts::character_conflicts(const search_data& data,
                                         std::span<const single_state_field> fields)
    : words_(at(data.nwords)) {
  // Under implied weights fields of one character, or of a set that is weighted together, would
  // each be charged as a first step.
  std::vector<single_state_field> alone;
  for (const single_state_field& f : fields)
    if (f.alone) alone.push_back(f);
  std::vector<std::vector<std::size_t>> conflicts(alone.size());
  for (std::size_t i = 0; i < alone.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (!in_conflict(data, alone[i], alone[j])) continue;
      conflicts[i].push_back(j);
      conflicts[j].push_back(i);
    }
  }
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < alone.size(); ++i)
    if (!conflicts[i].empty()) order.push_back(i);
  std::stable_sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) {
    return conflicts[i].size() < conflicts[j].size();
  });
  std::vector<std::size_t> place(alone.size());
  for (std::size_t i = 0; i < order.size(); ++i) place[order[i]] = i;
  set_words_ = (order.size() + 63) / 64;
  neighbours_.assign(order.size() * set_words_, 0);
  for (const std::size_t i : order) {
    const single_state_field& f = alone[i];
    const std::size_t row = members_.size() * set_words_;
    for (const std::size_t j : conflicts[i])
      neighbours_[row + place[j] / 64] |= bits{1} << place[j] % 64;
    members_.push_back({f.word_number, f.mask, first_cost(data, f)});
  }
  for (const member& m : members_) one_cost_ = one_cost_ && m.cost == members_.front().cost;
  left_.resize(set_words_);
  candidates_.resize(set_words_);
  costs_left_.resize(members_.size());
}

void character_conflicts::fill(bits* set) const {
  for (std::size_t i = 0; i < members_.size(); ++i) set[i / 64] |= bits{1} << i % 64;
}

void character_conflicts::drop_failing(const word* a, const word* b, bits* set) const {
  for (std::size_t w = 0; w < set_words_; ++w) {
    for (bits rest = set[w]; rest; rest &= rest - 1) {
      const member& m = members_[64 * w + at(std::countr_zero(rest))];
      if ((a[m.word_number] & b[m.word_number] & m.mask) == 0) set[w] &= ~(rest & -rest);
    }
  }
}

template <class on_charge>
double character_conflicts::charge(const bits* set, on_charge&& charged) {
  std::copy_n(set, set_words_, left_.begin());
  if (!one_cost_)
    for (std::size_t i = 0; i < members_.size(); ++i) costs_left_[i] = members_[i].cost;
  const auto first_of = [this](const std::vector<bits>& from, std::size_t w) {
    while (w < set_words_ && from[w] == 0) ++w;
    return w;
  };
  double sum = 0;
  for (std::size_t start = first_of(left_, 0); start < set_words_; start = first_of(left_, start)) {
    clique_.clear();
    std::copy(left_.begin(), left_.end(), candidates_.begin());
    for (std::size_t w = start; w < set_words_; w = first_of(candidates_, w)) {
      const int chosen = static_cast<int>(64 * w) + std::countr_zero(candidates_[w]);
      clique_.push_back(chosen);
      const bits* const row = neighbours_.data() + at(chosen) * set_words_;
      for (std::size_t i = w; i < set_words_; ++i) candidates_[i] &= row[i];
    }
    double least = members_[at(clique_.front())].cost;
    if (!one_cost_)
      for (const int i : clique_) least = std::min(least, costs_left_[at(i)]);
    if (clique_.size() > 1) {
      sum += least * static_cast<double>(clique_.size() - 1);
      for (const int i : clique_) charged(members_[at(i)]);
    }
    for (const int i : clique_) {
      if (!one_cost_ && clique_.size() > 1 && (costs_left_[at(i)] -= least) > 0) continue;
      left_[at(i) / 64] &= ~(bits{1} << at(i) % 64);
    }
  }
  return sum;
}

double character_conflicts::bound(const bits* set) {
  return charge(set, [](const member&) {});
}

double character_conflicts::bound(const bits* set, word* charged) {
  std::fill_n(charged, words_, word{0});
  return charge(set, [charged](const member& m) { charged[m.word_number] |= m.mask; });
}

}  // namespace zeb
