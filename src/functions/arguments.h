// Bracketed arguments of expression functions.
#pragma once

#include <string>
#include <vector>

namespace zeb {

/// "[": "Need opening brackets" without one. "]": "Need closing brackets".
void open_brackets();
void close_brackets();
bool brackets_follow();
/// All values up to "]", at least `least` and at most `most`.
std::vector<double> bracketed_values(std::size_t least, std::size_t most);
/// The same for whole numbers.
std::vector<double> bracketed_whole_values(std::size_t least, std::size_t most);

/// One value as a whole number.
int whole_argument();
/// Checked numbers: of a tree in memory, a node of it, a character, taxon, block or group.
int tree_argument();
int node_argument(int tree);
int character_argument();
int taxon_argument();
int group_argument(int groups);

/// A string argument: a variable that holds one, or a literal word.
std::string string_argument();

}  // namespace zeb
