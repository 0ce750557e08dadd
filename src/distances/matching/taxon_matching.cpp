#include "distances/matching/taxon_matching.h"

#include <algorithm>
#include <map>
#include <numeric>

#include "base/indices.h"
#include "distances/matching/shape_matching.h"
#include "trees/terminal_sets.h"

namespace zeb {
namespace {

constexpr std::size_t most_tried_in_full = 8;  // possible partners: 40,320 orders

// A map from all terminals of `a` into those of `b`, which has as many or more.
class matcher {
 public:
  matcher(const cut_tree& a, const cut_tree& b, const std::vector<int>& fixed)
      : a_(a), b_(b), keys_(terminal_set_keys(a.ancestors, a.terminals)), fixed_(fixed) {
    for (std::size_t n = at(a_.root()) + 1; n < keys_.size(); ++n)
      group_of_[keys_[n]] = static_cast<int>(n);
    met_.assign(keys_.size(), 0);
    sums_.resize(b_.sizes.size());
    std::vector<char> taken(at(b_.terminals), 0);
    for (int t = 0; t < a_.terminals; ++t) {
      if (fixed_[at(t)] < 0)
        free_.push_back(t);
      else
        taken[at(fixed_[at(t)])] = 1;
    }
    for (int t = 0; t < b_.terminals; ++t)
      if (!taken[at(t)]) partners_.push_back(t);
  }

  bool can_try_all() const { return free_.empty() || partners_.size() <= most_tried_in_full; }
  bool is_settled() const { return free_.empty(); }
  int groups() const { return static_cast<int>(group_of_.size()); }

  /// Puts the partners in an order: the first ones belong to the free terminals.
  std::vector<int>& partners() { return partners_; }
  void take_wishes(const std::vector<int>& wished) {
    // A wish for a partner that is fixed elsewhere gives way to what is left.
    std::vector<int> order, rest = partners_;
    for (const int t : free_) {
      const auto found = std::ranges::find(rest, wished[at(t)]);
      order.push_back(found == rest.end() ? -1 : *found);
      if (found != rest.end()) rest.erase(found);
    }
    for (int& partner : order) {
      if (partner >= 0) continue;
      partner = rest.back();
      rest.pop_back();
    }
    order.insert(order.end(), rest.begin(), rest.end());
    partners_ = std::move(order);
  }

  std::vector<int> map() const {
    std::vector<int> map = fixed_;
    for (std::size_t i = 0; i < free_.size(); ++i) map[at(free_[i])] = partners_[i];
    return map;
  }

  int score() {
    std::ranges::fill(sums_, terminal_set_key{});
    const auto put = [&](int terminal, int partner) { sums_[at(partner)] = keys_[at(terminal)]; };
    for (int t = 0; t < a_.terminals; ++t)
      if (fixed_[at(t)] >= 0) put(t, fixed_[at(t)]);
    for (std::size_t i = 0; i < free_.size(); ++i) put(free_[i], partners_[i]);
    ++round_;
    int shared = 0;
    for (auto node = b_.outward.rbegin(); node != b_.outward.rend(); ++node) {
      for (const int child : b_.children(*node)) {
        sums_[at(*node)].first += sums_[at(child)].first;
        sums_[at(*node)].second += sums_[at(child)].second;
      }
      const auto found = group_of_.find(sums_[at(*node)]);
      if (found == group_of_.end() || met_[at(found->second)] == round_) continue;
      met_[at(found->second)] = round_;
      ++shared;
    }
    return shared;
  }

  /// Exchanges partners as long as that shares more groups.
  int climb(random_generator& generator, const std::function<void()>& poll) {
    int best = score();
    std::vector<int> order(partners_.size());
    for (bool better = true; better && best < groups();) {
      better = false;
      random_sequence(generator, static_cast<int>(order.size()), order, -1, {});
      for (std::size_t i = 0; i < free_.size(); ++i) {
        poll();
        for (const int j : order) {
          if (at(j) <= i && at(j) < free_.size()) continue;
          std::swap(partners_[i], partners_[at(j)]);
          const int now = score();
          if (now > best) {
            best = now;
            better = true;
          } else {
            std::swap(partners_[i], partners_[at(j)]);
          }
        }
      }
    }
    return best;
  }

 private:
  const cut_tree& a_;
  const cut_tree& b_;
  std::vector<terminal_set_key> keys_;  // by node of `a`
  std::map<terminal_set_key, int> group_of_;
  const std::vector<int>& fixed_;
  std::vector<int> free_, partners_;
  std::vector<terminal_set_key> sums_;  // by node of `b`, of the terminals that stand for its own
  std::vector<long> met_;               // by node of `a`: the round when its group was found last
  long round_ = 0;
};

/// Groups of the same size can be one, of those that all lie in the trees as they are.
int bound_by_sizes(const cut_tree& a, const cut_tree& b) {
  std::vector<int> in_a(at(a.terminals) + 1, 0), in_b(in_a);
  for (const int node : a.outward) ++in_a[at(a.sizes[at(node)])];
  for (const int node : b.outward) ++in_b[at(b.sizes[at(node)])];
  int bound = 0;
  for (int size = 2; size < a.terminals; ++size) bound += std::min(in_a[at(size)], in_b[at(size)]);
  return bound;
}

taxon_match match_smaller(const cut_tree& a, const cut_tree& b, const std::vector<int>& fixed,
                          int replications, random_generator& generator,
                          const std::function<void(double)>& poll) {
  matcher maps(a, b, fixed);
  taxon_match out;
  out.at_most = a.terminals == b.terminals ? bound_by_sizes(a, b) : maps.groups();
  const auto keep = [&](int shared) {
    if (!out.map.empty() && shared <= out.shared) return;
    out.shared = shared;
    out.map = maps.map();
  };
  maps.take_wishes(map_by_shape(a, b));
  for (int run = 0; run < replications && !(run > 0 && out.is_exact()); ++run) {
    if (run > 0) {
      std::vector<int> order(maps.partners().size());
      random_sequence(generator, static_cast<int>(order.size()), order, -1, {});
      const std::vector<int> before = maps.partners();
      for (std::size_t i = 0; i < order.size(); ++i) maps.partners()[i] = before[at(order[i])];
    }
    keep(maps.climb(generator, [&] { poll(static_cast<double>(run) / replications); }));
  }
  if (out.is_exact() || !maps.can_try_all()) return out;
  std::ranges::sort(maps.partners());
  do {
    poll(1);
    keep(maps.score());
  } while (!maps.is_settled() && std::ranges::next_permutation(maps.partners()).found);
  out.at_most = out.shared;
  return out;
}

}  // namespace

taxon_match match_taxa(const cut_tree& a, const cut_tree& b, const std::vector<int>& fixed,
                       int replications, random_generator& generator,
                       const std::function<void(double)>& poll) {
  if (a.terminals <= b.terminals) return match_smaller(a, b, fixed, replications, generator, poll);
  std::vector<int> turned(at(b.terminals), -1);
  for (int t = 0; t < a.terminals; ++t)
    if (fixed[at(t)] >= 0) turned[at(fixed[at(t)])] = t;
  taxon_match out = match_smaller(b, a, turned, replications, generator, poll);
  const std::vector<int> partner = std::move(out.map);
  out.map.assign(at(a.terminals), -1);
  for (int t = 0; t < b.terminals; ++t) out.map[at(partner[at(t)])] = t;
  return out;
}

}  // namespace zeb
