#include "trees/constraints/constraints.h"

#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/matrix.h"
#include "trees/tree_walks.h"

namespace zeb {

constraint_definitions constraints;

namespace {

/// A group as a division of some of the taxa in two.
struct division {
  taxon_set members;
  taxon_set others;

  bool is_trivial() const { return members.count() < 2 || others.count() < 2; }
};

division division_of(const constraint_group& group, const taxon_set& taxa) {
  return {group.members & taxa, taxa - group.members - group.floating};
}

std::vector<division> divisions_of(const std::vector<constraint_group>& groups,
                                   const taxon_set& taxa) {
  std::vector<division> divisions;
  divisions.reserve(groups.size());
  for (const constraint_group& group : groups) divisions.push_back(division_of(group, taxa));
  return divisions;
}

std::vector<constraint_group> groups_of_constraint_tree() {
  if (constraints.tree.empty()) return {};
  return groups_of_tree(constraints.tree, matrix.ntax);
}

bool can_stand_together(const division& a, const division& b) {
  return !(a.members.meets(b.members) && a.members.meets(b.others) && a.others.meets(b.members) &&
           a.others.meets(b.others));
}

/// Are they the same over the taxa that float in neither?
bool are_identical(const division& a, const division& b) {
  const taxon_set common = (a.members | a.others) & (b.members | b.others);
  const division first{a.members & common, a.others & common};
  const division second{b.members & common, b.others & common};
  return !first.is_trivial() && (first.members == second.members || first.members == second.others);
}

template <class relation>
bool any_pair(const std::vector<division>& some, const std::vector<division>& others, relation r) {
  for (const division& a : some) {
    for (const division& b : others) {
      if (r(a, b)) return true;
    }
  }
  return false;
}

}  // namespace

void define_constraints(constraint_definitions definitions, bool active) {
  constraints = std::move(definitions);
  constraints.active = active;
}

void activate_constraints(bool on) {
  if (on && !constraints.defined())
    error_end("Cannot activate constraints (constraints undefined)");
  constraints.active = on;
}

void forget_constraints() { constraints = {}; }

void require_constraints() {
  if (!constraints.defined()) error_end("No constraints defined");
}

std::vector<constraint_group> groups_of_tree(const_tree_span tree, int ntax) {
  taxon_set absent(ntax);
  for (int t = 0; t < ntax; ++t) absent.assign(t, is_absent(tree, t));
  const int limit = node_limit(tree, ntax);
  std::vector<constraint_group> groups(at(limit - ntax - 1), {taxon_set(ntax), absent});
  for (int t = 0; t < ntax; ++t) {
    if (absent.contains(t)) continue;
    for (int v = tree[at(t)]; v != ntax; v = tree[at(v)])
      groups[at(v - ntax - 1)].members.insert(t);
  }
  return groups;
}

constraint_rows rows_of_constraints(std::span<const std::int32_t> taxa) {
  std::vector<constraint_group> groups = groups_of_constraint_tree();
  const std::size_t tree_groups = groups.size();
  groups.insert(groups.end(), constraints.positive.begin(), constraints.positive.end());
  const std::size_t positive_groups = groups.size();
  groups.insert(groups.end(), constraints.negative.begin(), constraints.negative.end());

  constraint_rows rows;
  rows.terminals = static_cast<int>(taxa.size());
  rows.words = set_words(static_cast<int>(groups.size()));
  rows.members.assign(taxa.size() * rows.words, 0);
  rows.others = rows.members;
  rows.positive.assign(rows.words, 0);
  rows.negative = rows.of_tree = rows.positive;
  taxon_set present(matrix.ntax);
  for (const int taxon : taxa) present.insert(taxon);
  for (std::size_t g = 0; g < groups.size(); ++g) {
    const division group = division_of(groups[g], present);
    if (group.is_trivial()) continue;
    const std::size_t word = g / taxa_per_word;
    const set_word bit = set_word{1} << (g % taxa_per_word);
    (g < positive_groups ? rows.positive : rows.negative)[word] |= bit;
    if (g < tree_groups) rows.of_tree[word] |= bit;
    for (std::size_t t = 0; t < taxa.size(); ++t) {
      const bool is_member = group.members.contains(taxa[t]);
      const bool is_other = group.others.contains(taxa[t]);
      if (is_member) rows.members[t * rows.words + word] |= bit;
      if (is_other) rows.others[t * rows.words + word] |= bit;
      rows.any_floating |= !is_member && !is_other;
    }
  }
  return rows;
}

bool demand_group(const constraint_group& group, std::span<const std::int32_t> taxa) {
  taxon_set present(matrix.ntax);
  for (const int taxon : taxa) present.insert(taxon);
  const std::vector<division> wanted = {division_of(group, present)};
  return any_pair(wanted, divisions_of(groups_of_constraint_tree(), present), are_identical) ||
         any_pair(wanted, divisions_of(constraints.positive, present), are_identical);
}

void check_consistency(std::span<const std::int32_t> taxa) {
  taxon_set present(matrix.ntax);
  for (const int taxon : taxa) present.insert(taxon);
  const std::vector<division> tree = divisions_of(groups_of_constraint_tree(), present);
  const std::vector<division> positive = divisions_of(constraints.positive, present);
  const std::vector<division> negative = divisions_of(constraints.negative, present);
  const auto contradict = [](const division& a, const division& b) {
    return !can_stand_together(a, b);
  };
  if (any_pair(positive, tree, contradict))
    error_end("Tree constraint and positive constraints contain contradictory groups");
  if (any_pair(negative, tree, are_identical))
    error_end("Tree constraint and negative constraints contain some identical groups");
  if (any_pair(positive, negative, are_identical))
    error_end("Positive and negative constraints contain some identical groups");
  if (any_pair(positive, positive, contradict))
    error_end("Some positive constraints force incompatible groups");
}

}  // namespace zeb
