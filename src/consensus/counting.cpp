#include "consensus/counting.h"

#include "base/arena.h"
#include "base/interrupts.h"
#include "console/output.h"
#include "console/progress.h"

namespace zeb {
namespace {

constexpr std::size_t polling_interval = 64;  // trees

struct note_state {
  bool shown = false;  // of little memory
} note;

}  // namespace

branch_weights::branch_weights(const tree_selection& selection) {
  if (!selection.collapse) return;
  judge_.emplace(collapsing.rule, selection.excluded);
  flags_.resize(2 * static_cast<std::size_t>(selection.ntax), 1);
  // Whatever the rule keeps of the matrix is laid out now, before a tally lies above it.
  of(selection.trees.front());
}

std::span<const std::uint8_t> branch_weights::of(const_tree_span tree) {
  if (judge_) judge_->mark(tree, std::span(flags_).first(tree.size()));
  return flags_;
}

bool count_all_groups(const tree_selection& selection, branch_weights& weights,
                      group_tally& tally) {
  for (std::size_t i = 0; i < selection.trees.size(); ++i) {
    poll_trees("Counting groups", i, selection.trees.size());
    const const_tree_span tree = selection.trees[i];
    if (!tally.count_tree_groups(tree, weights.of(tree), true)) return false;
  }
  clear_progress();
  return true;
}

void poll_trees(std::string_view label, std::size_t tree, std::size_t trees) {
  if (tree % polling_interval != 0) return;
  show_progress(label, static_cast<double>(tree), static_cast<double>(trees));
  check_interrupt();
}

std::size_t bytes_of_small_tally(int ntax) {
  return 3 * node_sets_builder::bytes_needed(ntax) + 1024;
}

void note_low_memory(const tree_selection& selection) {
  if (selection.low_memory || note.shown) return;
  note.shown = true;
  emit("Note: using alternative consensus algorithm\n");
  emit("(memory is insufficient for standard algorithm)\n");
}

}  // namespace zeb
