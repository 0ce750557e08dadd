#include "trees/constraints/constraint_test.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "base/indices.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

/// Groups met once, and twice at least, of many.
struct twice_met {
  std::vector<set_word> once, twice;

  void clear(std::size_t words) {
    once.assign(words, 0);
    twice.assign(words, 0);
  }
  void add(const set_word* groups) {
    for (std::size_t w = 0; w < once.size(); ++w) {
      twice[w] |= once[w] & groups[w];
      once[w] |= groups[w];
    }
  }
  /// Those of all but one of them.
  set_word without(set_word one, std::size_t w) const { return twice[w] | (once[w] & ~one); }
};

int set_bits(const std::vector<set_word>& words, const std::vector<set_word>& mask) {
  int count = 0;
  for (std::size_t w = 0; w < words.size(); ++w) count += std::popcount(words[w] & mask[w]);
  return count;
}

}  // namespace

void constraint_test::read(const_tree_span tree) {
  const int ntax = matrix.ntax;
  std::vector<std::int32_t> taxa;
  for (int t = 0; t < ntax; ++t) {
    if (matrix.taxon_active[at(t)] && !is_absent(tree, t)) taxa.push_back(t);
  }
  if (rows_.terminals == 0 || taxa != taxa_) {
    taxa_ = std::move(taxa);
    rows_ = rows_of_constraints(taxa_);
  }
  const std::size_t words = rows_.words;
  const std::size_t size = at(node_limit(tree, ntax)) * words;
  for (auto* table : {&members_, &others_, &members_beyond_, &others_beyond_, &members_meet_})
    table->assign(size, 0);
  torn_.assign(words, 0);
  const auto row_of = [words](std::vector<set_word>& table, int v) {
    return table.data() + at(v) * words;
  };
  for (std::size_t t = 0; t < taxa_.size(); ++t) {
    std::copy_n(rows_.members_of(static_cast<int>(t)), words, row_of(members_, taxa_[t]));
    std::copy_n(rows_.others_of(static_cast<int>(t)), words, row_of(others_, taxa_[t]));
  }
  const descendant_lists lists = descendants_of(tree, ntax);
  const std::vector<int> outward = internal_nodes_root_first(lists, ntax);
  for (auto v = outward.rbegin(); v != outward.rend(); ++v) {
    for (const int child : lists.children(*v)) {
      for (std::size_t w = 0; w < words; ++w) {
        row_of(members_, *v)[w] |= row(members_, child)[w];
        row_of(others_, *v)[w] |= row(others_, child)[w];
      }
    }
  }
  twice_met members;
  twice_met others;
  for (const int v : outward) {
    members.clear(words);
    others.clear(words);
    members.add(row(members_beyond_, v));
    others.add(row(others_beyond_, v));
    for (const int child : lists.children(v)) {
      members.add(row(members_, child));
      others.add(row(others_, child));
    }
    for (std::size_t w = 0; w < words; ++w) {
      row_of(members_meet_, v)[w] = members.twice[w];
      torn_[w] |= members.twice[w] & others.twice[w];
      for (const int child : lists.children(v)) {
        row_of(members_beyond_, child)[w] = members.without(row(members_, child)[w], w);
        row_of(others_beyond_, child)[w] = others.without(row(others_, child)[w], w);
      }
    }
  }
}

constraint_test::verdict constraint_test::judge(const_tree_span tree) {
  read(tree);
  const int torn_of_tree = set_bits(torn_, rows_.of_tree);
  const int torn_positive = set_bits(torn_, rows_.positive) - torn_of_tree;
  const int torn_negative = set_bits(torn_, rows_.negative);
  verdict result;
  result.violated = torn_positive + set_bits(rows_.negative, rows_.negative) - torn_negative;
  result.fulfilled = static_cast<int>(constraints.positive.size()) - torn_positive + torn_negative;
  if (!constraints.tree.empty()) ++(torn_of_tree > 0 ? result.violated : result.fulfilled);
  return result;
}

void constraint_test::protect(const_tree_span tree, std::span<std::uint8_t> marks) {
  read(tree);
  const int ntax = matrix.ntax;
  const int limit = node_limit(tree, ntax);
  for (std::size_t w = 0; w < rows_.words; ++w) {
    const auto parts = [&](int v) {
      const set_word members = row(members_, v)[w];
      const set_word others = row(others_, v)[w];
      const set_word members_beyond = row(members_beyond_, v)[w];
      const set_word others_beyond = row(others_beyond_, v)[w];
      return (members & ~others & others_beyond & ~members_beyond) |
             (others & ~members & members_beyond & ~others_beyond);
    };
    set_word unseen = rows_.positive[w];
    for (int v = ntax + 1; v < limit && unseen; ++v) {
      if (marks[at(v)]) unseen &= ~parts(v);
    }
    for (int v = ntax + 1; v < limit && unseen; ++v) {
      if (marks[at(v)]) continue;
      const set_word next_to_members =
          row(members_meet_, v)[w] ^ row(members_meet_, tree[at(v)])[w];
      if (parts(v) & next_to_members & unseen) marks[at(v)] = 1;
    }
  }
}

const char* keep_fulfilling(std::vector<std::uint8_t>& keep) {
  constraint_test test;
  std::vector<std::uint8_t> good = keep;
  for (int t = 0; t < store.ntrees; ++t)
    good[at(t)] = keep[at(t)] && test.judge(stored_tree(t)).violated == 0;
  if (std::count(good.begin(), good.end(), 1) == 0) return " (none fulfills constraints)";
  keep = good;
  return " (all fulfill constraints)";
}

}  // namespace zeb
