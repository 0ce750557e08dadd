// mixtrees: one tree from trees of different taxa.
#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "distances/commands.h"
#include "distances/kept_trees.h"
#include "distances/paced_progress.h"
#include "distances/supertrees/supertree.h"
#include "distances/tree_pair.h"
#include "distances/tree_words.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "trees/branch_labels.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

struct mixtrees_request {
  supertree_settings how;
  bool table = false;
  bool save = false;
};

constexpr auto how = &mixtrees_request::how;

constexpr command_options rows = {
    choice<how, &supertree_settings::kind>("strict", supertree_settings::strict)
        .help("groups that all trees have that say anything of them"),
    choice<how, &supertree_settings::kind>("combinable", supertree_settings::combinable)
        .help("groups that some tree has and none contradicts"),
    choice<how, &supertree_settings::kind>("majority", supertree_settings::majority)
        .help("groups that more than half of the trees have that say anything of them"),
    choice<how, &supertree_settings::kind>("build", supertree_settings::build)
        .help("the tree that has all that the trees say, where they don't contradict each other"),
    number<how, &supertree_settings::cut>("cut", {50, 99}, "Cutoff must be 50-99")
        .help("per cent of the trees that a group of \"majority\" must exceed"),
    choice<&mixtrees_request::table>("table", 1).help("the trees for and against each group, too"),
    choice<&mixtrees_request::save>("*", 1).help("keep the supertree as the last tree"),
};

std::string title_of(const supertree_settings& wanted, std::size_t trees) {
  const char* names[] = {"Tree with all groups", "Strict supertree",
                         "Combinable component supertree", "Majority rule supertree"};
  std::string title = names[wanted.kind] + text_of(" of %i trees", static_cast<int>(trees));
  if (wanted.kind == supertree_settings::majority) title += text_of(", cut %i", wanted.cut);
  return title + ": trees that have a group / contradict it";
}

bool is_group(const supertree& made, std::size_t node) {
  return node > at(matrix.ntax) && static_cast<int>(node) < node_limit(made.tree, matrix.ntax);
}

void show_table(const supertree& made) {
  const std::vector<std::string> columns = {"Having", "Against", "Unresolved"};
  std::vector<std::string> labels, cells;
  for (std::size_t n = 0; n < made.tree.size(); ++n) {
    if (!is_group(made, n)) continue;
    labels.push_back(text_of("Node %i", static_cast<int>(n)));
    const group_support& s = made.supports[n];
    for (const int count : {s.having, s.against, s.unresolved})
      cells.push_back(std::to_string(count));
  }
  if (!labels.empty()) print_table({"Trees that say anything of a group", labels, columns, cells});
}

void tell_compatibility(const supertree& made, const supertree_settings& wanted,
                        bool have_all_taxa) {
  if (made.compatible) {
    emit("The trees don't contradict each other\n");
  } else {
    constexpr std::string_view text = "The trees contradict each other, as on taxa";
    emit(text, names_of_taxa(made.conflict, text.size()), "\n");
    if (wanted.kind == supertree_settings::build)
      emit("Note: no tree has all that they say; groups that some tree contradicts were dropped\n");
  }
  const bool is_consensus = have_all_taxa && wanted.kind != supertree_settings::build;
  const bool is_complete =
      is_consensus || (made.compatible && wanted.kind == supertree_settings::build);
  if (!is_complete)
    emit("Note: not exact; all groups shown are what was asked for, but others may be missed\n");
}

void save(const supertree& made) {
  keep_tree(made.tree, "Supertree", "Supertree");
  std::vector<branch_label> labels(made.tree.size());
  for (std::size_t n = 0; n < labels.size(); ++n)
    if (is_group(made, n)) labels[n].label = std::to_string(made.supports[n].having);
  label_tree(store.ntrees - 1, labels);
}

bool have_same_taxa(std::span<const const_tree_span> trees, const taxon_set& excluded) {
  const taxon_set shared = shared_taxa(trees, matrix.ntax) - excluded;
  return std::ranges::all_of(trees, [&](const const_tree_span tree) {
    return taxa_of_tree(tree, matrix.ntax) - excluded == shared;
  });
}

}  // namespace

constexpr option_table mixtrees_options =
    rows.table("mixtrees", {.unknown = "Unidentified string in mixtrees options: %s"});

void mixtrees_command() {
  require_data("combining trees");
  mixtrees_request request;
  const tree_words words = read_tree_words(request, mixtrees_options, 1);
  expect_end();
  std::vector<const_tree_span> trees;
  for (const int tree : words.lists[0]) trees.push_back(stored_tree(tree));
  supertree made;
  {
    paced_progress progress("Supertree");
    made = make_supertree(trees, matrix.ntax, words.excluded, request.how,
                          [&](double done) { progress.poll(done, 1); });
  }
  std::vector<std::string> texts(made.tree.size());
  for (std::size_t n = 0; n < texts.size(); ++n)
    if (is_group(made, n))
      texts[n] = text_of("%i/%i", made.supports[n].having, made.supports[n].against);
  draw_tree(made.tree, title_of(request.how, trees.size()), texts);
  tell_compatibility(made, request.how, have_same_taxa(trees, words.excluded));
  if (request.table) show_table(made);
  if (request.save) save(made);
}

}  // namespace zeb
