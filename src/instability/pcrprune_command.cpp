// pcrprune: taxa that trees place incongruently, pruned from each polytomy of their consensus, and
// the characters that their places cost differently.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "consensus/strict_consensus.h"
#include "console/output.h"
#include "instability/commands.h"
#include "instability/congruence.h"
#include "instability/placements.h"
#include "instability/requests.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "mapping/node_states.h"
#include "matrix/matrix.h"
#include "trees/drawing/tables.h"

namespace zeb {
namespace {

struct pcrprune_settings {
  int most_taxa = 5;
  int characters = 10;
  bool table = false;
  bool store = false;
};

constexpr command_options rows = {
    choice<&pcrprune_settings::store>("*", 1).help(
        "the consensus without the pruned taxa is saved as the last tree"),
    number<&pcrprune_settings::most_taxa>("most", {1, 1000000},
                                          "Number of taxa must be 1 - 1000000")
        .help("branches of more taxa aren't pruned"),
    number<&pcrprune_settings::characters>("chars", {0, 1000000},
                                           "Number of characters must be 0 - 1000000")
        .help("most characters that are shown for a pruned branch"),
    toggle<&pcrprune_settings::table>("table").help(
        "show the congruence of each taxon as a list instead"),
};

std::string congruence_text(const branch_congruence& own) {
  return text_of("%7.3f %6.3f", own.agreed, own.mean);
}

void show_branches(const polytomy& shown) {
  emit(text_of("Node %i: %i branches, ", shown.node, shown.size()),
       counted(static_cast<long long>(shown.resolutions.size()), "resolution", "resolutions"),
       "\n    PCR   mean  Taxa\n");
  const std::vector<branch_congruence> own = congruence_of(shown);
  std::vector<int> order;
  for (int b = 0; b < shown.size(); ++b) order.push_back(b);
  std::ranges::stable_sort(order, {}, [&](int b) { return own[at(b)].agreed; });
  for (const int b : order)
    emit(taxa_after(congruence_text(own[at(b)]) + " ", shown.branches[at(b)]));
}

/// The polytomies that are resolved in more than one way.
std::vector<polytomy> contested(std::vector<polytomy> all) {
  std::erase_if(all, [](const polytomy& one) { return one.resolutions.size() < 2; });
  return all;
}

void show_table(const std::vector<polytomy>& polytomies, const tree_selection& selection) {
  const std::vector<std::uint8_t> absent = taxa_left_out(selection);
  std::vector<double> values(at(matrix.ntax), no_fraction);
  for (int t = 0; t < matrix.ntax; ++t)
    if (!absent[at(t)]) values[at(t)] = 1;
  for (const polytomy& one : polytomies) {
    const std::vector<branch_congruence> own = congruence_of(one);
    for (int b = 0; b < one.size(); ++b)
      for (const int t : one.branches[at(b)])
        values[at(t)] = std::min(values[at(t)], own[at(b)].agreed);
  }
  print_table("Positional congruence of the taxa, the least over the polytomies", values);
}

/// A branch that goes, with the polytomy it is in.
struct pruned_branch {
  taxon_set taxa;
  branch_congruence congruence;
};

std::vector<pruned_branch> prune(const std::vector<polytomy>& polytomies, int most_taxa) {
  std::vector<pruned_branch> out;
  for (const polytomy& one : polytomies)
    for (const pruning_series::step& step : series_for(one, most_taxa).steps)
      out.push_back({one.branches[at(step.branch)], step.congruence});
  return out;
}

void show_characters(const std::vector<placement>& places, int most) {
  const std::vector<deciding_character> deciding = deciding_characters(places);
  if (deciding.empty()) return report_line("  All places cost each character the same");
  emit("  Steps of the characters that decide, by place:\n");
  int shown = 0;
  for (const deciding_character& one : deciding) {
    if (shown++ == most) break;
    std::string line = "   ";
    for (const double steps : one.steps)
      line += text_of(steps == std::floor(steps) ? " %3.0f" : " %6.3f", steps);
    emit(line, "  ", character_heading(one.character), "\n");
  }
  const auto all = static_cast<int>(deciding.size());
  if (all > most) emit(text_of("    and %i more\n", all - most));
}

void show_places(const pruned_branch& branch, const compared_copies& copies,
                 const taxon_set& pruned, int most_characters) {
  const std::vector<placement> places = placements_of(copies, branch.taxa, pruned, matrix.ntax);
  emit(taxa_after("Places of", branch.taxa));
  int number = 0;
  for (const placement& one : places)
    emit(taxa_after(text_of("  %3i: %i of %i trees, beside", ++number, one.count,
                            static_cast<int>(copies.trees().size())),
                    one.sister));
  if (places.size() > 1 && most_characters > 0) show_characters(places, most_characters);
}

void show_pruning(tree_selection selection, const compared_copies& copies,
                  const std::vector<polytomy>& polytomies, const pcrprune_settings& how) {
  const std::vector<pruned_branch> branches = prune(polytomies, how.most_taxa);
  taxon_set pruned(matrix.ntax);
  for (const pruned_branch& one : branches) {
    emit(taxa_after("Prune (PCR" + text_of(" %.3f", one.congruence.agreed) + "):", one.taxa));
    pruned |= one.taxa;
  }
  if (branches.empty()) report_line("Pruning by congruence adds no groups");
  for (const pruned_branch& one : branches) show_places(one, copies, pruned, how.characters);
  if (branches.empty() && !how.store) return;
  for (const int t : pruned) selection.excluded[at(t)] = 1;
  const group_tree result = strict_consensus(selection);
  const std::string without = " without " + counted(pruned.count(), "taxon", "taxa");
  emit(counted(groups_of(result, matrix.ntax), "group", "groups"), without,
       " (chosen one after the other: other sets may add more)\n");
  deliver_consensus(result, "Strict consensus" + without, how.store);
}

}  // namespace

constexpr option_table pcrprune_options =
    rows.table("pcrprune", {.unknown = "Unrecognized option for \"pcrprune\": %s"});

void pcrprune_command() {
  pcrprune_settings how;
  read_leading_options(how, pcrprune_options);
  const tree_selection selection = read_selection_and_excluded("comparing positions of taxa");
  check_end();
  const group_tree strict = strict_consensus(selection);
  const compared_copies copies(selection);
  const std::vector<polytomy> polytomies =
      contested(polytomies_of(strict.tree, copies, matrix.ntax));
  if (how.table) return show_table(polytomies, selection);
  emitf("Strict consensus of %i trees: %s", static_cast<int>(selection.trees.size()),
        counted(groups_of(strict, matrix.ntax), "group", "groups").c_str());
  if (polytomies.empty()) return report_line("The trees agree in all polytomies");
  for (const polytomy& one : polytomies) show_branches(one);
  show_pruning(selection, copies, polytomies, how);
}

}  // namespace zeb
