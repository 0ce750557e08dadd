// `randtrees` and `alltrees`: trees made from nothing, added to those in memory.
#include <algorithm>
#include <cmath>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "base/random.h"
#include "console/output.h"
#include "console/progress.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/generated_trees.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

/// Polls for an interrupt about once a second.
class poller {
 public:
  void poll(const char* label, double done, double total) {
    const double now = wall_clock();
    if (now - last_ < 1.0) return;
    last_ = now;
    check_interrupt();
    show_progress(label, done, total);
  }

 private:
  double last_ = wall_clock();
};

}  // namespace

void randtrees_command() {
  require_data("making trees");
  const int wanted = read_int();
  if (wanted < 0) error_end("Must give", "number", "of trees");
  check_end();
  const std::vector<int> taxa = taxa_of_generated_trees();
  const int first = store.ntrees;
  const int count = std::min(wanted, store.maxtrees - first);
  reseed();
  std::vector<tree_node> tree(at(matrix.nnodes));
  poller progress;
  for (int i = 0; i < count; ++i) {
    random_binary_tree(taxa, tree, matrix.ntax);
    std::ranges::copy(tree, take_slot().begin());
    progress.poll("Random trees", i, count);
  }
  clear_progress();
  report_line(count, "random trees made,", store.ntrees, "trees in memory");
  if (count < wanted) {
    report_line("Note: tree buffer is full,", wanted - count, "trees were not made");
  }
}

void alltrees_command() {
  check_end();
  require_data("making trees");
  const std::vector<int> taxa = taxa_of_generated_trees();
  const double total = binary_tree_count(static_cast<int>(taxa.size()));
  const int first = store.ntrees;
  all_binary_trees trees(taxa, matrix.ntax);
  std::vector<tree_node> tree(at(matrix.nnodes));
  poller progress;
  bool complete = true;
  while (trees.next(tree)) {
    if (store.ntrees == store.maxtrees) {
      complete = false;
      break;
    }
    std::ranges::copy(tree, take_slot().begin());
    progress.poll("All trees", store.ntrees - first, total);
  }
  clear_progress();
  const int made = store.ntrees - first;
  report_line(made, "trees made,", store.ntrees, "trees in memory");
  if (!complete) {
    const std::string count = std::isfinite(total) ? text_of("%.15g", total) : "more than 10^308";
    emit("Note: tree buffer is full; there are ", count, " binary trees for ", taxa.size(),
         " taxa\n");
  }
}

}  // namespace zeb
