// "=N" and ">N" in front of trees to be read: the tree group that they go to.
#pragma once

namespace zeb {

/// The group that trees read by one command are placed in.
struct target_group {
  int number = -1;       // -1: none
  bool replace = false;  // "=N": the group is emptied first
  void start() const;
  void add(int tree) const;
};

/// Reads "=N" or ">N" where one comes next. Error for a group out of range.
target_group read_target_group();

}  // namespace zeb
