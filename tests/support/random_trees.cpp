#include "support/random_trees.h"

#include <algorithm>
#include <numeric>

namespace zeb_test {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

std::uint64_t mixed(std::uint64_t z) {
  z = (z + 0x9e3779b97f4a7c15ULL) * 0xbf58476d1ce4e5b9ULL;
  z = (z ^ (z >> 29)) * 0x94d049bb133111ebULL;
  return z ^ (z >> 32);
}

/// Sum of the terminals' numbers below each node; 0 for nodes that aren't there.
std::vector<std::uint64_t> sums(const record& tree, int ntax) {
  const int limit = tree[at(ntax)];
  std::vector<std::uint64_t> sum(at(limit), 0);
  std::vector<int> waiting(at(limit), 0);  // descendants whose sum is still to come
  for (int v = 0; v < limit; ++v) {
    if (v != ntax && (v > ntax || tree[at(v)] != 0)) ++waiting[at(tree[at(v)])];
  }
  std::vector<int> ready;
  for (int t = 0; t < ntax; ++t) {
    if (tree[at(t)] == 0) continue;
    sum[at(t)] = mixed(static_cast<std::uint64_t>(t) + 1);
    ready.push_back(t);
  }
  for (int v = ntax; v < limit; ++v) {
    if (waiting[at(v)] == 0) ready.push_back(v);  // all its terminals are absent
  }
  while (!ready.empty()) {
    const int v = ready.back();
    ready.pop_back();
    if (v == ntax) continue;
    const int a = tree[at(v)];
    sum[at(a)] += sum[at(v)];
    if (--waiting[at(a)] == 0) ready.push_back(a);
  }
  return sum;
}

}  // namespace

record random_tree(int ntax, std::mt19937& random, double polytomy, double absent) {
  std::uniform_real_distribution<double> chance(0, 1);
  std::vector<int> terminals(at(ntax));
  std::iota(terminals.begin(), terminals.end(), 0);
  std::shuffle(terminals.begin(), terminals.end(), random);
  record up(at(2 * ntax - 1), 0);
  std::vector<int> placed{terminals[0], terminals[1]};
  int limit = ntax + 1;
  up[at(placed[0])] = up[at(placed[1])] = ntax;
  for (std::size_t i = 2; i < terminals.size(); ++i) {
    if (chance(random) < absent) continue;
    const int t = terminals[i];
    const int x = placed[random() % placed.size()];
    placed.push_back(t);
    if (chance(random) < polytomy) {
      up[at(t)] = up[at(x)];
    } else {
      up[at(limit)] = up[at(x)];
      up[at(t)] = up[at(x)] = limit;
      placed.push_back(limit++);
    }
  }
  std::vector<int> number(at(limit - ntax));
  std::iota(number.begin(), number.end(), ntax);
  std::shuffle(number.begin() + 1, number.end(), random);
  record tree(up.size(), 0);
  for (int v = 0; v < limit; ++v) {
    if (v == ntax || (v < ntax && up[at(v)] == 0)) continue;
    tree[at(v < ntax ? v : number[at(v - ntax)])] = number[at(up[at(v)] - ntax)];
  }
  tree[at(ntax)] = limit;
  return tree;
}

record caterpillar(int ntax) {
  record tree(at(2 * ntax - 1), 0);
  for (int t = 0; t < ntax; ++t) tree[at(t)] = ntax + std::min(t, ntax - 2);
  for (int v = ntax + 1; v < 2 * ntax - 1; ++v) tree[at(v)] = v - 1;
  tree[at(ntax)] = 2 * ntax - 1;
  return tree;
}

std::vector<std::uint64_t> clades(const record& tree, int ntax) {
  std::vector<std::uint64_t> sum = sums(tree, ntax);
  std::erase(sum, 0U);
  std::sort(sum.begin(), sum.end());
  return sum;
}

std::vector<std::uint64_t> splits(const record& tree, int ntax) {
  std::vector<std::uint64_t> sum = sums(tree, ntax);
  const std::uint64_t whole = sum[at(ntax)];
  for (std::uint64_t& s : sum) {
    if (s != 0) s = std::min(s, whole - s);
  }
  std::erase(sum, 0U);
  std::sort(sum.begin(), sum.end());
  sum.erase(std::unique(sum.begin(), sum.end()), sum.end());
  return sum;
}

}  // namespace zeb_test
