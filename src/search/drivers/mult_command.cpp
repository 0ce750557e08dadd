// `mult`: options, run and summary of replicated searches.
#include <algorithm>
#include <cstdint>

#include "base/errors.h"
#include "console/output.h"
#include "engine/collapsing/collapsing.h"
#include "language/options.h"
#include "search/commands.h"
#include "search/drivers/mult.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/search_session.h"
#include "search/store/full_rule.h"
#include "search/store/stored_trees.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

using option = search_option<mult_settings>;

int look_ahead(int n) { return n < 0 ? all_taxa : n; }

void set_look(mult_settings& m, int n, int rule) {
  m.addition.informative = 0;
  m.addition.look = look_ahead(n);
  m.addition.rule = rule;
}

void refuse_stage(int on, const char* stage) {
  if (on) error_end("The", stage, "stage of mult isn't built yet");
}

option addition_option(std::string_view keyword, void (*apply)(mult_settings&, int)) {
  return {.keyword = keyword,
          .kind = option::argument::optional_number,
          .range = {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()},
          .default_number = all_taxa,
          .has_negative = false,
          .apply = apply};
}

std::vector<option> mult_options() {
  return {
      number("replications", &mult_settings::replications, {0, 100000},
             "Give number of mult replications",
             "Can't do %i random addition sequences (max=100000)"),
      choice<mult_settings>("spr", [](mult_settings& m, int) { m.swapper = mult_settings::spr; }),
      choice<mult_settings>("tbr", [](mult_settings& m, int) { m.swapper = mult_settings::tbr; }),
      choice<mult_settings>("wagner",
                            [](mult_settings& m, int) { m.swapper = mult_settings::wagner_only; }),
      action<mult_settings>("ratchet", [](mult_settings&, int on) { refuse_stage(on, "ratchet"); }),
      action<mult_settings>("drift", [](mult_settings&, int on) { refuse_stage(on, "drift"); }),
      choice<mult_settings>("ras",
                            [](mult_settings& m, int) {
                              m.addition.informative = m.addition.look = m.addition.rule = 0;
                            }),
      addition_option("cas", [](mult_settings& m, int n) { set_look(m, n, 1); }),
      addition_option("fas", [](mult_settings& m, int n) { set_look(m, n, 2); }),
      addition_option("ias",
                      [](mult_settings& m, int n) {
                        m.addition.look = m.addition.rule = 0;
                        m.addition.informative = look_ahead(n);
                      }),
      addition_option("sas", [](mult_settings& m, int n) { set_look(m, n, 0); }),
      number("outfreq", &mult_settings::outfreq, {0, 1'000'000'000},
             "Give number of clips between reports"),
      {.keyword = "wcluster",
       .kind = option::argument::optional_number,
       .range = {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()},
       .default_number = -1,
       .has_negative = false,
       .apply =
           [](mult_settings& m, int n) {
             if (n < 0) {
               error_end("Expected number of taxa above which wagner trees use node-clusters");
             }
             m.addition.cluster_from = n;
           }},
      choice<mult_settings>("nowcluster",
                            [](mult_settings& m, int) { m.addition.cluster_from = 0; }),
      number("hold", &mult_settings::hold, {0, std::numeric_limits<int>::max()},
             "Give number of trees per replication"),
      toggle("keepall", &mult_settings::keepall),
  };
}

std::string look_text(int n) { return n >= all_taxa ? "all taxa" : text_of("%i taxa", n); }

std::string addition_text(const addition_settings& a) {
  if (a.informative > 0) {
    return "by number of informative characters, looking at " + look_text(a.informative);
  }
  if (a.look == 0) return "random";
  const char* names[] = {"greatest difference of best and worst place", "closest", "furthest"};
  return std::string(names[a.rule]) + " first, looking at " + look_text(a.look);
}

void list_settings() {
  const char* swappers[] = {"no swapping (Wagner trees only)", "SPR", "TBR"};
  emit("Multiple addition sequences:\n     * ", mult.replications, " replications\n");
  emit("     * Addition sequence: ", addition_text(mult.addition), "\n");
  emit("     * Branch swapping: ", swappers[mult.swapper], "\n");
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
  if (mult.swapper == mult_settings::wagner_only) {
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

void filter_trees(const mult_result& result, int trees_before) {
  if (!mult.keepall && result.best < unknown_score) filter_by_score(result.best);
  tell_equal_as_collapsed(drop_equal_by_full_rule());
  if (store.auto_group && !searching.silent && store.ntrees > 0) {
    tag_tree_group(mult.keepall ? trees_before : 0, store.ntrees, "random_addseqs");
  }
}

void summarise(const mult_result& result) {
  const bool swaps = mult.swapper != mult_settings::wagner_only;
  if (interrupted()) {
    emit("Search was interrupted...\n");
  } else if (!result.buffer_full) {
    emit(text_of("Completed %i random addition sequences.\n", result.replications_done));
  }
  if (swaps) {
    emit("Total rearrangements examined: ", rearrangements_text(), ".\n");
    if (searching.slots.forbids) emit("Constraints enforced during search.\n");
    if (mult.swapper == mult_settings::tbr && swapping.move_limit > 0) {
      emit(text_of("Note: TBR limited to moves within %i nodes of original position.\n",
                   swapping.move_limit));
    }
  }
}

void tell_hits(const mult_result& result) {
  if (!collapsing.automatic && collapsing.rule > 2 && search_settings.suboptimal > 0) {
    emit("Note: some trees of different length may become identical if collapsed.\n");
  }
  const char* names[] = {":", " (SPR):", " (TBR):"};
  emit(text_of("Best score hit %i times out of %i", result.hits, result.replications_done),
       result.overflowed ? " (some replications overflowed)" : "",
       text_of(".\nBest score%s %s.  %i trees retained.\n", names[mult.swapper],
               score_text(result.best).c_str(), store.ntrees));
}

void run_mult() {
  const search_session session;
  warn_of_memory();
  const int trees_before = store.ntrees;
  const mult_result result = mult_search(mult);
  settings.timeout_armed = false;
  summarise(result);
  filter_trees(result, trees_before);
  tell_hits(result);
  searching.hits_value = result.hits;
  searching.last_best = result.best;
}

}  // namespace

void mult_command() {
  const std::vector<option> options = mult_options();
  mult_settings wanted = mult;
  const option_outcome outcome = read_search_options(
      wanted, std::span<const option>(options), "Unidentified string in mult options: %s",
      "Wrong argument for mult: %c", &options.front());
  if (outcome == option_outcome::run) check_additions(wanted.addition);
  mult = wanted;
  additions = mult.addition;
  swapping.outfreq = mult.outfreq;
  if (outcome == option_outcome::list) list_settings();
  if (outcome != option_outcome::run) return;
  run_mult();
  condense_if_automatic();
}

}  // namespace zeb
