#include "distances/supertrees/supertree.h"

#include <algorithm>
#include <limits>
#include <unordered_set>

#include "base/errors.h"
#include "base/indices.h"
#include "distances/cut_trees.h"
#include "distances/supertrees/block_splitting.h"
#include "distances/supertrees/triplet_votes.h"

namespace zeb {
namespace {

constexpr std::size_t most_trees = std::numeric_limits<std::uint16_t>::max();

/// One of the trees, by its taxa among those of the supertree.
struct source_tree {
  taxon_set taxa;
  std::vector<taxon_set> groups;  // of two taxa or more, but not all
};

bool overlap(const taxon_set& a, const taxon_set& b) {
  return a.meets(b) && !a.is_subset_of(b) && !b.is_subset_of(a);
}

class supertree_maker {
 public:
  supertree_maker(std::span<const const_tree_span> trees, int ntax, const taxon_set& excluded,
                  const supertree_settings& how, const std::function<void(double)>& poll)
      : ntax_(ntax), how_(how), poll_(poll) {
    taxon_set all(ntax);
    for (const const_tree_span tree : trees) all |= taxa_of_tree(tree, ntax);
    all -= excluded;
    taxa_ = members_of(all);
    if (taxa_.size() < 3) error_end("Give trees of three taxa or more");
    if (static_cast<int>(taxa_.size()) > triplet_votes::most_taxa)
      error_end_f("Supertrees can't have more than %i taxa", triplet_votes::most_taxa);
    if (trees.size() > most_trees)
      error_end_f("Can't combine more than %i trees", static_cast<int>(most_trees));
    votes_ = triplet_votes(static_cast<int>(taxa_.size()));
    for (std::size_t i = 0; i < trees.size(); ++i) {
      poll_(static_cast<double>(i) / static_cast<double>(trees.size()));
      take(trees[i], excluded);
    }
  }

  supertree run() {
    const split_blocks said =
        split([](const triplet_vote& vote, std::size_t i) { return vote.apart[i]; });
    const taxon_set conflict = three_in_conflict();
    out_.compatible = conflict.empty() && !said.stuck;
    if (!out_.compatible) out_.conflict = stored(conflict.empty() ? said.conflict : conflict);
    const bool by_all = how_.kind == supertree_settings::build;
    std::vector<taxon_set> candidates =
        by_all ? said.groups : split([this](const triplet_vote& vote, std::size_t i) {
                                 return strength(vote, i);
                               }).groups;
    // Groups of trees of all taxa are candidates as they stand.
    for (const source_tree& tree : sources_)
      if (tree.taxa.count() == votes_.taxa())
        candidates.insert(candidates.end(), tree.groups.begin(), tree.groups.end());
    choose(candidates);
    return std::move(out_);
  }

 private:
  int number_of(int taxon) const {
    return static_cast<int>(std::ranges::lower_bound(taxa_, taxon) - taxa_.begin());
  }
  taxon_set stored(const taxon_set& set) const {
    taxon_set out(ntax_);
    for (const int t : set) out.insert(taxa_[at(t)]);
    return out;
  }

  void take(const_tree_span tree, const taxon_set& excluded) {
    const taxon_set own = taxa_of_tree(tree, ntax_) - excluded;
    source_tree source{taxon_set(votes_.taxa()), {}};
    std::vector<int> numbers;
    for (const int taxon : own) numbers.push_back(number_of(taxon));
    for (const int t : numbers) source.taxa.insert(t);
    if (numbers.size() > 2) {
      const int n = static_cast<int>(numbers.size());
      const cut_tree cut(cut_to_taxa(tree, ntax_, own), n);
      votes_.count(cut.ancestors, numbers);
      std::vector<taxon_set> sets(cut.sizes.size(), taxon_set(votes_.taxa()));
      for (int t = 0; t < n; ++t) sets[at(t)].insert(numbers[at(t)]);
      for (auto node = cut.outward.rbegin(); node != cut.outward.rend(); ++node)
        for (const int child : cut.children(*node)) sets[at(*node)] |= sets[at(child)];
      source.groups.assign(sets.begin() + n + 1, sets.end());
    }
    sources_.push_back(std::move(source));
  }

  template <class function>
  split_blocks split(const function& value) const {
    return split_by_triplets(votes_.taxa(), [&](int a, int b, int c) -> int {
      if (c > b) return value(votes_.of(a, b, c), 2);
      if (c > a) return value(votes_.of(a, c, b), 1);
      return value(votes_.of(c, a, b), 0);
    });
  }

  /// How strong "the others are closer to each other than to taxon i of the three" is.
  int strength(const triplet_vote& vote, std::size_t i) const {
    const int said = vote.apart[i];
    const int others = vote.apart[0] + vote.apart[1] + vote.apart[2] - said;
    switch (how_.kind) {
      case supertree_settings::strict:
        return said == vote.trees() ? said : 0;
      case supertree_settings::combinable:
        return others == 0 ? said : 0;
      default:
        return 100LL * said > 1LL * how_.cut * vote.trees() ? said : 0;
    }
  }

  /// Three taxa that trees resolve in different ways; empty: there are none.
  taxon_set three_in_conflict() const {
    for (int c = 2; c < votes_.taxa(); ++c)
      for (int b = 1; b < c; ++b)
        for (int a = 0; a < b; ++a) {
          const triplet_vote& vote = votes_.of(a, b, c);
          if ((vote.apart[0] > 0) + (vote.apart[1] > 0) + (vote.apart[2] > 0) > 1)
            return {votes_.taxa(), {a, b, c}};
        }
    return {};
  }

  group_support support_of(const taxon_set& group) const {
    group_support out;
    for (const source_tree& tree : sources_) {
      const taxon_set own = group & tree.taxa;
      if (own.count() < 2 || own == tree.taxa) continue;
      if (std::ranges::find(tree.groups, own) != tree.groups.end())
        ++out.having;
      else if (std::ranges::any_of(tree.groups,
                                   [&](const taxon_set& g) { return overlap(g, own); }))
        ++out.against;
      else
        ++out.unresolved;
    }
    return out;
  }

  bool is_wanted(const group_support& s) const {
    switch (how_.kind) {
      case supertree_settings::build:
        return out_.compatible || (s.having > 0 && s.against == 0);
      case supertree_settings::strict:
        return s.having > 0 && s.against + s.unresolved == 0;
      case supertree_settings::combinable:
        return s.having > 0 && s.against == 0;
      default:
        return 100LL * s.having > 1LL * how_.cut * (s.having + s.against + s.unresolved);
    }
  }

  /// Those that are what is wanted, the most frequent first, as long as they fit together.
  void choose(const std::vector<taxon_set>& candidates) {
    struct chosen_group {
      taxon_set taxa;
      group_support support;
    };
    std::vector<chosen_group> wanted, chosen;
    std::unordered_set<taxon_set> met;
    for (const taxon_set& group : candidates) {
      if (!met.insert(group).second) continue;
      poll_(static_cast<double>(met.size()) / static_cast<double>(candidates.size()));
      const group_support support = support_of(group);
      if (is_wanted(support)) wanted.push_back({group, support});
    }
    std::ranges::stable_sort(wanted, std::greater<>(),
                             [](const chosen_group& g) { return g.support.having; });
    for (chosen_group& group : wanted)
      if (std::ranges::none_of(chosen, [&](const chosen_group& other) {
            return other.taxa == group.taxa || overlap(other.taxa, group.taxa);
          }))
        chosen.push_back(std::move(group));
    std::ranges::stable_sort(chosen, std::greater<>(),
                             [](const chosen_group& g) { return g.taxa.count(); });
    // From the largest down, the ancestor of all of a group's taxa is the smallest group around it.
    out_.tree.assign(at(2 * ntax_ - 1), 0);
    std::vector<group_support> supports(out_.tree.size());
    for (const int taxon : taxa_) out_.tree[at(taxon)] = ntax_;
    int next = ntax_ + 1;
    for (const chosen_group& group : chosen) {
      supports[at(next)] = group.support;
      const taxon_set taxa = stored(group.taxa);
      out_.tree[at(next)] = out_.tree[at(taxa.first())];
      for (const int taxon : taxa) out_.tree[at(taxon)] = next;
      ++next;
    }
    out_.tree[at(ntax_)] = next;
    std::vector<int> new_numbers;
    normalise_tree(out_.tree, ntax_, &new_numbers);
    out_.supports.assign(out_.tree.size(), {});
    for (int n = ntax_ + 1; n < next; ++n) out_.supports[at(new_numbers[at(n)])] = supports[at(n)];
  }

  int ntax_;
  const supertree_settings& how_;
  const std::function<void(double)>& poll_;
  std::vector<int> taxa_;  // stored numbers of the taxa of the supertree
  triplet_votes votes_{0};
  std::vector<source_tree> sources_;
  supertree out_;
};

}  // namespace

supertree make_supertree(std::span<const const_tree_span> trees, int ntax,
                         const taxon_set& excluded, const supertree_settings& how,
                         const std::function<void(double)>& poll) {
  return supertree_maker(trees, ntax, excluded, how, poll).run();
}

}  // namespace zeb
