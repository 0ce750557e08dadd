// resols: how trees resolve the polytomies of their strict consensus, and which branches they are
// that the trees disagree about.
#include <string>
#include <vector>

#include "base/indices.h"
#include "base/message_text.h"
#include "consensus/strict_consensus.h"
#include "console/output.h"
#include "instability/commands.h"
#include "instability/polytomies.h"
#include "instability/requests.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"

namespace zeb {
namespace {

struct resols_settings {
  int shown = 10;  // resolutions of a polytomy
  bool table = false;
  bool tree = false;
};

constexpr command_options rows = {
    number<&resols_settings::shown>("show", {1, 1000000},
                                    "Number of resolutions to show must be 1 - 1000000")
        .help("most resolutions of a polytomy that are listed"),
    toggle<&resols_settings::tree>("plot").help(
        "draw the consensus, with the number of resolutions at each polytomy"),
    toggle<&resols_settings::table>("table").help("show the numbers by node as a list instead"),
};

int trees_of(const polytomy& shown) {
  int sum = 0;
  for (const resolution& one : shown.resolutions) sum += one.count;
  return sum;
}

void list_resolutions(const polytomy& shown, int most) {
  const int trees = trees_of(shown);
  int listed = 0;
  for (const resolution& one : shown.resolutions) {
    if (listed++ == most) break;
    emit(text_of("%6i (%3i%%)  ", one.count, static_cast<int>(one.count * 100LL / trees)),
         resolution_text(one, shown.size()), "\n");
  }
  const auto all = static_cast<int>(shown.resolutions.size());
  if (all > most) emit(text_of("   and %i more\n", all - most));
}

/// The branches without which there are fewer resolutions, or groups that all of them have.
void list_causes(const polytomy& shown) {
  if (shown.resolutions.size() < 2 || shown.size() < 4) return;
  bool any = false;
  for (int b = 0; b < shown.size(); ++b) {
    std::vector<std::uint8_t> left_out(at(shown.size()), 0);
    left_out[at(b)] = 1;
    const std::vector<resolution> rest = without_branches(shown, left_out);
    const int groups = common_groups_of(rest, shown.size());
    if (rest.size() == shown.resolutions.size() && groups == 0) continue;
    if (!any) emit("  Without a branch: resolutions, groups that all of them have\n");
    any = true;
    emit(text_of("   %3s %7i %6i\n", branch_letters(b).c_str(), static_cast<int>(rest.size()),
                 groups));
  }
  if (!any) emit("  No single branch makes for fewer resolutions\n");
}

void show(const polytomy& shown, int most) {
  emit(text_of("Node %i: %i branches, ", shown.node, shown.size()),
       counted(static_cast<long long>(shown.resolutions.size()), "resolution", "resolutions"),
       " in ", counted(trees_of(shown), "tree", "trees"), "\n");
  for (int b = 0; b < shown.size(); ++b)
    emit(taxa_after(text_of("   %3s:", branch_letters(b).c_str()), shown.branches[at(b)]));
  list_resolutions(shown, most);
  list_causes(shown);
}

void deliver(const resols_settings& how, const_tree_span tree,
             const std::vector<polytomy>& polytomies) {
  if (how.table) {
    std::vector<std::int64_t> numbers(at(node_limit(tree, matrix.ntax)), no_value);
    for (const polytomy& one : polytomies)
      numbers[at(one.node)] = static_cast<std::int64_t>(one.resolutions.size());
    return print_table("Resolutions of the polytomies, by node of the strict consensus", numbers);
  }
  if (how.tree) {
    std::vector<std::string> texts(tree.size());
    for (const polytomy& one : polytomies)
      texts[at(one.node)] = std::to_string(one.resolutions.size());
    draw_tree(tree, "Resolutions of the polytomies of the strict consensus", texts);
  }
  for (const polytomy& one : polytomies) show(one, how.shown);
}

}  // namespace

constexpr option_table resols_options =
    rows.table("resols", {.unknown = "Unrecognized option for \"resols\": %s"});

void resols_command() {
  resols_settings how;
  read_leading_options(how, resols_options);
  const tree_selection selection = read_selection_and_excluded("comparing resolutions");
  check_end();
  const group_tree strict = strict_consensus(selection);
  const compared_copies copies(selection);
  const std::vector<polytomy> polytomies = polytomies_of(strict.tree, copies, matrix.ntax);
  if (polytomies.empty()) return report_line("The strict consensus has no polytomy");
  deliver(how, strict.tree, polytomies);
}

}  // namespace zeb
