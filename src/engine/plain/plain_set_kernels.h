// The loops of plain optimisation over the columns of one node.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zeb {

/// Sets of a node with two descendants: the intersection, or the union where it is empty, which is
/// a step. `reach` gets the states that cost at most one step more.
void plain_down(const std::uint32_t* left, const std::uint32_t* right, std::uint32_t* down,
                std::uint32_t* reach, std::int32_t* steps, std::size_t columns) noexcept;

/// Final sets from the ancestor's; `observed` has the states that occur in each column.
void plain_final(const std::uint32_t* ancestor, const std::uint32_t* down,
                 const std::uint32_t* reach, const std::uint32_t* observed, std::uint32_t* final,
                 std::size_t columns) noexcept;

}  // namespace zeb
