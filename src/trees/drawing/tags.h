// Tree tags: a text for each node of one tree, written by many commands, shown by the display.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

constexpr std::size_t longest_tag = 127;        // bytes
constexpr std::size_t longest_tag_title = 512;  // bytes

/// Where the tags come from. From a file or computed: they are those of a tree that was stored
/// with them, and nobody has written to them since.
enum class tag_source { hand, file, computed };

/// The tag tree. Written by the functions below.
struct tag_store {
  bool tags_on = false;  // `ttags =`: commands that print trees store their texts
  bool tags_present = false;
  tag_source source = tag_source::hand;
  std::vector<tree_node> tag_tree;     // nnodes
  std::vector<std::string> tag_texts;  // nnodes, each at most longest_tag bytes
  std::string tag_title;               // at most longest_tag_title bytes

  bool tags_add = false;    // `tread [`: texts that are read are added to those there are
  char tag_separator = 0;   // '\\' with `ttags [`
  int tag_width = 0;        // longest line of a tag, characters; 0 no limit
  char tag_position = 'c';  // a, b, c, d
};
extern tag_store tags;

/// Whether commands that print trees store their texts.
void set_tag_storing(bool on);
/// Whether texts that are read are added to those of the nodes with the same terminals.
void set_tag_adding(bool on);
/// Tags in lines, at the separator; `width` and `position` as in the struct.
void separate_tag_lines(int width, char position);
void join_tag_lines();

void note_source_of_tags(tag_source source);
/// Forgets the tag tree and its texts. `tags_on` stays.
void clear_tags();
/// Makes a normalised copy of `tree` the tag tree, with `texts` (by node of `tree`; may be empty),
/// cut to the capacity of a tag. Used by `ttags`, by drawing and by readers of trees with tags.
void set_tag_tree(const_tree_span tree, std::span<const std::string> texts = {},
                  std::string_view title = {});
/// Makes a stored tree the tag tree, with the labels and lengths that it has.
void set_tag_tree_to_stored(int number, tag_source source, std::string_view title = {});
/// What drawing a tree does while `ttags =` is on: the first tree becomes the tag tree; the texts
/// of later ones are added to those of the nodes with the same terminals, after "/" (or as a
/// further line, with `ttags [`).
void store_drawn_tags(const_tree_span tree, std::string_view title,
                      std::span<const std::string> texts);
/// The same as `set_tag_tree`, but what the former tag tree says of nodes with the same terminals
/// stays, before the new texts.
void set_tag_tree_with_former(const_tree_span tree, std::span<const std::string> texts,
                              std::string_view title);
/// A node of the tag tree that can hold a text.
bool is_tag_node(int node);
bool has_any_tag();
/// The text of one node of the tag tree, at most longest_tag bytes; empty removes it.
void set_tag(int node, std::string_view text);
/// Removes the texts of all terminals, or of all internal nodes.
void erase_tags(bool of_terminals);
/// The internal nodes without a text go; what stems from them hangs on their ancestors.
void collapse_untagged_nodes();
/// At most `longest_tag_title` bytes.
void set_tag_title(std::string_view title);

/// Removes empty lines of tags with several lines.
void eliminate_empty_tag_lines();
/// The tag tree as nested parentheses, a tag after each node that has one.
std::string tag_tree_text();
/// The commands that read the tag tree and its tags back.
std::vector<std::string> readable_tags();

/// Tags as numbers, with the symbols "-", "Y", "N", " " and "X" as -1 to -5 where `symbols`. No
/// text is 0. The node of the first tag that is no number goes to `bad_node`, else -1.
std::vector<double> tags_as_numbers(bool symbols, bool internal_only, int* bad_node);
/// Sets tags from numbers by node; further nodes keep theirs.
void tags_from_numbers(std::span<const double> values, bool symbols, bool internal_only);

}  // namespace zeb
