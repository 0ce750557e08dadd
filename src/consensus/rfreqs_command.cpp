// rfreqs: frequencies of the groups of a tree beside those of what contradicts them most.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "base/command.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "consensus/commands.h"
#include "consensus/conflict_consensus.h"
#include "consensus/requests.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "language/lists.h"
#include "matrix/matrix.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// A list of trees, and what it says of each node of the reference tree.
struct compared_list {
  int trees = 0;
  std::vector<contested_group> groups;

  int per_cent(int count) const { return static_cast<int>(count * 100LL / trees); }
};

struct rfreqs_request {
  consensus_request reference;  // and the taxa left out
  std::vector<std::vector<std::uint8_t>> lists;
};

/// A list; without one, all trees but the reference.
std::vector<std::uint8_t> read_list_without(int reference) {
  std::vector<std::uint8_t> trees(at(store.ntrees), 0);
  constexpr unsigned flags = list_slash_ends | list_in_tree_buffer;
  if (!read_list(flags, 0, store.ntrees, "tree", trees)) std::ranges::fill(trees, std::uint8_t{1});
  trees[at(reference)] = 0;
  if (std::ranges::count(trees, 1) == 0) error_end("Can't compare tree with itself");
  return trees;
}

rfreqs_request read_request() {
  require_data("comparing frequencies of groups");
  if (store.ntrees == 0) error_end("No trees specified");
  rfreqs_request request;
  if (!read_reference(request.reference))
    error_end(command.command_name, "[N] requires a tree number");
  do {
    request.lists.push_back(read_list_without(request.reference.reference));
  } while (accept_char('&'));
  request.reference.excluded.assign(at(matrix.ntax), 0);
  if (accept_char('/')) read_list(list_plain, 0, matrix.ntax, "taxon", request.reference.excluded);
  require_end();
  return request;
}

std::vector<compared_list> compare_lists(const rfreqs_request& request) {
  std::vector<compared_list> out;
  for (const std::vector<std::uint8_t>& list : request.lists) {
    consensus_request one = request.reference;
    one.trees = list;
    out.push_back({static_cast<int>(std::ranges::count(list, 1)),
                   contested_groups(selection_of(one), stored_tree(one.reference))});
  }
  return out;
}

void draw(const rfreqs_request& request, const std::vector<compared_list>& lists,
          const std::string& title) {
  const const_tree_span tree = stored_tree(request.reference.reference);
  std::vector<std::string> texts(tree.size());
  for (std::size_t n = 0; n < texts.size(); ++n)
    for (const compared_list& list : lists) {
      if (!list.groups[n].is_group) continue;
      if (!texts[n].empty()) texts[n] += '/';
      texts[n] += std::to_string(list.per_cent(list.groups[n].difference()));
    }
  draw_tree(tree, title, texts);
}

/// "Node 9, trees of list 1 (33%): a b c".
void name_opponents(std::size_t node, const std::vector<compared_list>& lists) {
  for (std::size_t i = 0; i < lists.size(); ++i) {
    const contested_group& group = lists[i].groups[node];
    if (group.against == 0) continue;
    std::string text = text_of("Against node %i", static_cast<int>(node));
    if (lists.size() > 1) text += text_of(", list %i", static_cast<int>(i) + 1);
    text += text_of(" (%i%%):", lists[i].per_cent(group.against));
    std::vector<std::string> names;
    for (const int taxon : group.other) names.push_back(taxon_label(taxon));
    emit(text, wrapped_words(names, text.size()), "\n");
  }
}

void show_table(const std::vector<compared_list>& lists, const std::string& title) {
  std::vector<std::string> rows;
  std::vector<std::string> columns;
  matrix_table table;
  for (std::size_t i = 0; i < lists.size(); ++i)
    for (const char* column : {"Freq", "Against", "Diff"})
      columns.push_back(column + (lists.size() > 1 ? " " + std::to_string(i + 1) : ""));
  for (std::size_t n = 0; n < lists[0].groups.size(); ++n) {
    if (!lists[0].groups[n].is_group) continue;
    rows.push_back("Node " + std::to_string(n));
    for (const compared_list& list : lists)
      for (const int count :
           {list.groups[n].count, list.groups[n].against, list.groups[n].difference()})
        table.cells.push_back(std::to_string(list.per_cent(count)));
  }
  table.title = title;
  table.row_labels = rows;
  table.column_labels = columns;
  print_table(table);
  for (std::size_t n = 0; n < lists[0].groups.size(); ++n) name_opponents(n, lists);
}

}  // namespace

void rfreqs_command() {
  const rfreqs_request request = read_request();
  expect_end();
  const std::vector<compared_list> lists = compare_lists(request);
  std::string title =
      text_of("Relative frequencies of groups from tree %i, in ", request.reference.reference);
  for (std::size_t i = 0; i < lists.size(); ++i)
    title += (i > 0 ? " / " : "") + std::to_string(lists[i].trees);
  title += " trees";
  if (request.reference.as_table)
    show_table(lists, title);
  else
    draw(request, lists, title);
}

}  // namespace zeb
