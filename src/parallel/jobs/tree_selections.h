// The trees that a job's tasks get.
#pragma once

#include <vector>

#include "parallel/messages/contents.h"

namespace zeb {

constexpr std::size_t most_selections = 8;

/// "trees N S": so many of the set, drawn for each task.
struct tree_selection_request {
  int count = 0;  // 0: "." the set is divided among the tasks
  std::vector<int> set;
};

struct tree_choice {
  enum class way { unsaid, none, all, groups, selections };
  way how = way::unsaid;
  bool groups_go_along = false;
  std::vector<tree_selection_request> selections;
};

/// Reads what stands after `trees` into the choice. Errors as told.
void read_tree_selection(tree_choice& choice);
/// The trees for each of `tasks` tasks. `unsaid` stands for all trees, or for none with `again`.
std::vector<std::vector<int>> trees_of_tasks(const tree_choice& choice, int tasks, bool again);
/// Says what is sent.
void tell_tree_choice(const tree_choice& choice, const std::vector<std::vector<int>>& trees);

}  // namespace zeb
