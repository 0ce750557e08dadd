// `drift`: options, run and summary.
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/options.h"
#include "search/commands.h"
#include "search/distinct_trees.h"
#include "search/drivers/cycle_options.h"
#include "search/drivers/drift.h"
#include "search/search_session.h"
#include "search/store/filter.h"

namespace zeb {
namespace {

constexpr auto cycles = &drift_settings::cycles;
constexpr option_range any_difference = {0, 4294967295.0};

constexpr command_options rows = {
    number<cycles, &cycle_settings::iterations>("iterations", {0, 100000},
                                                "Give number of drift iterations",
                                                "Can't do %i drift cycles (max=100000)")
        .help("cycles"),
    number<cycles, &cycle_settings::numsubs>("numsubs", {0, 1'000'000},
                                             "Give number of drift substitutions",
                                             "Can't do %i drift substitutions (max=1000000)")
        .help("moves accepted in one cycle before it goes down, at most"),
    real<&drift_settings::fitdiff>("fitdiff", any_difference, "Give maximum fit difference")
        .help("moves that make the tree worse by more aren't accepted"),
    real<&drift_settings::rfitdiff>("rfitdiff", any_difference,
                                    "Give maximum relative fit difference")
        .help("nor those with a larger relative fit difference: the steps lost less those gained, "
              "in relation to those lost"),
    real<&drift_settings::xfactor>("xfactor", {0, 100}, "Give maximum factor")
        .help("0 to 100: the larger, the more worse moves are accepted"),
    number<&drift_settings::flat>("flat", {}, "Give number of \"flat\" iterations")
        .help("the first N cycles go by rflat and flatnumsubs"),
    real<&drift_settings::rflat>("rflat", any_difference,
                                 "Give relative fit difference for \"flat\" iterations")
        .help("rfitdiff of those cycles; at first the same as of the others"),
    number<&drift_settings::flatnumsubs>("flatnumsubs", {0, 1'000'000},
                                         "Give number of drift substitutions",
                                         "Can't do %i drift substitutions (max=1000000)")
        .help("numsubs of those cycles"),
    giveup_option<cycles>().help("a perturbation clips N per cent of the nodes at most"),
    equals_option<cycles>().help("every other cycle accepts no worse moves, only trees that are as "
                                 "good; not under implied weights"),
    toggle<&drift_settings::pert>("pert").help(
        "accept worse moves; without, drift wanders among equally good trees"),
    autoconst_option<cycles>("Give number of constrained drift cycles"),
    fusefreq_option<cycles>().help("fuse the trees found every N cycles (3 to 100), in R rounds"),
    dumpfuse_option<cycles>(),
    findscore_option<cycles>().help("stop when a score of X or better is found"),
};

void list_settings() {
  const cycle_settings& c = drift.cycles;
  std::vector<std::string> lines = {text_of("%i iterations", c.iterations),
                                    text_of("%i substitutions in each", c.numsubs)};
  if (drift.pert) {
    lines.push_back("Max. absolute fit diff.: " + exact_text(drift.fitdiff));
    lines.push_back(text_of("Max. relative fit diff.: %.2f", drift.rfitdiff));
    lines.push_back(text_of("Rejection factor for suboptimal trees: %.2f", drift.xfactor));
  } else {
    lines.push_back("Never accepting worse trees");
  }
  if (drift.flat > 0) {
    lines.push_back(
        text_of("First %i iterations only accept trees within RFD %.2f\n       ", drift.flat,
                drift.rflat < 0 ? drift.rfitdiff : drift.rflat) +
        text_of("and realize %i substitutions (instead of %i)", drift.flatnumsubs, c.numsubs));
  }
  add_lines_of_cycles(c, "dounds", lines);
  list_lines("Settings for tree-drifting:", lines);
}

void run_drift() {
  search_session session;
  const cycle_result result =
      search_from_first_tree(session.context(), "drift", [](auto& context, auto task) {
        return drift_search(context, context.working_tree, drift, task);
      });
  if (result.single_tree) {
    emit("NOTE: Island has a single tree (no need to continue unperturbated drift)\n");
  }
  tell_cycles(session.context(), result, "drift", drift_options, drift.cycles);
}

}  // namespace

constexpr option_table drift_options =
    rows.table("drift", {.unknown = "Unidentified string in drift options: %s",
                         .wrong_sign = "Wrong argument for drift: %c"})
        .with_changes([] { return changed_options(drift, drift_options); });

void drift_command() {
  const option_outcome outcome = read_search_options(
      drift, drift_options,
      [](const drift_settings& wanted, option_outcome) { check_cycles(wanted.cycles); });
  if (outcome == option_outcome::list) list_settings();
  if (outcome != option_outcome::run) return;
  require_data("drifting");
  if (store.ntrees == 0) error_end("No trees to drift");
  run_drift();
  condense_if_automatic();
  tell_distinct_trees();
}

}  // namespace zeb
