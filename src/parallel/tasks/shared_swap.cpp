#include "parallel/tasks/shared_swap.h"

#include <algorithm>

#include "base/command.h"
#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "engine/passes/passes.h"
#include "parallel/tasks/siblings.h"
#include "parallel/tasks/swap_leader.h"
#include "parallel/tasks/swap_worker.h"
#include "parallel/tasks/task_state.h"
#include "search/search_report.h"
#include "search/search_session.h"
#include "search/store/stored_trees.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

held_tree tree_to_swap(search_context& context) {
  fetch_tree(context, slot_tree(context, store.ntrees - 1));
  held_tree held;
  held.tree.assign(context.working_tree.begin(), context.working_tree.end());
  held.score = tree_length(context.data, held.tree);
  return held;
}

void lead(search_context& context, const swap_orders& orders) {
  const held_tree start = tree_to_swap(context);
  context.best_score = start.score;
  const held_tree best = swap_leader(context, orders, start).run();
  replace_tree(context, best.tree, store.ntrees - 1, tree_length(context.data, best.tree));
  emit(text_of("Parallel TBR of one tree: from score %s to %s, %i versions of the tree%s.\n",
               score_text(context.data, start.score).c_str(),
               score_text(context.data, best.score).c_str(), best.version,
               interrupted() ? " (interrupted)" : ""));
}

void take_part(const swap_orders& orders) {
  search_session session;
  search_context& context = session.context();
  context.shown.stage = stage_tbr;
  if (task.number == leader_of_swap) return lead(context, orders);
  if (!swap_worker(context, orders).run())
    error_end("P-ZEB: the task that leads the swap is gone, and the tree with it");
}

}  // namespace

void swap_with_siblings(const swap_orders& orders) {
  if (!std::ranges::count(orders.tasks, task.number) || store.ntrees == 0) return;
  const jump_context around;
  try {
    take_part(orders);
  } catch (const command_unwinding&) {
    note_failed_task("the swap was broken off");
    for (const std::int32_t number : orders.tasks) {
      if (number == task.number) continue;
      const bool leads = task.number == leader_of_swap;
      if (leads || number == leader_of_swap)
        send_to_sibling(number, leads ? swap_word::over : swap_word::leaving);
    }
  }
  forget_interrupt();
  if (task.number != leader_of_swap) set_tree_count(store, store.ntrees - 1);
}

}  // namespace zeb
