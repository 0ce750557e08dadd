// matchtax: which taxa of one tree stand for which of another.
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "distances/commands.h"
#include "distances/kept_trees.h"
#include "distances/matching/stored_matching.h"
#include "distances/paced_progress.h"
#include "distances/tree_pair.h"
#include "distances/tree_words.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

struct matchtax_request {
  matching_settings how;
  bool save = false;
  int first = 0;
  int second = 0;
  taxon_set excluded;
};

constexpr auto how = &matchtax_request::how;

constexpr command_options rows = {
    choice<how, &matching_settings::free>("free", 1).help(
        "taxa that both trees have may stand for others, too"),
    number<how, &matching_settings::replications>("replications", {1, 1e6},
                                                  "Give number of random starts (1-1000000)")
        .help("starts, the first from the shapes of the trees, the others at random"),
    choice<&matchtax_request::save>("*", 1).help(
        "keep the second tree with the names of the first as the last tree"),
};

matchtax_request read_request() {
  require_data("matching taxa");
  matchtax_request request;
  tree_words words = read_tree_words(request, matchtax_options, 2);
  std::vector<int> trees = words.lists[0];
  if (words.lists.size() == 2)
    trees.insert(trees.end(), words.lists[1].begin(), words.lists[1].end());
  if (trees.size() != 2) error_end("Give two trees to match");
  request.first = trees[0];
  request.second = trees[1];
  request.excluded = std::move(words.excluded);
  return request;
}

void show_partners(const stored_match& match, const matchtax_request& request) {
  std::vector<std::string> labels, cells;
  taxon_set alone = taxa_of_tree(stored_tree(request.second), matrix.ntax) - request.excluded;
  taxon_set alone_in_first(matrix.ntax);
  for (const int t : taxa_of_tree(stored_tree(request.first), matrix.ntax) - request.excluded) {
    const int partner = match.partner[at(t)];
    if (partner < 0) {
      alone_in_first.insert(t);
      continue;
    }
    labels.push_back(taxon_label(t));
    cells.push_back(taxon_label(partner));
    alone.erase(partner);
  }
  const std::vector<std::string> columns = {text_of("Tree %i", request.second)};
  const std::string title = text_of("Taxa of tree %i, and those of tree %i that stand for them",
                                    request.first, request.second);
  print_table({title, labels, columns, cells});
  if (!alone_in_first.empty())
    emit("Only in tree ", request.first, ":", names_of_taxa(alone_in_first, 16), "\n");
  if (!alone.empty()) emit("Only in tree ", request.second, ":", names_of_taxa(alone, 16), "\n");
}

void tell_score(const stored_match& match) {
  emit("Shared groups: ", match.shared, " of ", match.groups);
  if (match.is_exact())
    emit(" (exact: no map shares more)\n");
  else
    emit(" (the most found, not exact; at most ", match.at_most, ")\n");
}

}  // namespace

constexpr option_table matchtax_options =
    rows.table("matchtax", {.unknown = "Unidentified string in matchtax options: %s"});

void matchtax_command() {
  const matchtax_request request = read_request();
  expect_end();
  stored_match match;
  {
    paced_progress progress("Matching taxa");
    match = match_stored_trees(stored_tree(request.first), stored_tree(request.second), matrix.ntax,
                               request.excluded, request.how,
                               [&](double done) { progress.poll(done, 1); });
  }
  show_partners(match, request);
  tell_score(match);
  if (request.save) keep_tree(match.renamed, "Matched_taxa", "Tree with matched taxa");
}

}  // namespace zeb
