// Lists ("scopes") of taxa, characters, trees, blocks and hosts: one parser, one record per kind.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zeb {

/// What the parser must know of one kind of element. Registered at start-up by the room that owns
/// the elements; functions that a kind doesn't have are null.
struct list_kind {
  std::string_view noun;     // "taxon", "character", "tree", "vault-tree", "block", "host"
  int (*count)() = nullptr;  // elements there are now
  std::string (*name)(int element) = nullptr;  // null: no names
  int (*group_count)() = nullptr;              // null: no groups
  std::string (*group_name)(int group) = nullptr;
  bool (*group_defined)(int group) = nullptr;
  bool (*in_group)(int element, int group) = nullptr;
  /// "@T N" for taxa: marks what descends from node N of tree T. "@B" for characters: see
  /// block_range.
  void (*mark_descendants)(int tree, int node, std::span<std::uint8_t> marks) = nullptr;
  bool (*block_range)(int block, int* first, int* end) = nullptr;  // characters of a block
  int (*block_named)(std::string_view word) = nullptr;             // -1 none
  int (*block_count)() = nullptr;
};
void register_list_kind(const list_kind& kind);
const list_kind& find_list_kind(std::string_view noun);

/// Flags of `read_list`.
enum list_flags : unsigned {
  list_plain = 0,
  list_ends_at_signs =
      1,  // "+", "-", "(", ")", "[", "*", "@" end the list: the command uses them itself
  list_slash_ends = 2,  // "/" always ends the list, so ranges have no step
  list_has_fixed = 4,   // a list fixed by the macro layer may stand in (see fixed_list)
};

/// Reads a list of elements `first` to `end`-1 into `marks` (one byte per element, indexed from 0;
/// cleared in that range first): 1 for elements of the list. Returns true if at least one item was
/// read. Ends, unread, at & / ; < = > \ and ]. Errors name the kind and the word or number.
bool read_list(unsigned flags, int first, int end, std::string_view kind,
               std::span<std::uint8_t> marks);

/// Taxon reference in `tread` and some commands: one element. Returns its number; -1 where the
/// reference stands for several, which are then marked in `marks` ("abc...", "{group}", "@T N").
int read_taxon(std::span<std::uint8_t> marks);

/// `ask_match` and approximate matching: see shell/name_matching.h.

}  // namespace zeb
