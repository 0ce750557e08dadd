// `resample`: run and report.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/command.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "engine/collapsing/collapsing.h"
#include "language/interpreter.h"
#include "matrix/matrix.h"
#include "search/drivers/cycle_options.h"
#include "search/search_journal.h"
#include "supports/commands.h"
#include "supports/last_supports.h"
#include "supports/resampling/group_supports.h"
#include "supports/resampling/resample_request.h"
#include "supports/resampling/sibyl.h"
#include "trees/constraints/constraints.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/drawing/tags.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

bool is_bootstrap(sampling_scheme scheme) {
  return scheme == sampling_scheme::bootstrap || scheme == sampling_scheme::poisson;
}

/// The kind of sampling, in 16 characters as titles of trees have it.
std::string kind_text(const sampling& how) {
  const char* names[] = {"Symmetric Resamp", "Jackknifing", "Standard Bootstr", "Poisson Bootstra"};
  const std::string name = names[static_cast<int>(how.scheme)];
  return is_bootstrap(how.scheme) ? name : name + text_of(" (P=%i)", how.percent);
}

std::string summaries_text() {
  std::string text;
  const auto add = [&text](bool shown, const char* name) {
    if (shown) text += (text.empty() ? "" : ", ") + std::string(name);
  };
  add(resampling.frequency, "frequencies");
  add(resampling.gc, "frequency differences (GC)");
  add(resampling.slope, "frequency slopes");
  return text.empty() ? "none" : text;
}

void list_settings() {
  std::vector<std::string> lines = {
      kind_text(sampling_of(resampling)),
      text_of("%i replications", resampling.replications),
      "Summaries: " + summaries_text(),
      text_of("Groups above %i%%", resampling.cut),
  };
  if (resampling.savetrees) lines.emplace_back("Trees of the replicates are saved");
  if (resampling.savesummary) lines.emplace_back("Summary trees are saved");
  if (!resampling.zero_weights) lines.emplace_back("Weights are lowered, not set to 0");
  if (resampling.softboot > 0)
    lines.push_back(text_of("Bootstrap softening: %i", resampling.softboot));
  lines.push_back("Search: " + (resampling.search.empty() ? "default" : resampling.search));
  if (resampling.allow) lines.emplace_back("Almost all commands allowed in the search");
  list_lines("Resampling settings:", lines);
}

/// What a run of any kind tells of how it went.
void tell_completeness(const replicates& sampled) {
  const int done = static_cast<int>(sampled.done.size());
  if (done < sampled.wanted)
    emit(text_of("%s: %i of %i replicates were completed.\n",
                 sampled.interrupted ? "Search was interrupted" : "The search failed", done,
                 sampled.wanted));
  if (sampled.without_trees > 0)
    emit("Note: the search found no tree in ",
         counted(sampled.without_trees, "replicate", "replicates"),
         ", which counted as trees without groups.\n");
  if (sampled.weight_limit)
    emit(
        "Note: some weights stayed at the limit, since resampling would have made them too "
        "large.\n");
}

void store_summary(const supported_tree& shown, const std::string& title) {
  const bool had_tags = has_any_tag() && tags.source == tag_source::hand;
  const tree_span slot = take_slot();
  std::copy(shown.tree.begin(), shown.tree.end(), slot.begin());
  group_automatically(store.ntrees - 1, store.ntrees, "Resampling_summary");
  label_tree(store.ntrees - 1, shown.labels);
  if (!had_tags) set_tag_tree_to_stored(store.ntrees - 1, tag_source::computed, title);
  report_line("Summary stored as tree", store.ntrees - 1);
}

void show_table(const supported_tree& shown, const std::string& title) {
  std::vector<double> cells = shown.values;
  for (std::size_t n = 0; n < cells.size(); ++n)
    if (!shown.is_group[n]) cells[n] = no_fraction;
  print_table(title, cells, shown.frequencies.empty() ? 1 : 2);
}

void show(const supported_tree& shown, const std::string& title) {
  draw_tree(shown.tree, title, shown.texts);
  if (resampling.table) show_table(shown, title);
  if (resampling.savesummary) store_summary(shown, title);
  keep_supports(shown.values);
}

void list_slopes(const supported_tree& shown) {
  for (std::size_t n = 0; n < shown.values.size(); ++n)
    if (shown.is_group[n])
      emit("Group ", n, "\n", text_of("   Slope: %.4f\n", shown.values[n]),
           text_of("   Freq.: %.4f\n", shown.frequencies[n]));
}

void tell_average(const supported_tree& shown) {
  emit(text_of("Average group support: %.1f\n", mean_support(shown)));
}

void summarise(const replicates& sampled, const resample_request& request) {
  const int done = static_cast<int>(sampled.done.size());
  const std::string kind = kind_text(sampling_of(resampling));
  std::vector<tree_node> reference;
  std::string of_tree;
  if (request.from >= 0) {
    reference = tree_like_replicates(request.from, request.excluded);
    of_tree = text_of(" (tree %i)", request.from);
  }
  const auto title = [&](const char* what, int cut) {
    return text_of("%s, %i replicates, cut=%i%s - %s", what, done, cut, of_tree.c_str(),
                   kind.c_str());
  };
  if (resampling.frequency) {
    const int cut = std::max(resampling.cut, 50);
    const supported_tree found = frequency_supports(sampled, reference, cut);
    show(found, title("Group freqs.", cut));
    tell_average(found);
  }
  if (resampling.gc) {
    const supported_tree found = difference_supports(sampled, reference, resampling.cut);
    show(found, title("GC values", resampling.cut));
    tell_average(found);
  }
  if (resampling.slope) {
    const supported_tree found = slope_supports(sampled, reference);
    show(found, text_of("Frequency slopes, %i replicates (tree 0) - %s", done, kind.c_str()));
    list_slopes(found);
  }
  if (!resampling.zero_weights)
    emit("Note: symmetric resampling lowers weights, instead of deleting\n");
}

void save_trees(const replicates& sampled, const resample_request& request) {
  const int first = store.ntrees;
  for (const replicate& one : sampled.done)
    std::copy(one.tree.begin(), one.tree.end(), take_slot().begin());
  group_automatically(first, store.ntrees, "resampled_trees");
  emit(text_of("Note: saved resampled trees as trees %i-%i", first, store.ntrees - 1),
       request.from >= 0 ? text_of(" (tree %i is reference tree)", request.from) : "", "\n");
}

void tell_of_sampling() {
  if (resampling.scheme == sampling_scheme::bootstrap && resampling.softboot > 0)
    emit(text_of("Note: bootstrapping samples an extra %.1f characters per active character\n",
                 extra_draws(resampling.softboot)));
  if (constraints.active) emit("Note: resampling was done under currently defined constraints.\n");
  if (resampling.search.empty() && collapsing.rule == 0)
    emit(
        "Note: the default search keeps few trees, and branches aren't collapsed (see "
        "\"collapse\"):\nsupports may be too high.\n");
}

void tell_before() {
  if (resampling.frequency && resampling.cut < 50)
    emit("Note: cutoff for frequency calculations will be re-set to 50\n");
  if (resampling.scheme == sampling_scheme::poisson)
    emit(text_of("Note: Poisson bootstrapping uses a mean = %i\n",
                 poisson_mean(resampling.softboot)));
}

/// Runs the replicates; where an error of the search ends them, `report` is made of those that
/// were done.
template <class function>
void run_and_report(const resampling_task& task, const function& report) {
  replicates sampled;
  const timeout_scope time_limit;
  const auto finish = [&] {
    disarm_time_limit();
    tell_completeness(sampled);
    note_search(resample_options, {.replications = static_cast<int>(sampled.done.size()),
                                   .interrupted = sampled.interrupted});
    if (!sampled.done.empty()) report(sampled);
  };
  try {
    run_replicates(task, sampled);
  } catch (const command_unwinding&) {
    if (!sampled.done.empty()) finish();
    throw;
  }
  finish();
}

resampling_task task_of(const resample_request& request) {
  return {.how = sampling_of(resampling),
          .replications = resampling.replications,
          .search = resampling.search,
          .any_command = resampling.allow,
          .left_out = request.excluded};
}

void run_resampling(const resample_request& request) {
  tell_before();
  run_and_report(task_of(request), [&request](const replicates& sampled) {
    summarise(sampled, request);
    if (resampling.savetrees) save_trees(sampled, request);
    tell_of_sampling();
  });
}

void tell_share(const char* what, double part, const sibyl_result& found, double whole) {
  emit(text_of("   %-11s %.4f (normalized: %.4f)\n", what, share(part, whole),
               share(part, found.most_groups)));
}

void run_sibyl(const resample_request& request) {
  resampling_task task = task_of(request);
  task.how = {.scheme = sampling_scheme::jackknife, .percent = resampling.sibyl_percent};
  run_and_report(task, [&request](const replicates& sampled) {
    const sibyl_result found = foretold_groups(sampled, request.errcount, request.excluded);
    emit(text_of("Sibyl (backwards jackknife), %i replicates, P(del)=%i: %.2f groups\n",
                 found.replications, resampling.sibyl_percent, found.groups));
    tell_share("Supported:", found.supported, found, found.groups);
    tell_share("Compatible:", found.compatible, found, found.groups);
    if (request.errcount >= 0) {
      tell_share("Wrong:", found.wrong, found, found.groups);
      tell_share("Mist:", found.missed, found, found.reference_groups);
    }
    keep_sibyl(found);
  });
}

}  // namespace

void resample_command() {
  const resample_request request = read_resample_request();
  const resample_settings former = std::exchange(resampling, request.settings);
  if (request.list) list_settings();
  if (!request.run) return no_timing();
  try {
    request.sibyl ? run_sibyl(request) : run_resampling(request);
  } catch (const command_unwinding&) {
    resampling = former;  // a search that fails shouldn't be that of the next run
    throw;
  }
}

}  // namespace zeb
