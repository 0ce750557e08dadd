// riddup: taxa with the same data as another one, set aside and put back.
#include <algorithm>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "language/lists.h"
#include "language/options.h"
#include "matrix/data_summary.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"
#include "trees/tree_undo.h"
#include "trees/twin_taxa.h"

namespace zeb {
namespace {

enum class riddup_action { set_aside, show, put_back, list };
struct riddup_settings {
  riddup_action action = riddup_action::set_aside;
};

constexpr command_options rows = {
    choice<&riddup_settings::action>("*", 1).help(
        "only show the taxa with the same data; all of them stay active"),
    choice<&riddup_settings::action>("-", 2).help(
        "put those set aside back: they are active again, and on the trees of the list beside "
        "their twins"),
    choice<&riddup_settings::action>("=", 3).help("list those that are set aside"),
};

/// Groups of active taxa with the same active data, within the list of taxa.
std::vector<std::vector<int>> same_data_within(const std::vector<std::uint8_t>& wanted) {
  std::vector<std::vector<int>> groups = summarise_data().same_rows;
  for (std::vector<int>& group : groups)
    std::erase_if(group, [&](int t) { return !wanted[at(t)]; });
  std::erase_if(groups, [](const std::vector<int>& group) { return group.size() < 2; });
  return groups;
}

void show(const std::vector<std::vector<int>>& groups) {
  if (groups.empty()) return report_line("No taxa have the same data");
  for (const std::vector<int>& group : groups) {
    std::vector<std::string> names;
    for (const int t : group) names.push_back(taxon_label(t));
    const std::string head = "Same data:";
    emit(head, wrapped_words(names, head.size()), "\n");
  }
}

void set_aside(bool only_show) {
  std::vector<std::uint8_t> wanted(at(matrix.ntax), 0);
  if (!read_list(list_plain, 0, matrix.ntax, "taxon", wanted))
    std::ranges::fill(wanted, std::uint8_t{1});
  check_end();
  const std::vector<std::vector<int>> groups = same_data_within(wanted);
  show(groups);
  if (only_show || groups.empty()) return;
  const std::size_t before = twins_set_aside().size();
  set_twins_aside(groups);
  const auto set = static_cast<int>(twins_set_aside().size() - before);
  emit(counted(set, "taxon", "taxa"), " set aside, ", active_taxa(),
       " active taxa; \"riddup -\" puts them back\n");
}

void put_back() {
  std::vector<std::uint8_t> chosen;
  if (store.ntrees > 0) chosen = read_tree_list();
  check_end();
  if (twins_set_aside().empty()) return report_line("No taxa are set aside");
  tree_undo undo(chosen);
  int changed = 0;
  for (int t = 0; t < store.ntrees; ++t)
    if (chosen[at(t)] && add_twins(stored_tree(t), matrix.ntax, twins_set_aside()) > 0) ++changed;
  const auto taxa = static_cast<int>(twins_set_aside().size());
  take_twins_back();
  undo.keep();
  emit(counted(taxa, "taxon", "taxa"), " put back, on ", counted(changed, "tree", "trees"), "\n");
}

void list_pairs() {
  check_end();
  no_timing();
  if (twins_set_aside().empty()) return report_line("No taxa are set aside");
  for (const auto& [taxon, kept] : twins_set_aside())
    report_line(taxon_label(taxon), "as", taxon_label(kept));
}

}  // namespace

constexpr option_table riddup_options =
    rows.table("riddup", {.unknown = "Unrecognized option for \"riddup\": %s"});

void riddup_command() {
  require_data("looking for duplicate taxa");
  riddup_settings how;
  read_sign(how, riddup_options);
  if (how.action == riddup_action::put_back) return put_back();
  if (how.action == riddup_action::list) return list_pairs();
  set_aside(how.action == riddup_action::show);
}

}  // namespace zeb
