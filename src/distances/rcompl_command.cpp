// rcompl: rooted trees compared as if they had no root.
#include <array>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "distances/commands.h"
#include "distances/kept_trees.h"
#include "distances/paced_progress.h"
#include "distances/rooting.h"
#include "distances/tree_pair.h"
#include "distances/tree_words.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

struct rcompl_request {
  bool draw = false;
  bool save = false;
  std::vector<int> references, others;
  taxon_set excluded;
};

constexpr command_options rows = {
    choice<&rcompl_request::draw>("draw", 1).help(
        "draw the reference tree, with the number of trees that have each group, and of those that "
        "have its complement"),
    choice<&rcompl_request::save>("*", 1).help(
        "keep the trees as rooted to share most with the reference as the last trees"),
};

rcompl_request read_request() {
  require_data("comparing groups of trees");
  rcompl_request request;
  tree_words words = read_tree_words(request, rcompl_options, 2);
  request.excluded = std::move(words.excluded);
  if (words.lists.size() == 2) {
    request.references = std::move(words.lists[0]);
    request.others = std::move(words.lists[1]);
  } else {
    request.references = {words.lists[0].front()};
    request.others.assign(words.lists[0].begin() + 1, words.lists[0].end());
  }
  if (request.references.size() != 1) error_end("Give a single tree as the reference");
  std::erase(request.others, request.references.front());
  if (request.others.empty()) error_end("Can't compare tree with itself");
  return request;
}

/// What one tree has of the groups of the reference.
struct comparison {
  int tree = 0;
  int groups = 0;  // of the reference
  std::array<int, 4> count{};
  best_root root;
  int branch = 0;  // of the stored tree, below which node the root comes
  int count_of(group_match match) const { return count[static_cast<std::size_t>(match)]; }
};

/// How many trees have each group of the reference as it is, and as its complement, by node.
struct reference_counts {
  std::vector<int> compared, same, complement;
};

comparison compare(const tree_pair& pair, reference_counts& counts) {
  std::vector<int> nodes;
  const int n = pair.taxa.count();
  const cut_tree reference(cut_to_taxa(stored_tree(pair.first), matrix.ntax, pair.taxa, &nodes), n);
  comparison out;
  out.tree = pair.second;
  const cut_tree other = pair.cut(pair.second);
  const std::vector<group_match> matches = matches_of_groups(reference, other);
  for (std::size_t i = at(reference.root()) + 1; i < matches.size(); ++i) {
    ++out.groups;
    ++out.count[static_cast<std::size_t>(matches[i])];
    ++counts.compared[at(nodes[i])];
    counts.same[at(nodes[i])] += matches[i] == group_match::same;
    counts.complement[at(nodes[i])] += matches[i] == group_match::complement;
  }
  out.root = best_root_of(other, reference);
  cut_to_taxa(stored_tree(pair.second), matrix.ntax, pair.taxa, &nodes);
  out.branch = out.root.node == other.root() ? matrix.ntax : nodes[at(out.root.node)];
  return out;
}

void show_table(const std::vector<comparison>& compared, int reference) {
  const std::vector<std::string> columns = {"Groups",  "Shared", "Complement",
                                            "Missing", "Root",   "Shared then"};
  std::vector<std::string> labels, cells;
  for (const comparison& c : compared) {
    labels.push_back(text_of("Tree %i", c.tree));
    const bool stays = c.branch == matrix.ntax;
    for (const std::string& cell :
         {std::to_string(c.groups), std::to_string(c.count_of(group_match::same)),
          std::to_string(c.count_of(group_match::complement)),
          std::to_string(c.count_of(group_match::missing)),
          stays ? std::string("stays") : text_of("below %i", c.branch),
          std::to_string(c.root.shared)})
      cells.push_back(cell);
  }
  const std::string title =
      text_of("Groups of tree %i in other trees, as such or as complements, and with the best root",
              reference);
  print_table({title, labels, columns, cells});
}

void draw_reference(int reference, const reference_counts& counts, std::size_t trees) {
  std::vector<std::string> texts(counts.compared.size());
  for (std::size_t n = 0; n < texts.size(); ++n)
    if (counts.compared[n] > 0) texts[n] = text_of("%i/%i", counts.same[n], counts.complement[n]);
  draw_tree(
      stored_tree(reference),
      text_of("Groups of tree %i: how many of %i other trees have them / have their complements",
              reference, static_cast<int>(trees)),
      texts);
}

void save_rerooted(const std::vector<comparison>& compared) {
  std::vector<std::vector<tree_node>> trees;
  for (const comparison& c : compared) {
    trees.emplace_back(stored_tree(c.tree).begin(), stored_tree(c.tree).end());
    reroot_on_branch(trees.back(), matrix.ntax, c.branch);
  }
  keep_trees(trees, "Best_roots", "Trees with their best roots");
}

}  // namespace

constexpr option_table rcompl_options =
    rows.table("rcompl", {.unknown = "Unidentified string in rcompl options: %s"});

void rcompl_command() {
  const rcompl_request request = read_request();
  expect_end();
  const int reference = request.references.front();
  const std::vector<int> none(stored_tree(reference).size(), 0);
  reference_counts counts{none, none, none};
  std::vector<comparison> compared;
  {
    paced_progress progress("Complementary groups");
    for (const int tree : request.others) {
      progress.poll(static_cast<double>(compared.size()),
                    static_cast<double>(request.others.size()));
      compared.push_back(compare(pair_of(reference, tree, request.excluded), counts));
    }
  }
  show_table(compared, reference);
  if (request.draw) draw_reference(reference, counts, compared.size());
  if (request.save) save_rerooted(compared);
}

}  // namespace zeb
