// `ratchet`: options, run and summary.
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/options.h"
#include "search/commands.h"
#include "search/distinct_trees.h"
#include "search/drivers/cycle_options.h"
#include "search/drivers/ratchet.h"
#include "search/search_session.h"
#include "search/store/filter.h"

namespace zeb {
namespace {

constexpr auto cycles = &ratchet_settings::cycles;

constexpr command_options rows = {
    number<cycles, &cycle_settings::iterations>("iterations", {0, 100000},
                                                "Give number of rat iterations",
                                                "Can't do %i ratchet iterations (max=100000)")
        .help("cycles"),
    number<cycles, &cycle_settings::numsubs>("numsubs", {0, 1'000'000},
                                             "Give number of ratchet substitutions",
                                             "Can't do %i ratchet substitutions (max=1000000)")
        .help("moves accepted in one perturbation, at most"),
    number<&ratchet_settings::upfactor>("upfactor", {0, 100}, "Give ratchet up factor")
        .help("per cent of the characters whose weight is doubled"),
    number<&ratchet_settings::downfactor>("downfactor", {0, 100}, "Give ratchet down factor")
        .help("per cent of the characters whose weight becomes 0"),
    toggle<&ratchet_settings::automatic>("auto").help(
        "both by the number of informative characters, and moves by that of taxa"),
    equals_option<cycles>().help("one cycle in two or three keeps the weights, and takes moves to "
                                 "trees that are as good"),
    giveup_option<cycles>().help("a perturbation clips N per cent of the nodes at most"),
    autoconst_option<cycles>("Give number of constrained ratchet cycles"),
    fusefreq_option<cycles>().help(
        "fuse the trees found every N - 1 cycles (3 to 100), in R rounds"),
    dumpfuse_option<cycles>(),
    findscore_option<cycles>().help("stop when a score of X or better is found"),
    toggle<&ratchet_settings::traditional>("tradrat").help(
        "perturb by swapping the reweighted data to the end; sets noequals"),
};

void check_settings(ratchet_settings& wanted, option_outcome outcome) {
  check_cycles(wanted.cycles);
  if (wanted.traditional) wanted.cycles.equals = false;
  if (outcome != option_outcome::run) return;
  if (!wanted.automatic && wanted.upfactor == 0 && wanted.downfactor == 0 &&
      !wanted.cycles.equals) {
    error_end("Ratchet must do at least one of equals, up, or down --all three are off!");
  }
}

void list_settings() {
  std::vector<std::string> lines = {text_of("%i iterations", ratchet.cycles.iterations)};
  if (ratchet.traditional) {
    lines.push_back("Traditional ratchet: complete swaps of the reweighted data");
  } else {
    lines.push_back(text_of("%i substitutions in each", ratchet.cycles.numsubs));
  }
  if (ratchet.automatic) {
    lines.push_back("Probabilities of up- and down-weighting by the number of characters");
  } else {
    lines.push_back(text_of("Probability of up-weighting: %i", ratchet.upfactor));
    lines.push_back(text_of("Probability of down-weighting: %i", ratchet.downfactor));
  }
  add_lines_of_cycles(ratchet.cycles, "rounds", lines);
  list_lines("Ratchet settings:", lines);
}

void run_ratchet() {
  search_session session;
  const cycle_result result =
      search_from_first_tree(session.context(), "ratchet", [](auto& context, auto task) {
        return ratchet_search(context, context.working_tree, ratchet, task);
      });
  tell_cycles(session.context(), result, "ratchet", ratchet_options, ratchet.cycles);
}

}  // namespace

constexpr option_table ratchet_options =
    rows.table("ratchet", {.unknown = "Unidentified string in ratchet options: %s",
                           .wrong_sign = "Wrong argument for ratchet: %c"})
        .with_changes([] { return changed_options(ratchet, ratchet_options); });

void ratchet_command() {
  const option_outcome outcome = read_search_options(ratchet, ratchet_options, check_settings);
  if (outcome == option_outcome::list) list_settings();
  if (outcome != option_outcome::run) return;
  require_data("the ratchet");
  if (store.ntrees == 0) error_end("No trees to ratchet");
  run_ratchet();
  condense_if_automatic();
  tell_distinct_trees();
}

}  // namespace zeb
