// taxonomy: groups that names of taxa hold, and how they stand on trees.
#include <algorithm>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "taxonomy/commands.h"
#include "taxonomy/group_tests.h"
#include "taxonomy/taxonomy.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

enum class taxonomy_action { show, on, off, groups };
struct taxonomy_settings {
  taxonomy_action action = taxonomy_action::show;
  bool labels = false;
  bool table = false;
};

constexpr command_options rows = {
    choice<&taxonomy_settings::action>("=", 1).help("use the taxonomy that names of taxa hold"),
    choice<&taxonomy_settings::action>("-", 2).help("don't use it any longer"),
    choice<&taxonomy_settings::action>("*", 3).help("list its groups, by number, with their taxa"),
    choice<&taxonomy_settings::labels>("[", 1).help(
        "draw the trees, with the names of the groups at their nodes; \"*\" marks those that "
        "aren't monophyletic, at the clade that comes nearest"),
    choice<&taxonomy_settings::table>("(", 1).help(
        "show, by group, in how many of the trees it is monophyletic"),
};

std::vector<std::string> labels_of(const taxon_set& taxa) {
  std::vector<std::string> out;
  for (const int t : taxa) out.emplace_back(name_proper(taxon_label(t)));
  return out;
}

void tell_state() {
  if (!taxonomy_in_use()) return report_line("No taxonomy defined");
  const taxonomic_groups all = read_taxonomy();
  const auto without = static_cast<int>(std::ranges::count(all.group_of, -1));
  emit("Taxonomy: ", counted(static_cast<long long>(all.groups.size()), "group", "groups"), ", ",
       matrix.ntax - without, " of ", matrix.ntax, " taxa are in some\n");
}

void list_groups(const taxonomic_groups& all) {
  for (std::size_t g = 0; g < all.groups.size(); ++g) {
    const taxonomic_group& group = all.groups[g];
    const std::string head = text_of("%4zu ", g) + std::string(2 * at(group.rank), ' ') +
                             group.name + text_of(" (%i):", group.members.count());
    emit(head, wrapped_words(labels_of(group.members), head.size()), "\n");
  }
}

void set_use(bool on) {
  check_end();
  no_timing();
  if (!on) {
    use_taxonomy(false);
    if (settings.report) report_line("Taxonomy is OFF");
    return;
  }
  if (read_taxonomy().groups.empty())
    error_end("No taxon name holds a taxonomy, as \"name@Group_Group\" or \"name____Group_Group\"");
  use_taxonomy(true);
  if (settings.report) tell_state();
}

void tell_breaker(const char* head, const taxon_set& taxa) {
  if (taxa.empty()) return;
  const std::string start = std::string("      ") + head;
  emit(start, wrapped_words(labels_of(taxa), start.size()), "\n");
}

void tell_group(const taxonomic_groups& all, int group, const group_on_tree& found) {
  const std::string name =
      std::string(2 * at(all.groups[at(group)].rank), ' ') + all.groups[at(group)].name;
  if (found.monophyletic())
    return emit("  ", name, text_of(": monophyletic, node %i\n", found.node));
  emit("  ", name,
       text_of(": not monophyletic, in %i pieces; nearest node %i has %i of %i", found.pieces,
               found.node, found.present - found.outside.count(), found.present),
       found.on_other_root ? "; it would be on another root\n" : "\n");
  tell_breaker("others inside:", found.intruders);
  tell_breaker("members outside:", found.outside);
}

void tell_tree(const taxonomic_groups& all, int number) {
  report_line(tree_heading(number));
  int tested = 0;
  int monophyletic = 0;
  for (int g = 0; g < static_cast<int>(all.groups.size()); ++g) {
    const group_on_tree found = test_group(all, g, stored_tree(number), matrix.ntax);
    if (!found.can_be_tested()) continue;
    ++tested;
    monophyletic += found.monophyletic();
    tell_group(all, g, found);
  }
  emit(text_of("  %i of %i groups of two or more taxa are monophyletic\n", monophyletic, tested));
}

void draw_labels(const taxonomic_groups& all, int number) {
  const const_tree_span tree = stored_tree(number);
  std::vector<std::string> texts(tree.size());
  for (int g = 0; g < static_cast<int>(all.groups.size()); ++g) {
    const group_on_tree found = test_group(all, g, tree, matrix.ntax);
    if (!found.can_be_tested()) continue;
    std::string& text = texts[at(found.node)];
    text += (text.empty() ? "" : "/") + all.groups[at(g)].name;
    if (!found.monophyletic()) text += '*';
  }
  draw_tree(tree, tree_heading(number), texts);
}

void show_table(const taxonomic_groups& all, const std::vector<std::uint8_t>& chosen) {
  std::vector<std::int64_t> counts;
  for (int g = 0; g < static_cast<int>(all.groups.size()); ++g) {
    check_interrupt();
    std::int64_t count = 0;
    bool any = false;
    for (int t = 0; t < store.ntrees; ++t) {
      if (!chosen[at(t)]) continue;
      const group_on_tree found = test_group(all, g, stored_tree(t), matrix.ntax);
      any |= found.can_be_tested();
      count += found.can_be_tested() && found.monophyletic();
    }
    counts.push_back(any ? count : no_value);
  }
  const auto trees = static_cast<int>(std::ranges::count(chosen, 1));
  print_table(text_of("Of %i trees those with the group (numbers as in \"taxonomy *\")", trees),
              counts);
}

}  // namespace

constexpr option_table taxonomy_options =
    rows.table("taxonomy", {.unknown = "Unrecognized option for \"taxonomy\": %s"});

void taxonomy_command() {
  require_data("using a taxonomy");
  taxonomy_settings how;
  while (read_sign(how, taxonomy_options)) continue;
  if (how.action == taxonomy_action::on || how.action == taxonomy_action::off)
    return set_use(how.action == taxonomy_action::on);
  if (how.action == taxonomy_action::show && !how.labels && !how.table &&
      skip_blanks_peek() == ';') {
    check_end();
    no_timing();
    return tell_state();
  }
  if (!taxonomy_in_use()) error_end("No taxonomy defined!");
  const taxonomic_groups all = read_taxonomy();
  if (how.action == taxonomy_action::groups) {
    check_end();
    return list_groups(all);
  }
  const std::vector<std::uint8_t> chosen = read_tree_list();
  check_end();
  if (how.table) return show_table(all, chosen);
  for (int t = 0; t < store.ntrees; ++t) {
    if (!chosen[at(t)]) continue;
    check_interrupt();
    if (how.labels)
      draw_labels(all, t);
    else
      tell_tree(all, t);
  }
}

}  // namespace zeb
