// `mult`: options, run and summary of replicated searches.
#include <algorithm>
#include <cstdint>

#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "language/options.h"
#include "search/commands.h"
#include "search/distinct_trees.h"
#include "search/drivers/addition_options.h"
#include "search/drivers/mult.h"
#include "search/search_journal.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/search_session.h"
#include "search/store/filter.h"
#include "trees/constraints/constraints.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr auto addition = &mult_settings::addition;

constexpr command_options rows = {
    number<&mult_settings::replications>("replications", {0, 100000},
                                         "Give number of mult replications",
                                         "Can't do %i random addition sequences (max=100000)")
        .bare()
        .help("replications, 0 to 100000"),
    choice<&mult_settings::swapper>("spr", mult_settings::spr).help("swap with SPR"),
    choice<&mult_settings::swapper>("tbr", mult_settings::tbr).help("swap with TBR"),
    choice<&mult_settings::swapper>("wagner", mult_settings::wagner_only)
        .help("no swapping: Wagner trees only"),
    toggle<&mult_settings::ratchet>("ratchet").help("the ratchet after TBR, as \"ratchet\" has it"),
    toggle<&mult_settings::drift>("drift").help(
        "drift after TBR (and the ratchet), as \"drift\" has it"),
    ras_option<addition>(),
    cas_option<addition>(),
    fas_option<addition>(),
    ias_option<addition>(),
    sas_option<addition>(),
    number<&mult_settings::outfreq>("outfreq", {0, 1'000'000'000},
                                    "Give number of clips between reports")
        .help("clips between two looks at the clock and the keyboard; 0: by the size of the data"),
    number<addition, &addition_settings::cluster_from>(
        "wcluster", {}, "Expected number of taxa above which wagner trees use node-clusters")
        .no()
        .help("Wagner trees use node clusters after N taxa"),
    number<&mult_settings::hold>("hold", {}, "Give number of trees per replication")
        .help("trees saved in a replication; hold 0 or 1 swaps a single tree, which is the fastest "
              "way down"),
    toggle<&mult_settings::keepall>("keepall").help(
        "keep the trees of all replications, not only the best"),
};

/// What the options say together.
void check_settings(mult_settings& wanted, option_outcome outcome) {
  settle_additions(wanted.addition);
  if (outcome == option_outcome::run) {
    check_additions(wanted.addition, randomness.random_insertion, constraints.active);
  }
}

void list_settings() {
  const char* swappers[] = {"no swapping (Wagner trees only)", "SPR", "TBR"};
  emit("Multiple addition sequences:\n     * ", mult.replications, " replications\n");
  emit("     * Addition sequence: ", addition_text(mult.addition), "\n");
  emit("     * Branch swapping: ", swappers[mult.swapper], "\n");
  if (mult.ratchet) {
    emit("     * Ratchet after TBR: ", ratchet.cycles.iterations, " iterations\n");
  }
  if (mult.drift) {
    emit("     * Drifting after TBR: ", drift.cycles.iterations, " iterations\n");
  }
  emit("     * ", mult.hold, " trees saved per replication\n");
  emit(mult.keepall ? "     * Keeping trees of all replications\n"
                    : "     * Keeping best trees only\n");
  if (mult.addition.cluster_from > 0) {
    emit("     * Wagner trees use node clusters after ", mult.addition.cluster_from, " taxa\n");
  }
  if (mult.outfreq > 0) emit("     * Looking at the report every ", mult.outfreq, " clips\n");
}

/// Neither is fatal: the search goes on, and ends early if it must.
void warn_of_memory() {
  const std::int64_t room = store.maxtrees;
  const std::int64_t trees = store.ntrees;
  if (!swaps(mult)) {
    if (trees + mult.replications > room) {
      warning_f("Doing %i wagner trees may fill memory (available treespace is %i)",
                mult.replications, static_cast<int>(room - trees));
    }
  } else if (static_cast<std::int64_t>(mult.replications) * mult.hold + trees > room) {
    warning_f(
        "%i reps. with %i trees each exceeds available treespace (%i)\nSearch may have to be "
        "interrupted if tree-buffer is filled",
        mult.replications, mult.hold, static_cast<int>(room - trees));
  }
}

void filter_trees(search_context& context, const mult_result& result, int trees_before) {
  if (!mult.keepall && result.best < unknown_score) {
    if (mult.ratchet)
      recheck_trees(context, result.best);
    else
      filter_by_score(context, result.best);
  }
  tell_equal_as_collapsed(drop_equal_by_full_rule(context));
  if (store.ntrees > 0) {
    group_automatically(mult.keepall ? trees_before : 0, store.ntrees, "random_addseqs");
  }
}

void summarise(const search_context& context, const mult_result& result) {
  if (interrupted()) {
    emit("Search was interrupted...\n");
  } else if (!result.buffer_full) {
    emit(text_of("Completed %i random addition sequences.\n", result.replications_done));
  }
  if (swaps(mult)) tell_rearrangements(context, mult.swapper == mult_settings::tbr);
}

void tell_hits(const search_context& context, const mult_result& result) {
  const search_rules& rules = context.rules;
  if (!rules.collapse.automatic && rules.collapse.rule > 2 && rules.suboptimal > 0) {
    emit("Note: some trees of different length may become identical if collapsed.\n");
  }
  const char* names[] = {":", " (SPR):", " (TBR):"};
  emit(text_of("Best score hit %i times out of %i", result.hits, result.replications_done),
       result.overflowed ? " (some replications overflowed)" : "",
       text_of(".\nBest score%s %s.  %i trees retained.\n", names[mult.swapper],
               score_text(context.data, result.best).c_str(), context.trees.ntrees));
}

void run_mult() {
  search_session session;
  search_context& context = session.context();
  warn_of_memory();
  const int trees_before = store.ntrees;
  seed_generator(context.random);
  const mult_result result = mult_search(context, mult, {ratchet, drift, fusing});
  disarm_time_limit();
  if (trees_before == 0 || result.buffer_full)
    note_full_buffer(result.buffer_full || store.ntrees == store.maxtrees);
  summarise(context, result);
  filter_trees(context, result, trees_before);
  tell_hits(context, result);
  keep_hits(result.hits);
  keep_best_score(result.best);
  note_search(mult_options, {.best = result.best,
                             .score = score_text(context.data, result.best),
                             .hits = result.hits,
                             .replications = result.replications_done,
                             .trees = context.trees.ntrees,
                             .rearrangements = context.rearrangements.total(),
                             .interrupted = interrupted()});
}

}  // namespace

constexpr option_table mult_options =
    rows.table("mult", {.unknown = "Unidentified string in mult options: %s",
                        .wrong_sign = "Wrong argument for mult: %c"})
        .with_changes([] { return changed_options(mult, mult_options); });

void mult_command() {
  const option_outcome outcome = read_search_options(mult, mult_options, check_settings);
  set_clips_between_reports(mult.outfreq);
  if (outcome == option_outcome::list) list_settings();
  if (outcome != option_outcome::run) return;
  run_mult();
  condense_if_automatic();
  tell_distinct_trees();
}

}  // namespace zeb
