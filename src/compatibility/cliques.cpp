#include "compatibility/cliques.h"

#include <algorithm>
#include <limits>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/time_limit.h"

namespace zeb {
namespace {

class clique_search {
 public:
  clique_search(const std::vector<taxon_set>& neighbours, const std::vector<std::int64_t>& weights,
                std::int64_t suboptimal, std::size_t most)
      : neighbours_(neighbours), weights_(weights), suboptimal_(suboptimal), most_(most) {}

  clique_search_result run() {
    const auto n = static_cast<int>(weights_.size());
    taxon_set all(n);
    all.fill();
    taxon_set chosen(n);
    if (n > 0) extend(chosen, 0, all, taxon_set(n));
    std::erase_if(found_, [&](const entry& e) { return e.weight < best_ - suboptimal_; });
    std::ranges::stable_sort(found_, std::ranges::greater(), &entry::weight);
    clique_search_result result{{}, best_, complete_};
    for (entry& e : found_) result.cliques.push_back(std::move(e.clique));
    return result;
  }

 private:
  struct entry {
    taxon_set clique;
    std::int64_t weight = 0;
  };

  bool must_stop() {
    if (++calls_ % 1000 == 0) {
      check_interrupt();
      if (time_is_out()) stop_search(stop_reason::time);
    }
    if (interrupted()) complete_ = false;
    return interrupted();
  }

  /// Things in the order in which the bound of all up to them rises, with that bound.
  struct bounded {
    int thing;
    std::int64_t bound;
  };
  std::vector<bounded> in_order_of_bounds(taxon_set left) const {
    std::vector<bounded> order;
    std::int64_t sum = 0;
    while (!left.empty()) {
      taxon_set open = left;  // may join the class
      std::int64_t heaviest = 0;
      const std::size_t from = order.size();
      for (int v = open.first(); v >= 0; v = open.next(v + 1)) {
        open -= neighbours_[at(v)];
        left.erase(v);
        heaviest = std::max(heaviest, weights_[at(v)]);
        order.push_back({v, 0});
      }
      sum += heaviest;
      for (std::size_t i = from; i < order.size(); ++i) order[i].bound = sum;
    }
    return order;
  }

  void keep(const taxon_set& chosen, std::int64_t weight) {
    if (weight < best_ - suboptimal_) return;
    if (weight > best_) {
      best_ = weight;
      std::erase_if(found_, [&](const entry& e) { return e.weight < best_ - suboptimal_; });
    }
    if (found_.size() < most_)
      found_.push_back({chosen, weight});
    else
      complete_ = false;
  }

  /// `open` are compatible with all chosen; `done` as well, but sets with them were looked at.
  // Each call goes one thing deeper: no deeper than the largest set.
  void extend(taxon_set& chosen, std::int64_t weight, taxon_set open, taxon_set done) {
    if (must_stop()) return;
    if (open.empty()) {
      if (done.empty()) keep(chosen, weight);
      return;
    }
    const std::vector<bounded> order = in_order_of_bounds(open);
    for (auto next = order.rbegin(); next != order.rend(); ++next) {
      if (weight + next->bound < best_ - suboptimal_ || interrupted()) return;
      const int v = next->thing;
      chosen.insert(v);
      extend(chosen, weight + weights_[at(v)], open & neighbours_[at(v)],
             done & neighbours_[at(v)]);
      chosen.erase(v);
      open.erase(v);
      done.insert(v);
    }
  }

  const std::vector<taxon_set>& neighbours_;
  const std::vector<std::int64_t>& weights_;
  std::int64_t suboptimal_;
  std::size_t most_;
  std::int64_t best_ = 0;
  std::vector<entry> found_;
  bool complete_ = true;
  std::int64_t calls_ = 0;
};

}  // namespace

clique_search_result heaviest_cliques(const std::vector<taxon_set>& neighbours,
                                      const std::vector<std::int64_t>& weights,
                                      std::int64_t suboptimal, std::size_t most) {
  return clique_search(neighbours, weights, suboptimal, most).run();
}

}  // namespace zeb
