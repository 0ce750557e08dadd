// qnelsen: quick consensus.
#include <span>

#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "consensus/majority_consensus.h"
#include "console/output.h"
#include "engine/collapsing/collapsing.h"
#include "language/interpreter.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "search/search_context.h"
#include "search/search_journal.h"
#include "supports/commands.h"
#include "supports/quick_consensus.h"
#include "trees/drawing/display.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr command_options rows = {
    number<&quick_consensus_settings::replications>("replications", {1, 100000},
                                                    "Give number of qnelsen replications",
                                                    "Can't do %i replications (max=100000)")
        .bare()
        .help("searches to do"),
    number<&quick_consensus_settings::cut>("cut", {50, 100}, "Cutoff must be 50-100",
                                           "Cutoff must be 50-100 (not %i)")
        .help("show groups in more than N per cent of the trees, 50 to 100"),
    choice<&quick_consensus_settings::swapper>("spr", mult_settings::spr).help("swap by SPR"),
    choice<&quick_consensus_settings::swapper>("tbr", mult_settings::tbr)
        .help("swap each tree by TBR"),
    choice<&quick_consensus_settings::swapper>("wagner", mult_settings::wagner_only)
        .help("don't swap"),
};

void list_settings() {
  const char* swappers[] = {"no swapping (Wagner trees only)", "SPR", "TBR"};
  emit("Quick consensus:\n     * ", quick_consensus.replications, " replications\n");
  emit("     * Branch swapping: ", swappers[quick_consensus.swapper], "\n");
  emit("     * Groups in more than ", quick_consensus.cut, "% of the trees\n");
}

}  // namespace

constexpr option_table qnelsen_options =
    rows.table("qnelsen", {.unknown = "Unidentified string in qnelsen options: %s",
                           .wrong_sign = "Wrong argument for qnelsen: %c"})
        .with_changes([] { return changed_options(quick_consensus, qnelsen_options); });

void qnelsen_command() {
  const option_outcome outcome = read_search_options(quick_consensus, qnelsen_options);
  if (outcome == option_outcome::list) list_settings();
  if (outcome != option_outcome::run) return;
  require_data("doing a quick consensus");
  if (store.maxtrees < 1) error_end("No space to store new trees (increase maxtrees)");
  const std::vector<std::vector<tree_node>> trees = replicated_trees(quick_consensus);
  if (interrupted()) emit("Search was interrupted...\n");
  note_search(qnelsen_options,
              {.replications = static_cast<int>(trees.size()), .interrupted = interrupted()});
  if (trees.empty()) return;
  tree_selection selection;
  selection.ntax = matrix.ntax;
  for (const std::vector<tree_node>& tree : trees) selection.trees.emplace_back(tree);
  selection.collapse = collapsing.temporary && collapsing.rule != 0;
  selection.low_memory = consensus.low_memory_always && !selection.collapse;
  const group_tree result = majority_consensus(selection, quick_consensus.cut);
  std::vector<std::string> texts(result.values.size());
  for (std::size_t n = 0; n < texts.size(); ++n)
    if (result.values[n] >= 0)
      texts[n] = std::to_string(result.values[n] * 100LL / static_cast<long long>(trees.size()));
  draw_tree(result.tree,
            text_of("Quick consensus (from %i replications, cut %i)",
                    static_cast<int>(trees.size()), quick_consensus.cut),
            texts);
}

}  // namespace zeb
