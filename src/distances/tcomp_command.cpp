// tcomp: trees compared by their groups, triplets, quartets and agreement subtrees.
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/random.h"
#include "console/output.h"
#include "distances/agreement_subtree.h"
#include "distances/commands.h"
#include "distances/cut_trees.h"
#include "distances/group_comparison.h"
#include "distances/kept_trees.h"
#include "distances/paced_progress.h"
#include "distances/quartets.h"
#include "distances/tcomp_request.h"
#include "distances/tree_pair.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr int most_taxa_of_tables = 4000;  // agreement subtrees take a table of all nodes

// ---- two trees ----

std::string per_cent(double part, double all) {
  return all > 0 ? text_of(" (%.2f%%)", 100 * part / all) : std::string();
}

void list_groups(const std::vector<compared_group>& groups, int tree, int other) {
  emit("Groups of tree ", tree, " that tree ", other, " lacks:\n");
  bool any = false;
  for (const compared_group& group : groups) {
    if (group.status == group_status::shared) continue;
    const std::string text =
        text_of("  node %i, %s:", group.node,
                group.status == group_status::contradicted ? "contradicted" : "unresolved");
    emit(text, names_of_taxa(group.taxa, text.size()), "\n");
    any = true;
  }
  if (!any) emit("  none\n");
}

void tell_groups(const tree_pair& pair, const tcomp_request& request) {
  const auto compared = [&](int tree, int other) {
    return compare_groups(stored_tree(tree), stored_tree(other), matrix.ntax, pair.taxa,
                          request.trees.unrooted);
  };
  const auto first = compared(pair.first, pair.second);
  const auto second = compared(pair.second, pair.first);
  const auto shared = groups_with(first, group_status::shared);
  const auto all = static_cast<int>(first.size() + second.size());
  for (const auto* groups : {&first, &second}) {
    const bool is_first = groups == &first;
    emit(text_of("Groups of tree %i: %i; %i shared, %i contradicted, %i unresolved in tree %i\n",
                 is_first ? pair.first : pair.second, static_cast<int>(groups->size()), shared,
                 groups_with(*groups, group_status::contradicted),
                 groups_with(*groups, group_status::absent), is_first ? pair.second : pair.first));
  }
  const int distance = all - 2 * shared;
  emit("Robinson-Foulds distance: ", distance, " of ", all, per_cent(distance, all), "\n");
  if (!request.list) return;
  list_groups(first, pair.first, pair.second);
  list_groups(second, pair.second, pair.first);
}

void tell_resolutions(const std::vector<std::string>& names,
                      const std::vector<resolution_counts>& counts) {
  const std::vector<std::string> rows = {"All",           "Alike",          "Different",
                                         "Only in first", "Only in second", "In neither",
                                         "Distance",      "Share"};
  constexpr std::array members = {&resolution_counts::all,       &resolution_counts::alike,
                                  &resolution_counts::different, &resolution_counts::first,
                                  &resolution_counts::second,    &resolution_counts::neither};
  std::vector<std::string> cells;
  for (const auto member : members)
    for (const resolution_counts& c : counts) cells.push_back(std::to_string(c.*member));
  for (const resolution_counts& c : counts) cells.push_back(std::to_string(c.distance()));
  for (const resolution_counts& c : counts)
    cells.push_back(fraction_text(static_cast<double>(c.distance()) / static_cast<double>(c.all)));
  print_table({"Sets of taxa, by which of the trees resolve them", rows, names, cells});
}

void compare_resolutions(const tree_pair& pair, const tcomp_request& request) {
  const int n = pair.taxa.count();
  const bool everything = request.measures() == 0;
  if (request.quartets && n > most_terminals_of_quartets)
    error_end_f("Can't count quartets of more than %i taxa", most_terminals_of_quartets);
  std::vector<std::string> names;
  std::vector<resolution_counts> counts;
  const cut_tree a = pair.cut(pair.first), b = pair.cut(pair.second);
  if ((everything || request.triplets) && n >= fewest_taxa_for(distance_measure::triplets)) {
    names.emplace_back("Triplets");
    counts.push_back(compare_triplets(a, b));
  }
  if ((everything || request.quartets) && n >= fewest_taxa_for(distance_measure::quartets) &&
      n <= most_terminals_of_quartets) {
    names.emplace_back("Quartets");
    counts.push_back(compare_quartets(a, b));
  }
  if (!names.empty()) tell_resolutions(names, counts);
}

void save_agreement(int number, const taxon_set& kept) {
  const auto tree =
      with_taxa(cut_to_taxa(stored_tree(number), matrix.ntax, kept), members_of(kept), matrix.ntax);
  keep_tree(tree, "Agreement_subtree", "Agreement subtree");
}

/// Names those that are kept or those that aren't, whichever are fewer.
void name_agreement(const taxon_set& kept, const taxon_set& all) {
  const taxon_set out = all - kept;
  if (kept.count() < out.count())
    emit("  kept:", names_of_taxa(kept, 7), "\n");
  else if (!out.empty())
    emit("  left out:", names_of_taxa(out, 11), "\n");
}

void check_size_of_tables(const taxon_set& taxa) {
  if (taxa.count() > most_taxa_of_tables)
    error_end_f("Can't find agreement subtrees of more than %i taxa", most_taxa_of_tables);
}

void tell_agreement(const tree_pair& pair, const tcomp_request& request) {
  check_size_of_tables(pair.taxa);
  paced_progress progress("Agreement subtree");
  const cut_tree a = pair.cut(pair.first);
  const cut_tree b = pair.cut(pair.second);
  const std::vector<int> terminals =
      request.trees.unrooted
          ? unrooted_agreement_subtree(a, b, [&](double done) { progress.poll(done, 1); })
          : agreement_subtree(a, b);
  const taxon_set kept = pair.stored_taxa(terminals);
  emit("Largest agreement subtree: ", kept.count(), " of ", a.terminals, " taxa\n");
  name_agreement(kept, pair.taxa);
  if (request.save) save_agreement(pair.first, kept);
}

void compare_two(const tcomp_request& request) {
  const tree_pair pair = pair_of(request.trees);
  const int n = pair.taxa.count();
  const bool everything = request.measures() == 0;
  emit("Trees ", pair.first, " and ", pair.second, ", ", n, " shared taxa",
       request.trees.unrooted ? ", without roots" : "", ":\n");
  if (everything || request.groups || request.list) tell_groups(pair, request);
  compare_resolutions(pair, request);
  if ((everything && n <= most_taxa_of_tables) || request.agreement || request.save)
    tell_agreement(pair, request);
  newline();
}

// ---- many trees ----

void show_distances(const tcomp_request& request, distance_measure measure) {
  distance_matrix distances = distances_of_trees(request.trees, measure);
  tree_matrix table;
  table.title = name_of(measure);
  if (request.trees.normalised) table.title += ", normalised";
  if (request.trees.unrooted &&
      (measure == distance_measure::groups || measure == distance_measure::agreement))
    table.title += ", without roots";
  table.rows = request.trees.rows;
  table.columns = request.trees.column_trees();
  table.is_square = request.trees.is_square();
  table.values = std::move(distances.values);
  table.decimals = request.trees.normalised ? -1 : 0;
  report_matrix(table, request.target);
  if (!distances.same_taxa) emit("Note: each pair was cut to the taxa that both trees have\n");
}

void compare_many(const tcomp_request& request) {
  if (request.groups || request.measures() == 0) show_distances(request, distance_measure::groups);
  if (request.triplets) show_distances(request, distance_measure::triplets);
  if (request.quartets) show_distances(request, distance_measure::quartets);
  if (request.agreement) {
    if (matrix.ntax > most_taxa_of_tables)
      error_end_f("Can't find agreement subtrees of more than %i taxa", most_taxa_of_tables);
    show_distances(request, distance_measure::agreement);
  }
}

/// One subtree of all trees, by the taxa that all of them have.
void agree_together(const tcomp_request& request) {
  constexpr int runs = 20;
  std::vector<int> numbers = request.trees.rows;
  numbers.insert(numbers.end(), request.trees.columns.begin(), request.trees.columns.end());
  std::vector<const_tree_span> stored;
  for (const int number : numbers) stored.push_back(stored_tree(number));
  const taxon_set taxa = shared_taxa(stored, matrix.ntax) - request.trees.excluded;
  if (taxa.count() < 2) error_end("The trees share less than 2 taxa");
  check_size_of_tables(taxa);
  std::vector<cut_tree> trees;
  for (const const_tree_span tree : stored)
    trees.emplace_back(cut_to_taxa(tree, matrix.ntax, taxa), taxa.count());
  paced_progress progress("Agreement subtree");
  random_generator generator;
  seed_generator(generator);
  const common_subtree found = common_agreement_subtree(
      trees, request.trees.unrooted, runs, generator, [&](double done) { progress.poll(done, 1); });
  const std::vector<int> members = members_of(taxa);
  taxon_set kept(matrix.ntax);
  for (const int t : found.terminals) kept.insert(members[at(t)]);
  emit("Agreement subtree of ", trees.size(), " trees: ", kept.count(), " of ", taxa.count(),
       " taxa ", found.is_exact() ? "(exact)" : "(the largest found, not exact; at most ");
  if (!found.is_exact()) emit(found.at_most, ")");
  emit("\n");
  name_agreement(kept, taxa);
  if (request.save) save_agreement(numbers.front(), kept);
}

/// The first tree, with "trees that have the group / trees that contradict it" on its branches.
void draw_reference(const tcomp_request& request) {
  const int reference = request.trees.rows.front();
  std::vector<int> others(request.trees.rows.begin() + 1, request.trees.rows.end());
  others.insert(others.end(), request.trees.columns.begin(), request.trees.columns.end());
  const const_tree_span tree = stored_tree(reference);
  std::vector<int> having(tree.size(), 0), against(tree.size(), 0), compared(tree.size(), 0);
  paced_progress progress("Groups of the first tree");
  for (std::size_t i = 0; i < others.size(); ++i) {
    progress.poll(static_cast<double>(i), static_cast<double>(others.size()));
    const const_tree_span other = stored_tree(others[i]);
    const taxon_set shared = (taxa_of_tree(tree, matrix.ntax) & taxa_of_tree(other, matrix.ntax)) -
                             request.trees.excluded;
    for (const compared_group& group :
         compare_groups(tree, other, matrix.ntax, shared, request.trees.unrooted)) {
      ++compared[at(group.node)];
      having[at(group.node)] += group.status == group_status::shared;
      against[at(group.node)] += group.status == group_status::contradicted;
    }
  }
  std::vector<std::string> texts(tree.size());
  for (std::size_t n = 0; n < texts.size(); ++n)
    if (compared[n] > 0) texts[n] = text_of("%i/%i", having[n], against[n]);
  draw_tree(tree,
            text_of("Groups of tree %i: how many of %i other trees have them / contradict them",
                    reference, static_cast<int>(others.size())),
            texts);
}

}  // namespace

void tcomp_command() {
  const tcomp_request request = read_tcomp_request();
  expect_end();
  const bool two = request.trees.count() == 2;
  if (request.together)
    agree_together(request);
  else if (two && !request.target.is_given() && !request.trees.normalised)
    compare_two(request);
  else
    compare_many(request);
  if (request.draw) draw_reference(request);
}

}  // namespace zeb
