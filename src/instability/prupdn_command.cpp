// prupdn: what a consensus gains and loses by leaving taxa out of the trees.
#include <string>
#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "instability/commands.h"
#include "instability/pruning_steps.h"
#include "instability/requests.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/drawing/tables.h"

namespace zeb {
namespace {

struct prupdn_settings {
  consensus_kind method = consensus_kind::strict;
  int size = 1;        // taxa of a set
  bool steps = false;  // prune the best set, and look again
  int look = 10;       // steps in a row that add no groups by themselves
  bool table = false;
  bool store = false;  // keep the consensus after the last step
};

constexpr command_options rows = {
    choice<&prupdn_settings::steps>("=", 1).help(
        "prune the set with the highest net gain, and look again, until nothing adds groups"),
    choice<&prupdn_settings::store>("*", 1).also<&prupdn_settings::steps>(1).help(
        "the same, and the consensus without these taxa is saved as the last tree"),
    number<&prupdn_settings::size>("size", {1, 10}, "Number of taxa to prune must be 1 - 10")
        .help("most taxa left out at a time"),
    number<&prupdn_settings::look>("look", {0, 1000}, "Number of steps must be 0 - 1000")
        .help("most steps in a row that add no groups, of taxa that make others less frequent"),
    choice<&prupdn_settings::method>("strict", 0).help("strict consensus"),
    choice<&prupdn_settings::method>("majority", 1).help("majority rule, with the cut in force"),
    choice<&prupdn_settings::method>("freqdifs", 2)
        .help("frequency differences, with the cut in force"),
    choice<&prupdn_settings::method>("combinable", 3).help("combinable components"),
    toggle<&prupdn_settings::table>("table").help("show tables of single taxa instead"),
};

void show_sets(const std::vector<pruned_set>& sets) {
  if (sets.empty()) return report_line("Pruning of taxa adds no groups");
  emit("Gained  Lost   Net  Taxa pruned\n");
  for (const pruned_set& set : sets)
    emit(taxa_after(text_of("%6i %5i %5i ", set.gain, set.lost, set.net()), set.taxa));
}

/// A list for each of the columns, so that scripts can have them.
void show_tables(const tree_selection& selection, const prupdn_settings& how,
                 std::span<const int> candidates) {
  const std::vector<pruned_set> sets =
      gains_of_single_taxa(selection, method_of(how.method), candidates);
  std::vector<std::int64_t> gained(at(matrix.ntax), no_value);
  std::vector<std::int64_t> lost = gained;
  for (const pruned_set& set : sets) {
    gained[at(set.taxa.first())] = set.gain;
    lost[at(set.taxa.first())] = set.lost;
  }
  print_table("Groups gained by leaving out the taxon", gained);
  print_table("Groups lost", lost);
}

void prune_by_steps(tree_selection selection, const prupdn_settings& how,
                    const std::vector<int>& candidates) {
  const consensus_method consensus_of = method_of(how.method);
  const std::vector<pruning_step> steps =
      steps_of_pruning(selection, consensus_of, candidates, how.size, how.look);
  if (steps.empty()) return report_line("Pruning of taxa adds no groups");
  emit("Step  Gained  Lost  Groups  Taxa pruned\n");
  int number = 0;
  int cut = 0;
  selection.excluded.resize(at(matrix.ntax), 0);
  for (const pruning_step& step : steps) {
    emit(taxa_after(text_of("%4i %7i %5i %7i ", ++number, step.gained, step.lost, step.groups),
                    step.taxa));
    cut += step.taxa.count();
    for (const int t : step.taxa) selection.excluded[at(t)] = 1;
  }
  emit("Each step took the best set: other sets in other orders may add more groups\n");
  deliver_consensus(consensus_of(selection),
                    name_of(how.method) + " without " + counted(cut, "taxon", "taxa"), how.store);
}

}  // namespace

constexpr option_table prupdn_options =
    rows.table("prupdn", {.unknown = "Unrecognized option for \"prupdn\": %s"});

void prupdn_command() {
  prupdn_settings how;
  read_leading_options(how, prupdn_options);
  const tree_selection selection = read_selection("pruning taxa");
  const std::vector<int> candidates = read_candidates(selection);
  check_end();
  const search_running running;
  const int groups = groups_of(method_of(how.method)(selection), matrix.ntax);
  emitf("%s of %s: %s of %i taxa", name_of(how.method).c_str(),
        counted(static_cast<long long>(selection.trees.size()), "tree", "trees").c_str(),
        counted(groups, "group", "groups").c_str(), taxa_in_play(selection));
  if (how.table)
    show_tables(selection, how, candidates);
  else if (how.steps)
    prune_by_steps(selection, how, candidates);
  else
    show_sets(sets_by_net_gain(selection, method_of(how.method), candidates, how.size));
  if (interrupts.reason == stop_reason::time) emit(end_of_time_text());
  if (interrupted()) emit("Not all sets of taxa were tried\n");
}

}  // namespace zeb
