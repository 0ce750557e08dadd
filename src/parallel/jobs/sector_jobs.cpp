#include "parallel/jobs/sector_jobs.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/random.h"
#include "console/output.h"
#include "engine/plain/tree_scores.h"
#include "mapping/node_states.h"
#include "matrix/matrix.h"
#include "matrix/reading/matrix_writer.h"
#include "parallel/jobs/sector_nodes.h"
#include "parallel/tasks/session_text.h"
#include "parallel/tasks/tree_loads.h"
#include "search/sectors/sector_center.h"
#include "search/sectors/sector_choice.h"
#include "search/sectors/sectors.h"
#include "trees/notation/auto_save.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

// ---- cutting ----

/// The tree with the outgroup as terminal 0, as sectors are chosen on it.
std::vector<tree_node> tree_to_cut(int number, bool may_be_polytomous = false) {
  const const_tree_span tree = stored_tree(number);
  if (terminals_in(tree, matrix.ntax) != matrix.ntax)
    error_end("P-ZEB: sectors can be cut only from a tree with all taxa, not from tree", number);
  if (!may_be_polytomous && node_limit(tree, matrix.ntax) != 2 * matrix.ntax - 1)
    error_end("P-ZEB: sectors can be cut only from a dichotomous tree, not from tree", number);
  std::vector<tree_node> rooted(tree.begin(), tree.end());
  reroot_tree(rooted, matrix.ntax, matrix.outgroup);
  std::swap(rooted[0], rooted[at(matrix.outgroup)]);
  return rooted;
}

int taxon_of(int terminal) {
  if (terminal == 0) return matrix.outgroup;
  return terminal == matrix.outgroup ? 0 : terminal;
}

/// The tree with its taxa where they belong; not in normal form, so that nodes keep their numbers.
std::vector<tree_node> in_taxa(std::vector<tree_node> tree) {
  std::swap(tree[0], tree[at(matrix.outgroup)]);
  return tree;
}

/// A tree that a sector was cut from.
struct cut_tree {
  int number = 0;
  std::vector<tree_node> tree;  // as `tree_to_cut` makes it
};

/// Where the user's node is in the tree to cut.
int center_of(const sector_request& wanted, const std::vector<tree_node>& tree) {
  const std::vector<int> around = taxa_around(stored_tree(wanted.trees[0]), wanted.node);
  if (around.size() < 3) return taxon_of(wanted.node);
  return node_between(tree, matrix.ntax, taxon_of(around[0]), taxon_of(around[1]),
                      taxon_of(around[2]));
}

constexpr std::size_t fewest_terminals = 3;  // with the rest, those that can be arranged

/// Without those in which nothing can be arranged.
std::vector<tree_sector> exclusive_sectors_to_search(const std::vector<tree_node>& tree, int count,
                                                     bool loose, random_generator& random) {
  std::vector<tree_sector> all = exclusive_sectors(tree, matrix.ntax, count, !loose, random);
  std::erase_if(all, [](const tree_sector& s) { return s.terminals.size() < fewest_terminals; });
  return all;
}

tree_sector only_sector(const sector_request& wanted, const std::vector<tree_node>& tree) {
  const int center = center_of(wanted, tree);
  tree_sector sector =
      wanted.how == sector_request::way::around
          ? sector_around(tree, matrix.ntax, center, wanted.distance)
          : sector_of_polytomies(tree, matrix.ntax, center, wanted.above, wanted.below);
  if (sector.terminals.size() < fewest_terminals)
    error_end("P-ZEB: that sector would have only", sector.terminals.size(), "terminals");
  return sector;
}

std::vector<tree_sector> cut_sectors(const sector_request& wanted, int tasks,
                                     std::vector<cut_tree>& trees) {
  random_generator random(static_cast<unsigned>(draw()));
  std::vector<tree_sector> sectors;
  if (wanted.how == sector_request::way::random) {
    for (int i = 0; i < tasks; ++i) {
      const int t = wanted.trees[at(draw()) % wanted.trees.size()];
      trees.push_back({t, tree_to_cut(t)});
      const std::vector<tree_node>& tree = trees.back().tree;
      std::vector<std::uint8_t> taken(tree.size(), 0);
      sectors.push_back(random_sector(tree, matrix.ntax, wanted.size, random, taken));
    }
    return sectors;
  }
  const bool may_be_polytomous = wanted.how == sector_request::way::polytomies;
  const std::vector<tree_node> tree = tree_to_cut(wanted.trees[0], may_be_polytomous);
  sectors = wanted.how == sector_request::way::exclusive
                ? exclusive_sectors_to_search(tree, wanted.size, wanted.loose, random)
                : std::vector<tree_sector>{only_sector(wanted, tree)};
  trees.assign(sectors.size(), {wanted.trees[0], tree});
  return sectors;
}

// ---- reduced data ----

/// Cells of all characters for one terminal of a sector.
using row_of_cells = std::vector<std::uint32_t>;

void put_cell(int character, const node_values& values, std::uint32_t& cell_to_set) {
  constexpr int high_half = 16;
  const bool continuous = matrix.characters[at(character)].is_continuous;
  if (!values.known()) {
    cell_to_set = continuous ? 0xffffU << high_half : matrix.state_mask;
  } else if (continuous) {
    cell_to_set = static_cast<std::uint32_t>(values.range.low) |
                  static_cast<std::uint32_t>(values.range.high) << high_half;
  } else {
    cell_to_set = values.states;
  }
}

/// Down-pass values of the nodes listed, by node and character.
std::vector<row_of_cells> cells_of_nodes(const_tree_span tree, const std::vector<int>& nodes) {
  std::vector<row_of_cells> rows(nodes.size(), row_of_cells(at(matrix.nchar)));
  const tree_shape shape(tree);
  for (int c = 0; c < matrix.nchar; ++c) {
    const mapped_character mapped = map_character(shape, c, pass::down);
    for (std::size_t i = 0; i < nodes.size(); ++i)
      put_cell(c, mapped.at_nodes[at(nodes[i])], rows[i][at(c)]);
  }
  return rows;
}

/// What the tree outside of a clade gives to the branch above it.
row_of_cells cells_of_rest(const std::vector<tree_node>& tree, int top) {
  std::vector<tree_node> turned = tree;
  std::vector<std::uint8_t> inside(at(matrix.ntax), 0);
  flag_terminals(tree, matrix.ntax, top, inside);
  reroot_on_branch(turned, matrix.ntax, top);
  const descendant_lists lists = descendants_of(turned, matrix.ntax);
  int rest = matrix.outgroup;
  for (const int v : lists.children(matrix.ntax)) {
    std::vector<std::uint8_t> below(at(matrix.ntax), 0);
    flag_terminals(turned, matrix.ntax, v, below);
    if (below[at(matrix.outgroup)]) rest = v;
  }
  return cells_of_nodes(turned, {rest})[0];
}

/// The sector as a tree of its own: terminal 0 is the rest, the others as in the place.
std::vector<tree_node> tree_of_sector(const std::vector<tree_node>& tree,
                                      const sector_place& place) {
  const int ntax = place.taxa;
  std::vector<int> number(tree.size(), -1);
  std::vector<int> ancestors(at(2 * ntax - 1), -1);
  for (std::size_t i = 0; i < place.terminals.size(); ++i)
    number[at(place.terminals[i])] = static_cast<int>(i) + 1;
  int next = ntax + 1;
  number[at(place.top)] = next++;
  ancestors[0] = ntax;
  ancestors[at(number[at(place.top)])] = ntax;
  for (const std::int32_t terminal : place.terminals) {
    for (int v = terminal; v != place.top; v = tree[at(v)]) {
      const int up = tree[at(v)];
      if (number[at(up)] < 0) number[at(up)] = next++;
      ancestors[at(number[at(v)])] = number[at(up)];
    }
  }
  std::vector<tree_node> record(at(2 * ntax - 1));
  record_from_ancestors(ancestors, record, ntax);
  return record;
}

std::string name_of_terminal(int node) {
  return node < matrix.ntax ? std::string(taxon_name(node)) : text_of("HTU_%i", node);
}

task_orders orders_of_sector(const sector_place& place, int number) {
  std::vector<row_of_cells> cells = {cells_of_rest(place.tree, place.top)};
  const std::vector<int> nodes(place.terminals.begin(), place.terminals.end());
  for (row_of_cells& row : cells_of_nodes(place.tree, nodes)) cells.push_back(std::move(row));
  std::vector<named_row> rows = {{"HTU_rest", cells[0]}};
  for (std::size_t i = 0; i < nodes.size(); ++i)
    rows.push_back({name_of_terminal(nodes[i]), cells[i + 1]});
  const std::vector<std::uint8_t> no_taxa(at(matrix.ntax), 0);
  const std::vector<std::uint8_t> all_characters(at(matrix.nchar), 1);
  task_orders orders = orders_of_session();
  orders.is_sector = true;
  orders.score_offset = place.score_at_start;
  orders.nodes_in_sector = nodes_in_sector(place, viewed_tree(number));
  orders.taxa_of_tree = matrix.ntax;
  orders.taxa = place.taxa;
  orders.data = data_as_commands({.taxa = no_taxa,
                                  .characters = all_characters,
                                  .settings = true,
                                  .cells = {},
                                  .more_rows = rows});
  return orders;
}

}  // namespace

int exclusive_parts(int count, bool loose, int tree) {
  random_generator random(static_cast<unsigned>(draw()));
  return static_cast<int>(
      exclusive_sectors_to_search(tree_to_cut(tree), count, loose, random).size());
}

void make_sector_job(const sector_request& wanted, job_request& request) {
  std::vector<cut_tree> trees;
  std::vector<tree_sector> cut = cut_sectors(wanted, std::max(request.tasks, 1), trees);
  std::vector<double> scores(at(store.ntrees));
  score_stored_trees(scores);
  const int parts = static_cast<int>(cut.size());
  if (wanted.how == sector_request::way::exclusive) {
    const int asked = request.tasks > 0 ? request.tasks : wanted.size;
    if (sectors.chkroot && parts != asked)
      error_end_f(
          "P-ZEB: current settings will create %i sectors (not %i),\n       but %i tasks will be "
          "spawned.  Use \"treeparts\" to\n       know how many tasks to spawn (or set "
          "\"sec:nochkroot\")",
          parts, wanted.size, asked);
    if (request.tasks > 0 && request.tasks != parts)
      warning(
          text_of("P-ZEB: %i tasks specified, but %i sector selections\n       requested; will "
                  "reset number",
                  request.tasks, parts));
  }
  for (int i = 0; i < parts; ++i) {
    const bool left_out = !wanted.launched.empty() && !std::ranges::count(wanted.launched, i);
    if (left_out) continue;
    sector_place place;
    place.tree = in_taxa(trees[at(i)].tree);
    place.score_at_start = scores[at(trees[at(i)].number)];
    place.top = cut[at(i)].top;
    for (const std::int32_t t : cut[at(i)].terminals)
      place.terminals.push_back(t < matrix.ntax ? taxon_of(t) : t);
    place.taxa = static_cast<int>(place.terminals.size()) + 1;
    place.reduced_tree = tree_of_sector(place.tree, place);
    request.sector_orders.push_back(orders_of_sector(place, trees[at(i)].number));
    request.sectors.push_back(std::move(place));
  }
  if (request.sectors.empty()) error_end("P-ZEB: no such sectors");
  request.partial = static_cast<int>(request.sectors.size()) < parts;
  request.parts = parts;
  request.tasks = static_cast<int>(request.sectors.size());
  request.kind = wanted.how == sector_request::way::exclusive ? job_kind::exclusive_sectors
                 : wanted.how == sector_request::way::random  ? job_kind::random_sectors
                                                              : job_kind::one_sector;
  if (wanted.how == sector_request::way::random)
    emit(text_of("Sending each slave task sectors from a pool of %i trees\n",
                 static_cast<int>(wanted.trees.size())));
  else
    report_line("Sending sectors");
}

}  // namespace zeb
