// prupdn: what a consensus gains and loses by leaving taxa out of the trees.
#include <algorithm>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "instability/commands.h"
#include "instability/requests.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/drawing/tables.h"

namespace zeb {
namespace {

constexpr std::int64_t most_sets = 10'000'000;  // tried by one step
constexpr int fewest_left = 3;                  // taxa: with fewer there is no group to gain

struct prupdn_settings {
  consensus_kind method = consensus_kind::strict;
  int size = 1;        // taxa of a set
  bool steps = false;  // prune the best set, and look again
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
    choice<&prupdn_settings::method>("strict", 0).help("strict consensus"),
    choice<&prupdn_settings::method>("majority", 1).help("majority rule, with the cut in force"),
    choice<&prupdn_settings::method>("freqdifs", 2)
        .help("frequency differences, with the cut in force"),
    choice<&prupdn_settings::method>("combinable", 3).help("combinable components"),
    toggle<&prupdn_settings::table>("table").help("show tables of single taxa instead"),
};

/// The sets worth pruning, the highest net gain first.
std::vector<pruned_set> ordered_sets(const tree_selection& selection, const prupdn_settings& how,
                                     std::span<const int> candidates) {
  std::vector<pruned_set> sets =
      sets_worth_pruning(selection, method_of(how.method), candidates, how.size);
  std::ranges::stable_sort(sets, [](const pruned_set& a, const pruned_set& b) {
    return a.net() != b.net() ? a.net() > b.net() : a.taxa.count() < b.taxa.count();
  });
  return sets;
}

int taxa_in_play(const tree_selection& selection) {
  return static_cast<int>(std::ranges::count(taxa_left_out(selection), 0));
}

void check_size(const tree_selection& selection, prupdn_settings& how, std::size_t candidates) {
  how.size = std::min(how.size, taxa_in_play(selection) - fewest_left);
  if (number_of_sets(static_cast<int>(candidates), how.size, most_sets) == most_sets)
    error_end("Too many sets of", how.size, "of", candidates, "taxa: give fewer taxa after \"/\"");
}

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

/// Takes the best set out, and looks again: the choice at each step isn't taken back, so another
/// series might end higher.
void prune_by_steps(tree_selection selection, prupdn_settings how, std::vector<int> candidates) {
  const consensus_method consensus_of = method_of(how.method);
  taxon_set pruned(matrix.ntax);
  emit("Step  Gained  Lost  Groups  Taxa pruned\n");
  for (int step = 1; !interrupted(); ++step) {
    check_size(selection, how, candidates.size());
    if (how.size < 1) break;
    const std::vector<pruned_set> sets = ordered_sets(selection, how, candidates);
    if (interrupted() || sets.empty() || sets[0].net() <= 0) break;
    const pruned_set& best = sets[0];
    pruned |= best.taxa;
    selection.excluded.resize(at(matrix.ntax), 0);
    for (const int t : best.taxa) selection.excluded[at(t)] = 1;
    std::erase_if(candidates, [&](int t) { return best.taxa.contains(t); });
    const int groups = groups_of(consensus_of(selection), matrix.ntax);
    emit(taxa_after(text_of("%4i %7i %5i %7i ", step, best.gain, best.lost, groups), best.taxa));
  }
  const int cut = pruned.count();
  if (cut == 0)
    report_line("Pruning of taxa adds no groups");
  else
    emit("Each step took the best set: other sets in other orders may add more groups\n");
  if (cut > 0 || how.store)
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
  check_size(selection, how, candidates.size());
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
    show_sets(ordered_sets(selection, how, candidates));
  if (interrupts.reason == stop_reason::time) emit("Interrupting search (time is out!)\n");
  if (interrupted()) emit("Not all sets of taxa were tried\n");
}

}  // namespace zeb
