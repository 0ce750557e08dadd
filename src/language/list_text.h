// Lists as text: what a command that shows or writes elements puts out.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace zeb {

/// The elements from 0 to `count`-1 that satisfy `holds`, as items that the list parser reads: a
/// number each, and "N.M" for three or more in a row.
std::vector<std::string> list_items(int count, const std::function<bool(int)>& holds);

/// The words with a blank in front of each, broken into lines of less than 80 columns, of which the
/// second and later ones are indented; the first one begins at `column`.
std::string wrapped_words(const std::vector<std::string>& words, std::size_t column);

}  // namespace zeb
