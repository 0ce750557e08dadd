// Lists ("scopes") of taxa, characters, trees, blocks and hosts: one parser, one record per kind.
//
// Items: N, N.M, N., .M, ".", N.M/Z (every Zth), name, :text, {groups}, "@T N" (taxa below a node),
// "@B list" (characters of a block), "+" and "-" (what follows is added or removed).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "language/list_kinds.h"

namespace zeb {

/// Flags of `read_list`.
enum list_flags : unsigned {
  list_plain = 0,
  list_ends_at_signs =
      1,  // "+", "-", "(", ")", "[", "*", "@" end the list: the command uses them itself
  list_slash_ends = 2,           // "/" always ends the list, so ranges have no step
  list_in_tree_buffer = 8,       // a tree past the end is the error "Tree-buffer has" N "trees"
  list_ends_at_plus_minus = 16,  // only "+" and "-" end the list among the signs
  list_bracket_ends = 64,        // "[" ends the list
  list_one_tree = 32,            // with list_in_tree_buffer: a single one is called a "tree"
};

/// Reads a list of elements `first` to `end`-1 into `marks` (one byte per element, indexed from 0;
/// cleared in that range first): 1 for elements of the list. Returns true if at least one item was
/// read. Ends, unread, at & / ; < = > \ and ]. Errors name the kind and the word or number.
/// With `block` above 0 numbers count within that block, as after "@B".
bool read_list(unsigned flags, int first, int end, std::string_view kind,
               std::span<std::uint8_t> marks, int block = 0);

/// Reads the block of "@B", number or name, after the "@". `kind` is one with blocks.
int read_block_reference(const list_kind& kind);
/// Reads "{groups}" from after the "{" and marks the groups given (from 0, `group_count` bytes).
void read_group_references(const list_kind& kind, std::span<std::uint8_t> groups);

/// Marks what "@T N" stands for, from after the "@".
void read_descendants(std::span<std::uint8_t> marks);
/// Can an item of a list begin with this character?
bool starts_list_item(int c);

/// The parser of one list, for commands that read lists item by item among signs and words of their
/// own. Most commands want `read_list`.
class list_reader {
 public:
  /// Sets and clears `marks` of elements `first` to `end`-1; they are taken as they stand.
  list_reader(unsigned flags, int first, int end, const list_kind& kind,
              std::span<std::uint8_t> marks);

  /// From here on numbers count within the block; 0 is the whole range.
  void enter_block(int block);
  bool adding() const { return adding_; }
  /// All items up to the end of the list. True if there was one.
  bool read();
  /// One item, whose first character `c` is next in the input.
  void read_item_at(int c);
  /// The item that a word, already read, stands for.
  void read_item_from(std::string_view word);
  void set(int element) { marks_[static_cast<std::size_t>(element)] = adding_ ? 1 : 0; }

 private:
  void set_range(int from, int to, int step);
  void set_all(const std::vector<int>& elements);
  [[noreturn]] void expected_another() const;
  int element_of(std::int64_t number) const;
  std::int64_t read_number(std::string* word);
  std::int64_t read_word_number(std::string* word);
  std::int64_t number_of_word(std::string_view word) const;
  bool read_range_in(std::string_view word);
  bool is_whole_name(std::string_view word) const;
  void read_numbers();
  void warn_of_sign_in_range(std::int64_t from) const;
  int read_step();
  void read_named();
  void read_containing();
  void read_groups();
  void read_at();

  unsigned flags_;
  int first_;
  int end_;
  const list_kind& kind_;
  std::span<std::uint8_t> marks_;
  bool adding_ = true;
  int block_ = 0;   // block that numbers count in; 0 none
  int base_ = 0;    // element that the number 0 stands for
  int lowest_ = 0;  // elements that may be named now: lowest_ to limit_ - 1
  int limit_ = 0;
};

}  // namespace zeb
