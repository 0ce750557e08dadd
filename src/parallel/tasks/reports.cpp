#include "parallel/tasks/reports.h"

#include <algorithm>

#include "base/command.h"
#include "console/text_buffer.h"
#include "matrix/matrix.h"
#include "parallel/tasks/task_state.h"
#include "parallel/tasks/tree_loads.h"
#include "search/search_session.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// Its instructions are over, and it isn't to follow others, or to go back in them.
bool is_done() {
  const bool goes_back = task.wanted_tag >= 0 && task.wanted_back;
  return task.at_return && task.agains == 0 && !goes_back;
}

int stage_of_search() {
  constexpr int finished = 9;
  if (is_done()) return finished;
  const search_context* const search = running_search();
  return search ? std::min(search->shown.stage + 1, finished - 1) : 0;
}

}  // namespace

void count_search(const search_context& search) {
  task.rearrangements.add(search.rearrangements);
  task.replications += std::max(search.shown.replication, 0);
  const double best = search.best_score;
  if (best >= 0 && (task.best_score < 0 || best < task.best_score)) task.best_score = best;
}

task_status status_of_task() {
  task_status now;
  const search_context* const search = task.at_return ? nullptr : running_search();
  rearrangement_counter done = task.rearrangements;
  now.replications = task.replications;
  now.score = task.best_score;
  if (search) {
    done.add(search->rearrangements);
    now.replications += std::max(search->shown.replication, 0);
    if (search->best_score >= 0 && (now.score < 0 || search->best_score < now.score))
      now.score = search->best_score;
  }
  if (now.score >= 0) now.score += task.score_offset;
  now.rearrangements_high = done.high;
  now.rearrangements_low = done.low;
  now.trees = matrix.present ? store.ntrees : 0;
  now.finished = is_done();
  now.stage = stage_of_search();
  now.paused = task.paused;
  now.wait = task.parents_wait;
  now.tag = task.tag;
  const bool swaps = task.swap.how != swap_orders::way::none && task.shown_command.empty();
  now.command = task.failed                  ? "ERROR"
                : task.receiving             ? task_status().command
                : swaps                      ? "swap"
                : task.shown_command.empty() ? command.command_name
                                             : task.shown_command;
  return now;
}

task_result result_of_task() {
  const return_options& wanted = task.to_return;
  task_result result;
  result.taxa = matrix.ntax;
  result.with_trees = wanted.trees || task.is_sector;
  result.with_text = wanted.text;
  result.with_groups = wanted.groups;
  result.with_value = wanted.value_given;
  result.value = wanted.value;
  result.failed = task.failed;
  result.error = task.error;
  result.polytree = wanted.polytree;
  if (result.with_trees && matrix.present) result.load = trees_in_memory(wanted.groups);
  if (wanted.text)
    for (std::size_t i = 0; i < display_buffer.lines(); ++i)
      result.text.push_back(display_buffer.line(i));
  return result;
}

}  // namespace zeb
