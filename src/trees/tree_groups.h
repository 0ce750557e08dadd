// Groups of trees: named sets of trees in the buffer, one bit of each tree's row for each group.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

/// Which groups there are. Written by the functions below.
struct tree_group_state {
  int limit = 32;                      // groups, set by `tgroup +N` before data are read
  std::vector<std::uint32_t> defined;  // a bit for each group that exists
  std::vector<std::string> names;      // `limit` names with data, none without
  int next_automatic = 0;              // cycles from 0 to limit - 1
  int last_automatic = -1;             // group made last by automatic placing; -1 none
  bool automatic = true;               // `tgroup [no]auto`
};
extern tree_group_state tree_groups;

bool in_tree_group(int tree, int group);
/// The tree becomes a member, and the group exists.
void add_to_tree_group(int tree, int group);
void set_tree_group_member(int tree, int group, bool member);
/// Takes all trees out of the group.
void clear_tree_group(int group);
bool tree_group_defined(int group);
/// The group exists, under its former name if `name` is empty.
void define_tree_group(int group, std::string_view name);
/// The group is empty, doesn't exist and has the name it began with.
void undefine_tree_group(int group);

/// Trees `first` to `last` - 1 become the next automatic group. Nothing happens while automatic
/// groups are off.
void group_automatically(int first, int last, std::string_view name);
void set_automatic_groups(bool on);
/// How many groups there can be, above 0; before data are read.
void set_tree_group_limit(int limit);

/// Group names for new data; no group exists.
void name_tree_groups();
/// Data are gone, and all groups with them. The settings stay.
void forget_tree_groups();

}  // namespace zeb
