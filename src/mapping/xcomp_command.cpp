// xcomp: what two trees make of each character.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/progress.h"
#include "engine/fit/fits.h"
#include "engine/plain/plain_optimisation.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/options.h"
#include "mapping/commands.h"
#include "mapping/common_groups.h"
#include "mapping/node_states.h"
#include "mapping/requests.h"
#include "matrix/matrix.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

struct xcomp_settings {
  bool all = false;
  bool nodes = true;
  bool plot = false;
  bool table = false;
};

constexpr command_options rows = {
    toggle<&xcomp_settings::all>("all").help("show characters that don't differ, too"),
    toggle<&xcomp_settings::nodes>("nodes").help(
        "show the nodes that both trees have, but with different states"),
    toggle<&xcomp_settings::plot>("plot").help(
        "draw the groups that both trees have, with the characters whose states differ there"),
    toggle<&xcomp_settings::table>("table").help(
        "show the steps on either tree as lists by character instead"),
};

struct xcomp_request {
  xcomp_settings how;
  int first = -1, second = -1;
  std::vector<std::uint8_t> characters;
};

constexpr const char* usage = "Use xcomp tree tree / characters";

int read_tree() {
  int tree = -1;
  if (!read_optional_int(&tree)) error_end(usage);
  check_tree_number(tree);
  return tree;
}

xcomp_request read_request() {
  xcomp_request request;
  while (std::isalpha(skip_blanks_peek())) read_option(request.how, xcomp_options);
  request.first = read_tree();
  request.second = read_tree();
  request.characters = scored_characters();
  if (accept_char('/') && !read_list(list_plain, 0, matrix.nchar, "character", request.characters))
    error_end("Expected a list of characters");
  check_end();
  return request;
}

/// A character on both trees; steps and fits weighted.
struct compared_character {
  int character = 0;
  double steps[2] = {0, 0};
  double fit[2] = {0, 0};  // as a cost

  double change() const { return steps[1] - steps[0]; }
};

std::vector<compared_character> compare(const xcomp_request& request) {
  std::vector<compared_character> out;
  for (int c = 0; c < matrix.nchar; ++c)
    if (request.characters[at(c)]) out.push_back({c});
  plain_optimiser optimiser(request.characters);
  const fit_rules rules = current_fit_rules();
  for (const int which : {0, 1}) {
    optimiser.optimise(stored_tree(which == 0 ? request.first : request.second),
                       polytomy_kind::hard);
    for (compared_character& one : out) {
      const character_record& record = matrix.characters[at(one.character)];
      one.steps[which] = optimiser.length(one.character) * record.weight;
      one.fit[which] =
          record.weight * character_fit(optimiser, rules, one.character, fit_form::cost);
    }
  }
  return out;
}

std::string number_text(double value) {
  return value == std::floor(value) ? text_of("%.0f", value) : fraction_text(value);
}

void show_characters(const xcomp_request& request, const std::vector<compared_character>& all) {
  std::vector<std::string> labels;
  const std::vector<std::string> columns = {"Steps", "Steps", "Diff", "Fit", "Fit", "Diff"};
  matrix_table table;
  for (const compared_character& one : all) {
    if (one.change() == 0 && !request.how.all) continue;
    labels.push_back(character_label(one.character));
    for (const double v : {one.steps[0], one.steps[1], one.change()})
      table.cells.push_back(number_text(v));
    for (const double v : {one.fit[0], one.fit[1], one.fit[1] - one.fit[0]})
      table.cells.push_back(fraction_text(v));
  }
  if (labels.empty()) return report_line("All characters have the same steps on both trees");
  const std::string title =
      text_of("Characters on trees %i and %i (weighted)", request.first, request.second);
  table.title = title;
  table.row_labels = labels;
  table.column_labels = columns;
  print_table(table);
}

void show_sums(const xcomp_request& request, const std::vector<compared_character>& all) {
  int for_first = 0;
  int for_second = 0;
  double less_on_first = 0;
  double less_on_second = 0;
  for (const compared_character& one : all) {
    for_first += one.change() > 0;
    for_second += one.change() < 0;
    less_on_first += std::max(0.0, one.change());
    less_on_second += std::max(0.0, -one.change());
  }
  emit(counted(for_first, "character has", "characters have"), " fewer steps on tree ",
       request.first, ", by ", number_text(less_on_first), "; ", for_second, " on tree ",
       request.second, ", by ", number_text(less_on_second), "\n");
}

void show_lists(const xcomp_request& request, const std::vector<compared_character>& all) {
  for (const int which : {0, 1}) {
    std::vector<double> steps(at(matrix.nchar), no_fraction);
    bool whole = true;
    for (const compared_character& one : all) {
      steps[at(one.character)] = one.steps[which];
      whole = whole && one.steps[which] == std::floor(one.steps[which]);
    }
    print_table(text_of("Steps on tree %i", which == 0 ? request.first : request.second), steps,
                whole ? 0 : table_decimals());
  }
}

/// A group of both trees that a character has different states at.
struct differing_node {
  int node = 0;  // of the common groups
  int character = 0;
  node_values values[2];
};

std::vector<differing_node> differing_nodes(const xcomp_request& request,
                                            const common_groups& common) {
  const tree_shape first(stored_tree(request.first));
  const tree_shape second(stored_tree(request.second));
  std::vector<differing_node> out;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!request.characters[at(c)] || is_landmark(c)) continue;
    show_progress("Mapping", c, matrix.nchar);
    check_interrupt();
    const mapped_character on_first = map_character(first, c);
    const mapped_character on_second = map_character(second, c);
    for (int v = matrix.ntax; v < node_limit(common.tree, matrix.ntax); ++v) {
      const node_values& a = on_first.at_nodes[at(common.nodes[0][at(v)])];
      const node_values& b = on_second.at_nodes[at(common.nodes[1][at(v)])];
      if (a != b) out.push_back({v, c, {a, b}});
    }
  }
  clear_progress();
  return out;
}

void show_nodes(const common_groups& common, const std::vector<differing_node>& differing) {
  if (differing.empty()) return report_line("No states differ at nodes that both trees have");
  for (int v = matrix.ntax; v < node_limit(common.tree, matrix.ntax); ++v) {
    bool any = false;
    for (const differing_node& one : differing) {
      if (one.node != v) continue;
      if (!any)
        emit(text_of("Node %i and node %i:\n", common.nodes[0][at(v)], common.nodes[1][at(v)]));
      any = true;
      emit("   ", character_heading(one.character), ": ", values_text(one.character, one.values[0]),
           " and ", values_text(one.character, one.values[1]), "\n");
    }
  }
}

void draw(const xcomp_request& request, const common_groups& common,
          const std::vector<differing_node>& differing) {
  std::vector<std::string> texts(common.tree.size());
  for (const differing_node& one : differing) {
    std::string& text = texts[at(one.node)];
    text += (text.empty() ? "" : ",") + std::to_string(one.character);
  }
  draw_tree(common.tree,
            text_of("Groups of trees %i and %i, with characters whose states differ", request.first,
                    request.second),
            texts);
}

}  // namespace

constexpr option_table xcomp_options =
    rows.table("xcomp", {.unknown = "Unrecognized option for \"xcomp\": %s"});

void xcomp_command() {
  require_data_and_trees("comparing characters on trees");
  const xcomp_request request = read_request();
  const std::vector<compared_character> all = compare(request);
  if (request.how.table) return show_lists(request, all);
  show_characters(request, all);
  show_sums(request, all);
  if (!request.how.nodes && !request.how.plot) return;
  const const_tree_span both[] = {stored_tree(request.first), stored_tree(request.second)};
  const common_groups common = groups_in_all(both);
  const std::vector<differing_node> differing = differing_nodes(request, common);
  if (request.how.nodes) show_nodes(common, differing);
  if (request.how.plot) draw(request, common, differing);
}

}  // namespace zeb
