#include "parallel/jobs/tree_selections.h"

#include <algorithm>
#include <cstdint>
#include <numeric>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/random.h"
#include "console/output.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

std::vector<int> read_set() {
  std::vector<std::uint8_t> marks(at(std::max(store.ntrees, 1)), 0);
  const bool given = store.ntrees > 0 && read_list(list_slash_ends, 0, store.ntrees, "tree", marks);
  if (!given) error_end("P-ZEB: no set of source trees specified for selection");
  std::vector<int> set;
  for (int t = 0; t < store.ntrees; ++t)
    if (marks[at(t)]) set.push_back(t);
  return set;
}

/// `count` of the set without repeats.
std::vector<int> drawn(std::vector<int> set, std::size_t count) {
  count = std::min(count, set.size());
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t other = i + static_cast<std::size_t>(draw()) % (set.size() - i);
    std::swap(set[i], set[other]);
  }
  set.resize(count);
  std::sort(set.begin(), set.end());
  return set;
}

/// Tree group i for task i.
std::vector<std::vector<int>> groups_of_trees(int tasks) {
  std::vector<std::vector<int>> groups;
  for (int g = 0; g < tree_groups.limit; ++g) {
    if (!tree_group_defined(g)) continue;
    groups.emplace_back();
    for (int t = 0; t < store.ntrees; ++t)
      if (in_tree_group(t, g)) groups.back().push_back(t);
  }
  if (at(tasks) > groups.size()) error_end("P-ZEB: \"trees *\" : more tasks than tree groups!");
  groups.resize(at(tasks));
  const bool some_empty = std::any_of(groups.begin(), groups.end(),
                                      [](const std::vector<int>& g) { return g.empty(); });
  if (some_empty) warning("P-ZEB: \"trees*\": some tasks receive no trees");
  return groups;
}

void add_selection(const tree_selection_request& selection,
                   std::vector<std::vector<int>>& of_tasks) {
  const std::size_t tasks = of_tasks.size();
  const std::size_t size = selection.set.size();
  for (std::size_t i = 0; i < tasks; ++i) {
    std::vector<int> more;
    if (selection.count > 0) {
      more = drawn(selection.set, at(selection.count));
    } else {
      const auto first = selection.set.begin() + static_cast<std::ptrdiff_t>(size * i / tasks);
      const auto end = selection.set.begin() + static_cast<std::ptrdiff_t>(size * (i + 1) / tasks);
      more.assign(first, end);
    }
    for (const int t : more)
      if (std::find(of_tasks[i].begin(), of_tasks[i].end(), t) == of_tasks[i].end())
        of_tasks[i].push_back(t);
  }
}

}  // namespace

void read_tree_selection(tree_choice& choice) {
  if (accept_char('*')) {
    if (choice.how != tree_choice::way::unsaid)
      error_end("P-ZEB: \"trees *\" must be the first selection of trees");
    choice.how = tree_choice::way::groups;
    return;
  }
  if (choice.how == tree_choice::way::groups)
    error_end("P-ZEB: \"trees *\" can't be combined with other selections");
  if (choice.selections.size() >= most_selections)
    error_end_f("P-ZEB: cannot define more than %i different tree selections",
                static_cast<int>(most_selections));
  tree_selection_request selection;
  if (!accept_char('.')) {
    double count = 0;
    if (!read_optional_whole(&count) || count < 1 || count > 1e9)
      error_end("P-ZEB: must give the number of trees to send (1 or more)");
    selection.count = static_cast<int>(count);
  }
  selection.set = read_set();
  choice.how = tree_choice::way::selections;
  choice.selections.push_back(std::move(selection));
}

std::vector<std::vector<int>> trees_of_tasks(const tree_choice& choice, int tasks, bool again) {
  std::vector<std::vector<int>> of_tasks(at(tasks));
  switch (choice.how) {
    case tree_choice::way::groups:
      return groups_of_trees(tasks);
    case tree_choice::way::selections:
      for (const tree_selection_request& s : choice.selections) add_selection(s, of_tasks);
      return of_tasks;
    case tree_choice::way::none:
      return of_tasks;
    case tree_choice::way::unsaid:
      if (again) return of_tasks;
      break;
    case tree_choice::way::all:
      break;
  }
  for (std::vector<int>& trees : of_tasks) {
    trees.resize(at(store.ntrees));
    std::iota(trees.begin(), trees.end(), 0);
  }
  return of_tasks;
}

void tell_tree_choice(const tree_choice& choice, const std::vector<std::vector<int>>& trees) {
  if (choice.how == tree_choice::way::groups) {
    emit("       Sending each slave task a group of trees\n");
  } else if (store.ntrees == 0) {
    emit("       No trees sent to tasks (no trees in memory)\n");
  } else if (!trees.empty() && !trees[0].empty()) {
    emit(
        text_of("       Sending %i trees to each slave task\n", static_cast<int>(trees[0].size())));
  }
}

}  // namespace zeb
