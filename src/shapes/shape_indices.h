// Indices of the shape of a rooted tree: what it is like when the names of its terminals are gone.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

enum class shape_index : std::size_t { colless, sackin, cophenetic, b1, cherries, depth, variance };
constexpr std::size_t shape_index_count = 7;
constexpr std::array<std::string_view, shape_index_count> shape_index_names = {
    "Colless", "Sackin", "Cophenetic", "B1", "Cherries", "Depth", "Variance"};

/// Values by index. Depth of a terminal: the internal nodes from the root to it.
///   colless     sum over the nodes of the difference in terminals of their two sides; binary trees
///   sackin      sum of the depths of the terminals
///   cophenetic  sum over the pairs of terminals of the depth of their last common node, the root's
///               being 0
///   b1          sum over the internal nodes but the root of 1 / (nodes to the furthest terminal)
///   cherries    nodes with two terminals and nothing else
///   depth       that of the deepest terminal
///   variance    of the depths of the terminals
/// No value: the tree has polytomies, or no terminals.
using shape_values = std::array<std::optional<double>, shape_index_count>;
shape_values indices_of(const_tree_span tree, int ntax);

/// Numbers of shapes, in the order in which they come: the same for trees that differ in names
/// alone.
class shape_classes {
 public:
  int class_of(const_tree_span tree, int ntax);
  int count() const { return static_cast<int>(classes_.size()); }

 private:
  int number_of(std::vector<int> descendants);

  // Nodes of the same shape have the same number: terminals 0, others by those of their
  // descendants.
  std::map<std::vector<int>, int> numbers_;
  std::map<int, int> classes_;  // by number of the root
};

/// The shape as parentheses without names: "((oo)(o(oo)))", the smaller clades first.
std::string shape_text(const_tree_span tree, int ntax);

}  // namespace zeb
