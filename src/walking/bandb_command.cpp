// `bandb`: a piece of script for each tree that grows taxon by taxon; the script says which are
// worth going on with.
#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/command.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/bodies.h"
#include "macro/body_text.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/script_text.h"
#include "matrix/matrix.h"
#include "trees/generated_trees.h"
#include "trees/tree_store.h"
#include "walking/commands.h"
#include "walking/growing_trees.h"
#include "walking/walk_nesting.h"
#include "walking/working_tree.h"

namespace zeb {
namespace {

class growing_items : public body_items {
 public:
  explicit growing_items(const std::vector<int>& taxa)
      : taxa_(taxa), trees_(taxa, matrix.ntax), tree_(at(matrix.nnodes), 0) {
    if (settings.report) report_line("Start generating trees...");
  }

  bool next() override {
    const bool more = trees_.next(!std::exchange(cut_, false));
    tell_percent_swapped(more ? trees_.percent() : 100);
    if (!more) return false;
    trees_.write(tree_);
    working_.put(tree_);
    tell_growing_tree(trees_.complete(), trees_.taxon_added());
    return true;
  }
  // What is left is a tree without any groups.
  void over() override {
    std::vector<int> up(at(matrix.ntax) + 1, -1);
    for (const int taxon : taxa_) up[at(taxon)] = matrix.ntax;
    record_from_ancestors(up, tree_, matrix.ntax);
    working_.put(tree_);
    working_.keep();
    if (settings.report) report_line("Finished generating trees");
  }
  std::string place() const override {
    return text_of("bandb (taxon %i added)", trees_.taxon_added());
  }
  void cut() { cut_ = true; }

 private:
  std::vector<int> taxa_;
  growing_trees trees_;
  std::vector<tree_node> tree_;
  working_tree working_{"Increase maxtrees to branch-and-bound on tree"};
  bool cut_ = false;
};

growing_items& growing_in_work() {
  require_macros();
  check_end();
  body_record& body = reach_body(body_kind::moves, "bandb");
  auto* items = dynamic_cast<growing_items*>(body.items.get());
  if (!items) error_end(command.command_name, "valid only within bandb");
  return *items;
}

}  // namespace

void bandb_command() {
  require_macros();
  check_enumeration_nesting();
  require_data("making trees");
  const std::vector<int> taxa = taxa_of_generated_trees();
  if (store.ntrees >= store.maxtrees)
    error_end("Increase maxtrees to branch-and-bound on tree", store.ntrees);
  body_record body = capture_body(body_kind::moves);
  body.items = std::make_unique<growing_items>(taxa);
  enter_body(std::move(body));
}

void cutbranch_command() {
  growing_in_work().cut();
  skip_to_body_end();
}

void endbranch_command() {
  growing_in_work().end();
  skip_to_body_end();
}

}  // namespace zeb
