// Lists ("scopes") of taxa, characters, trees, blocks and hosts: one parser, one record per kind.
//
// Items: N, N.M, N., .M, ".", N.M/Z (every Zth), name, :text, {groups}, "@T N" (taxa below a node),
// "@B list" (characters of a block), "+" and "-" (what follows is added or removed).
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

/// "@T N" in lists of taxa: marks the terminals that descend from node N of tree T, or terminal N.
/// Raises the error for a tree or node that isn't there; a negative number is a missing one.
using descendant_marker = void (*)(int tree, int node, std::span<std::uint8_t> marks);
void set_descendant_marker(descendant_marker marker);

/// Words that stand for numbers in lists. The macro language plugs `number_of` in while it is on:
/// true and the value for a variable or function of exactly this name, false for other words. A
/// variable comes before an element called like it, a function behind (`names_element`).
struct list_word_source {
  bool (*number_of)(std::string_view word, bool names_element, double* value) = nullptr;
};
extern list_word_source list_words;

/// A list fixed by the macro layer for a kind: fills the marks and returns true, or returns false.
using fixed_list_source = bool (*)(std::string_view kind, int first, int end,
                                   std::span<std::uint8_t> marks);
void set_fixed_list_source(fixed_list_source source);

/// Flags of `read_list`.
enum list_flags : unsigned {
  list_plain = 0,
  list_ends_at_signs =
      1,  // "+", "-", "(", ")", "[", "*", "@" end the list: the command uses them itself
  list_slash_ends = 2,           // "/" always ends the list, so ranges have no step
  list_has_fixed = 4,            // a list fixed by the macro layer may stand in
  list_in_tree_buffer = 8,       // a tree past the end is the error "Tree-buffer has" N "trees"
  list_ends_at_plus_minus = 16,  // only "+" and "-" end the list among the signs
  list_one_tree = 32,            // with list_in_tree_buffer: a single one is called a "tree"
};

/// Reads a list of elements `first` to `end`-1 into `marks` (one byte per element, indexed from 0;
/// cleared in that range first): 1 for elements of the list. Returns true if at least one item was
/// read. Ends, unread, at & / ; < = > \ and ]. Errors name the kind and the word or number.
/// With `block` above 0 numbers count within that block, as behind "@B".
bool read_list(unsigned flags, int first, int end, std::string_view kind,
               std::span<std::uint8_t> marks, int block = 0);

/// Reads the block of "@B", number or name, behind the "@". `kind` is one with blocks.
int read_block_reference(const list_kind& kind);
/// Reads "{groups}" from behind the "{" and marks the groups given (from 0, `group_count` bytes).
void read_group_references(const list_kind& kind, std::span<std::uint8_t> groups);

/// Reference to one taxon, as in parenthetical trees: number, name (an exact match is preferred to
/// the first prefix), ":text". Returns its number; -1 where the reference stands for several, which
/// are then marked in `marks` (one byte per taxon, cleared first): "abc...", "{group}", "@T N".
int read_taxon(std::span<std::uint8_t> marks);

/// The same for a word already read, which is a number, a name or "abc...".
int taxon_of_word(const std::string& word, std::span<std::uint8_t> marks);
/// Is `text` somewhere in `name`, ignoring case?
bool contains_ignoring_case(std::string_view name, std::string_view text);

}  // namespace zeb
