#include "compatibility/compatible_characters.h"

#include <algorithm>
#include <bit>
#include <map>
#include <numeric>

#include "base/indices.h"
#include "base/interrupts.h"
#include "matrix/character_steps.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// The only state of a cell; -1 for none, or several.
int single_state(int taxon, int character) {
  if (!matrix.taxon_active[at(taxon)]) return -1;
  const std::uint32_t states = cell(taxon, character);
  if (says_nothing(character, states) || !std::has_single_bit(states)) return -1;
  return std::countr_zero(states);
}

/// Classes numbered in the order of the taxa, so that equal partitions are equal arrays.
taxon_partition numbered(const std::vector<int>& raw) {
  taxon_partition out{std::vector<int>(raw.size(), -1), 0};
  std::map<int, int> numbers;
  for (std::size_t t = 0; t < raw.size(); ++t) {
    if (raw[t] < 0) continue;
    const auto [place, is_new] = numbers.try_emplace(raw[t], out.classes);
    out.classes += is_new;
    out.class_of[t] = place->second;
  }
  return out;
}

/// An additive cell with several states lies on one side of a threshold where all of them do.
int side_of(int taxon, int character, int threshold) {
  if (!matrix.taxon_active[at(taxon)]) return -1;
  const std::uint32_t states = cell(taxon, character) & matrix.characters[at(character)].observed;
  if (says_nothing(character, cell(taxon, character)) || states == 0) return -1;
  const std::uint32_t low = states & ((std::uint32_t{2} << threshold) - 1);
  if (low == states) return 0;
  return low == 0 ? 1 : -1;
}

std::vector<taxon_partition> partitions_of(int character) {
  const character_record& record = matrix.characters[at(character)];
  std::vector<taxon_partition> out;
  std::vector<int> raw(at(matrix.ntax));
  if (!record.additive) {
    for (int t = 0; t < matrix.ntax; ++t) raw[at(t)] = single_state(t, character);
    out.push_back(numbered(raw));
    return out;
  }
  for (int s = 0; s < 31; ++s) {
    if (!((record.observed >> s) & 1U)) continue;
    for (int t = 0; t < matrix.ntax; ++t) raw[at(t)] = side_of(t, character, s);
    taxon_partition one = numbered(raw);
    if (one.classes == 2 && std::ranges::find(out, one) == out.end()) out.push_back(std::move(one));
  }
  return out;
}

bool are_compatible(const character_pattern& a, const character_pattern& b) {
  return std::ranges::all_of(a.partitions, [&](const taxon_partition& p) {
    return std::ranges::all_of(b.partitions,
                               [&](const taxon_partition& q) { return are_compatible(p, q); });
  });
}

}  // namespace

bool taxon_partition::is_split() const {
  if (classes != 2) return false;
  for (int t = 0; t < matrix.ntax; ++t)
    if (matrix.taxon_active[at(t)] && class_of[at(t)] < 0) return false;
  return true;
}

bool character_pattern::is_exact() const {
  return std::ranges::all_of(partitions, &taxon_partition::is_split);
}

bool are_compatible(const taxon_partition& a, const taxon_partition& b) {
  std::vector<std::uint8_t> is_edge(at(a.classes) * at(b.classes), 0);
  std::vector<int> link(at(a.classes + b.classes));
  std::iota(link.begin(), link.end(), 0);
  const auto end_of = [&](int v) {
    while (link[at(v)] != v) v = link[at(v)] = link[at(link[at(v)])];
    return v;
  };
  for (std::size_t t = 0; t < a.class_of.size(); ++t) {
    const int i = a.class_of[t];
    const int j = b.class_of[t];
    if (i < 0 || j < 0) continue;
    std::uint8_t& edge = is_edge[at(i) * at(b.classes) + at(j)];
    if (edge) continue;
    edge = 1;
    const int one = end_of(i);
    const int other = end_of(a.classes + j);
    if (one == other) return false;  // joined already: a circle
    link[at(one)] = other;
  }
  return true;
}

bool can_be_compared(int character) {
  const character_record& record = matrix.characters[at(character)];
  return !record.is_continuous && !record.is_sankoff && record.type != landmark_data &&
         record.weight > 0 && is_informative(character);
}

compatibility_graph compare_characters(const std::vector<int>& characters, bool weighted) {
  compatibility_graph graph;
  std::map<std::vector<std::vector<int>>, std::size_t> numbers;
  for (const int c : characters) {
    std::vector<taxon_partition> partitions = partitions_of(c);
    std::vector<std::vector<int>> key;
    for (const taxon_partition& one : partitions) key.push_back(one.class_of);
    const auto [place, is_new] = numbers.try_emplace(std::move(key), graph.patterns.size());
    if (is_new) graph.patterns.push_back({{}, std::move(partitions), 0});
    character_pattern& pattern = graph.patterns[place->second];
    pattern.characters.push_back(c);
    pattern.weight += weighted ? matrix.characters[at(c)].weight : 1;
  }
  const auto n = static_cast<int>(graph.patterns.size());
  graph.compatible.assign(at(n), taxon_set(n));
  for (int a = 0; a < n; ++a) {
    check_interrupt();
    for (int b = a + 1; b < n; ++b) {
      if (!are_compatible(graph.patterns[at(a)], graph.patterns[at(b)])) continue;
      graph.compatible[at(a)].insert(b);
      graph.compatible[at(b)].insert(a);
    }
  }
  return graph;
}

}  // namespace zeb
