// Tree tags: a text for each node of one tree, written by many commands, shown by the display.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "trees/tree_store.h"

namespace zeb {

constexpr std::size_t longest_tag_title = 512;

/// Forgets the tag tree and its texts. `tags_on` stays.
void clear_tags();
/// Makes a normalised copy of `tree` the tag tree, with `texts` (by node of `tree`; may be empty),
/// cut to the capacity of a tag. Used by `ttags`, by drawing and by readers of trees with tags.
void set_tag_tree(const_tree_span tree, std::span<const std::string> texts = {},
                  std::string_view title = {});
/// What drawing a tree does while `ttags =` is on: the first tree becomes the tag tree; the texts
/// of later ones are added to those of the nodes with the same terminals, behind "/" (or as a
/// further line, with `ttags [`).
void store_drawn_tags(const_tree_span tree, std::string_view title,
                      std::span<const std::string> texts);
/// A node of the tag tree that can hold a text.
bool is_tag_node(int node);
bool has_any_tag();

/// Removes empty lines of tags with several lines.
void eliminate_empty_tag_lines();
/// The commands that read the tag tree and its tags back.
std::vector<std::string> readable_tags();

/// Tags as numbers, with the symbols "-", "Y", "N", " " and "X" as -1 to -5 where `symbols`. No
/// text is 0. The node of the first tag that is no number goes to `bad_node`, else -1.
std::vector<double> tags_as_numbers(bool symbols, bool internal_only, int* bad_node);
/// Sets tags from numbers by node; further nodes keep theirs.
void tags_from_numbers(std::span<const double> values, bool symbols, bool internal_only);

/// How tags and drawings reach the user's arrays; filled by the macro language at start-up.
struct user_array_access {
  int (*read_name)() = nullptr;                  // reads the name of an array from the input
  std::vector<double> (*values)(int) = nullptr;  // its values
  void (*store)(int array, std::span<const double> values, int columns) = nullptr;  // row by row
};
extern user_array_access user_arrays;

}  // namespace zeb
