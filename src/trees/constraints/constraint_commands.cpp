// `constrain`: searches obey the constraints or not. `mono`: which trees fulfil them.
#include "base/errors.h"
#include "base/indices.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "language/toggles.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/constraints/constraint_test.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {

void constrain_command() {
  no_timing();
  activate_constraints(read_toggle(constraints.active));
  show_toggle(constraints.active, "Constraints", true);
}

void mono_command() {
  require_data("testing trees");
  const bool counts = accept_char('*');
  const bool violating = accept_char('-');
  const std::vector<std::uint8_t> chosen = read_tree_list();
  check_end();
  require_constraints();
  constraint_test test;
  std::vector<std::uint8_t> listed(chosen.size(), 0);
  for (int t = 0; t < store.ntrees; ++t) {
    if (!chosen[at(t)]) continue;
    const constraint_test::verdict verdict = test.judge(stored_tree(t));
    listed[at(t)] = (verdict.violated > 0) == violating;
    if (!counts) continue;
    if (violating) {
      emitf("Tree %i, %i constraints violated", t, verdict.violated);
    } else {
      emitf("Tree %i, %i constraints fulfilled", t, verdict.fulfilled);
    }
  }
  if (counts) return;
  const std::string title =
      violating ? "Tree(s) violating constraints:" : "Tree(s) fulfilling constraints:";
  std::vector<std::string> numbers =
      list_items(store.ntrees, [&listed](int t) { return listed[at(t)] != 0; });
  if (numbers.empty()) numbers = {"none"};
  emit(title, wrapped_words(numbers, title.size()), "\n");
}

}  // namespace zeb
