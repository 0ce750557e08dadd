// The kinds of elements that lists are made of: taxa, characters, trees, blocks, hosts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zeb {

/// What the parser must know of one kind of element. Registered at start-up by the room that owns
/// the elements; functions that a kind doesn't have are null.
struct list_kind {
  std::string_view noun;     // "taxon", "character", "tree", "vault-tree", "block", "host"
  int (*count)() = nullptr;  // elements there are now
  std::string_view (*name)(int element) = nullptr;  // null: no names; empty: that one has none
  int (*group_count)() = nullptr;                   // null: no groups
  std::string_view (*group_name)(int group) = nullptr;
  bool (*group_defined)(int group) = nullptr;
  bool (*in_group)(int element, int group) = nullptr;
  /// "@B list", for kinds whose elements lie in blocks: the elements of a block (0: all of them),
  /// false where there is no such block; blocks go from 0 to `block_count`.
  bool (*block_range)(int block, int* first, int* end) = nullptr;
  int (*block_named)(std::string_view word) = nullptr;  // -1 none
  int (*block_count)() = nullptr;
  /// A word with a meaning of its own ("myself" for hosts): its element, -1 for any other word.
  int (*special_word)(std::string_view word) = nullptr;
};
/// Adds the kind, or replaces the one with that noun.
void register_list_kind(const list_kind& kind);
/// Error when no such kind was registered.
const list_kind& find_list_kind(std::string_view noun);

/// Elements in [first, end) for which the word is the beginning of the name, case ignored. Names in
/// a matrix have "_" for "+", "-" and "/": where the word as it stands matches nothing, its signs
/// are taken for "_". With approximate matching on, the user is asked before nothing is found.
std::vector<int> elements_named(const list_kind& kind, int first, int end, std::string_view word);
/// Elements whose name contains the text, case ignored.
std::vector<int> elements_containing(const list_kind& kind, int first, int end,
                                     std::string_view text);
/// Is `text` somewhere in `name`, ignoring case?
bool contains_ignoring_case(std::string_view name, std::string_view text);

}  // namespace zeb
