// kleex: the largest sets of characters that are compatible, and their trees.
#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "compatibility/clique_trees.h"
#include "compatibility/cliques.h"
#include "compatibility/commands.h"
#include "compatibility/compatible_characters.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "language/lists.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "matrix/settings/named_groups.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"
#include "trees/tree_undo.h"

namespace zeb {
namespace {

struct kleex_settings {
  bool weights = true;
  int suboptimal = 0;
  int most = 100;  // sets that are kept
  bool plot = true;
  bool table = false;
  bool store = false;
  bool groups = false;
};

constexpr command_options rows = {
    choice<&kleex_settings::store>("*", 1).help("the tree of each set is saved in memory"),
    choice<&kleex_settings::groups>("[", 1).help(
        "the characters of each set become a group (see \"xgroup\"), as long as there are free "
        "ones"),
    toggle<&kleex_settings::weights>("weights").help(
        "sets are compared by the sum of the weights, else by the number of characters"),
    number<&kleex_settings::suboptimal>("subopt", {0, 1'000'000},
                                        "Value of subopt must be 0 - 1000000")
        .help("sets that weigh less than the best one by up to N, too"),
    number<&kleex_settings::most>("most", {1, 100'000}, "Number of sets must be 1 - 100000")
        .help("sets that are kept"),
    toggle<&kleex_settings::plot>("plot").help("draw the tree of each set"),
    toggle<&kleex_settings::table>("table").help(
        "only show, by character, with how many others it is compatible, as a list"),
};

struct kleex_request {
  kleex_settings how;
  std::vector<int> characters;
  int left_out = 0;
};

kleex_request read_request() {
  kleex_request request;
  for (int c = skip_blanks_peek(); std::isalpha(c) || c == '*' || c == '['; c = skip_blanks_peek())
    if (!read_sign(request.how, kleex_options)) read_option(request.how, kleex_options);
  std::vector<std::uint8_t> wanted(at(matrix.nchar), 0);
  if (!accept_char('/') || !read_list(list_plain, 0, matrix.nchar, "character", wanted))
    for (int c = 0; c < matrix.nchar; ++c) wanted[at(c)] = matrix.characters[at(c)].active;
  check_end();
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!wanted[at(c)]) continue;
    if (can_be_compared(c))
      request.characters.push_back(c);
    else
      ++request.left_out;
  }
  if (request.characters.empty()) error_end("No characters that can be compared");
  return request;
}

std::vector<std::uint8_t> characters_in(const compatibility_graph& graph, const taxon_set& set) {
  std::vector<std::uint8_t> flags(at(matrix.nchar), 0);
  for (const int p : set)
    for (const int c : graph.patterns[at(p)].characters) flags[at(c)] = 1;
  return flags;
}

void list_characters(const std::string& head, const std::vector<std::uint8_t>& flags) {
  const auto items = list_items(matrix.nchar, [&](int c) { return flags[at(c)] != 0; });
  emit(head, wrapped_words(items, head.size()), "\n");
}

void show_table(const compatibility_graph& graph) {
  std::vector<std::int64_t> counts(at(matrix.nchar), no_value);
  for (std::size_t p = 0; p < graph.patterns.size(); ++p) {
    const std::vector<int>& own = graph.patterns[p].characters;
    auto count = static_cast<std::int64_t>(own.size()) - 1;
    for (const int q : graph.compatible[p])
      count += static_cast<std::int64_t>(graph.patterns[at(q)].characters.size());
    for (const int c : own) counts[at(c)] = count;
  }
  print_table("Characters that each is compatible with", counts);
}

std::int64_t weight_of(const compatibility_graph& graph, const taxon_set& set) {
  std::int64_t sum = 0;
  for (const int p : set) sum += graph.patterns[at(p)].weight;
  return sum;
}

void make_group(const std::vector<std::uint8_t>& flags, std::size_t number) {
  const std::string name = "Clique_" + std::to_string(number);
  const int group = make_character_group(name, flags);
  if (group < 0) return warning("No free group for the characters of", name);
  if (settings.report) emit("   group ", group, " (", name, ")\n");
}

void store_tree(const std::vector<tree_node>& tree) {
  std::ranges::copy(tree, take_slot(true).begin());
  if (settings.report) emit("   tree ", store.ntrees - 1, "\n");
}

/// One of the sets. True: its characters are without homoplasy on the tree shown.
bool show_set(const kleex_settings& how, const compatibility_graph& graph, const taxon_set& set,
              std::size_t number) {
  const std::vector<std::uint8_t> flags = characters_in(graph, set);
  list_characters(
      text_of("Set %zu, weight %lli, ", number, static_cast<long long>(weight_of(graph, set))) +
          counted(std::ranges::count(flags, 1), "character:", "characters:"),
      flags);
  const clique_tree made = tree_of_characters(graph, set);
  if (!made.in_doubt.empty()) {
    std::vector<std::uint8_t> doubt(at(matrix.nchar), 0);
    for (const int c : made.in_doubt) doubt[at(c)] = 1;
    list_characters("   compatible in pairs, not shown to be so all together:", doubt);
  }
  if (how.groups) make_group(flags, number);
  if (how.store) store_tree(made.tree);
  if (how.plot) draw_tree(made.tree, text_of("Tree of set %zu", number), {});
  return made.in_doubt.empty();
}

void tell_exactness(const clique_search_result& found, bool first_is_shown) {
  if (!found.complete)
    emit("Not all sets were found: ",
         interrupted() ? "the search was stopped\n" : "there are more than are kept\n");
  if (interrupted()) return;
  emit(first_is_shown
           ? "Exact: no tree is free of homoplasy for characters of more weight\n"
           : "An upper bound: sets are compatible in pairs, which missing entries and characters "
             "of\nthree states or more make no proof\n");
}

}  // namespace

constexpr option_table kleex_options =
    rows.table("kleex", {.unknown = "Unrecognized option for \"kleex\": %s"});

void kleex_command() {
  require_data("comparing characters");
  const kleex_request request = read_request();
  const compatibility_graph graph = compare_characters(request.characters, request.how.weights);
  if (request.left_out > 0)
    emit(counted(request.left_out, "character", "characters"),
         " left out (uninformative, continuous, or with costs)\n");
  if (request.how.table) return show_table(graph);
  std::vector<std::int64_t> weights;
  for (const character_pattern& one : graph.patterns) weights.push_back(one.weight);
  const search_running running;
  const clique_search_result found =
      heaviest_cliques(graph.compatible, weights, request.how.suboptimal, at(request.how.most));
  if (interrupts.reason == stop_reason::time) emit(end_of_time_text());
  emit(counted(static_cast<long long>(request.characters.size()), "character", "characters"), ", ",
       counted(static_cast<long long>(graph.patterns.size()), "pattern", "patterns"), "; ",
       counted(static_cast<long long>(found.cliques.size()), "set", "sets"),
       ", the best of weight ", found.best, "\n");
  tree_undo undo({});
  bool shown = false;
  for (std::size_t i = 0; i < found.cliques.size(); ++i) {
    const bool proven = show_set(request.how, graph, found.cliques[i], i);
    shown = shown || (proven && weight_of(graph, found.cliques[i]) == found.best);
  }
  undo.keep();
  tell_exactness(found, shown);
}

}  // namespace zeb
