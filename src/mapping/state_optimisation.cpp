#include "mapping/state_optimisation.h"

#include <algorithm>

#include "base/indices.h"

namespace zeb {
state_optimiser::state_optimiser(const state_model& model, const tree_shape& shape,
                                 polytomy_kind polytomies, std::span<const std::uint8_t> allowed)
    : model_(model),
      shape_(shape),
      polytomies_(polytomies),
      n_(model.size()),
      own_(shape.nodes() * n_, 0),
      from_above_(own_.size(), 0),
      rest_(own_.size(), 0),
      whole_(own_.size(), 0) {
  if (n_ == 0) return;
  forbid(allowed);
  for (auto node = shape.inner.rbegin(); node != shape.inner.rend(); ++node) down_node(*node);
  const int root = shape.root();
  for (std::size_t i = 0; i < n_; ++i)
    whole_[index(root, i)] = own(root, i) + model.cost_at_root(i);
  const auto first = whole_.begin() + static_cast<std::ptrdiff_t>(index(root, 0));
  steps_ = *std::min_element(first, first + static_cast<std::ptrdiff_t>(n_));
  for (const int node : shape.inner) final_node(node);
}

void state_optimiser::forbid(std::span<const std::uint8_t> allowed) {
  for (int t = 0; t < matrix.ntax; ++t)
    for (std::size_t i = 0; i < n_; ++i)
      if (!model_.may_have(t, i)) own_[index(t, i)] = impossible_cost;
  if (allowed.empty()) return;
  for (const int node : shape_.inner)
    for (std::size_t i = 0; i < n_; ++i)
      if (!allowed[index(node, i)]) own_[index(node, i)] = impossible_cost;
}

std::int64_t state_optimiser::least_own(int node) const {
  const auto first = own_.begin() + static_cast<std::ptrdiff_t>(index(node, 0));
  return *std::min_element(first, first + static_cast<std::ptrdiff_t>(n_));
}

void state_optimiser::look_from_above(int node) {
  std::int64_t* const above = &from_above_[index(node, 0)];
  const std::int64_t* const mine = &own_[index(node, 0)];
  if (model_.is_unordered()) {
    const std::int64_t changed = least_own(node) + 1;
    for (std::size_t i = 0; i < n_; ++i) above[i] = std::min(mine[i], changed);
    return;
  }
  for (std::size_t i = 0; i < n_; ++i) {
    above[i] = impossible_cost;
    for (std::size_t j = 0; j < n_; ++j) above[i] = std::min(above[i], model_.cost(i, j) + mine[j]);
  }
}

bool state_optimiser::is_resolved(int node) const {
  const int below = shape_.lists.count[at(node)];
  return polytomies_ == polytomy_kind::soft && below > 2 && can_resolve(model_, at(below));
}

std::vector<std::span<const std::int64_t>> state_optimiser::branches_of(int node) const {
  std::vector<std::span<const std::int64_t>> branches;
  for (const int d : shape_.lists.children(node)) branches.push_back(from_above(d));
  return branches;
}

void state_optimiser::down_node(int node) {
  for (const int d : shape_.lists.children(node)) look_from_above(d);
  std::int64_t* const sum = &own_[index(node, 0)];
  if (is_resolved(node)) {
    const soft_costs resolved = resolve_polytomy(model_, branches_of(node));
    std::copy(resolved.own.begin(), resolved.own.end(), sum);
    return;
  }
  for (const int d : shape_.lists.children(node))
    for (std::size_t i = 0; i < n_; ++i)
      sum[i] = std::min(impossible_cost, sum[i] + from_above_[index(d, i)]);
}

/// For the descendants of a node whose `whole_` is known.
void state_optimiser::find_rest(int node) {
  for (const int d : shape_.lists.children(node))
    for (std::size_t i = 0; i < n_; ++i) {
      const std::int64_t whole = whole_[index(node, i)];
      rest_[index(d, i)] =
          whole < impossible_cost ? whole - from_above_[index(d, i)] : impossible_cost;
    }
}

void state_optimiser::find_rest_in_soft_polytomy(int node) {
  std::vector<std::int64_t> outside;
  for (std::size_t i = 0; i < n_; ++i) outside.push_back(whole_[index(node, i)] - own(node, i));
  const soft_costs resolved = resolve_polytomy(model_, branches_of(node), outside);
  auto rest = resolved.rest.begin();
  for (const int d : shape_.lists.children(node)) {
    std::copy(rest->begin(), rest->end(), rest_.begin() + static_cast<std::ptrdiff_t>(index(d, 0)));
    ++rest;
  }
}

void state_optimiser::final_node(int node) {
  if (is_resolved(node))
    find_rest_in_soft_polytomy(node);
  else
    find_rest(node);
  for (const int d : shape_.lists.children(node))
    for (std::size_t j = 0; j < n_; ++j) {
      std::int64_t rest = impossible_cost;
      for (std::size_t i = 0; i < n_; ++i)
        rest = std::min(rest, rest_[index(d, i)] + model_.cost(i, j));
      whole_[index(d, j)] = std::min(impossible_cost, rest + own(d, j));
    }
}

bool state_optimiser::in_final(int node, std::size_t value) const {
  return whole_[index(node, value)] == steps_;
}

branch_range state_optimiser::branch(int node) const {
  if (n_ == 0) return {};
  branch_range range{impossible_cost, 0};
  for (std::size_t i = 0; i < n_; ++i)
    for (std::size_t j = 0; j < n_; ++j) {
      const std::int64_t cost = model_.cost(i, j);
      if (rest_[index(node, i)] + cost + own(node, j) != steps_) continue;
      range.least = std::min(range.least, cost);
      range.most = std::max(range.most, cost);
    }
  return range;
}

}  // namespace zeb
