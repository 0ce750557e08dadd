// Trees for tests from parentheses, as ancestor arrays of 2 * ntax - 1 nodes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zeb_test {

/// "(0 (1 2) 3)" with numbers of terminals. Internal nodes get numbers in order of opening.
std::vector<std::int32_t> tree_of(const std::string& text, int ntax);

}  // namespace zeb_test
