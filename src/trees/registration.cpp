#include "trees/registration.h"

#include "base/command.h"
#include "base/message_text.h"
#include "base/process.h"
#include "language/hooks.h"
#include "language/methods.h"
#include "language/settings_scope.h"
#include "matrix/hooks.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "trees/constraints/constraint_text.h"
#include "trees/constraints/constraints.h"
#include "trees/drawing/display.h"
#include "trees/drawing/shrunken_tree.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/tables.h"
#include "trees/drawing/tags.h"
#include "trees/hooks.h"
#include "trees/notation/auto_save.h"
#include "trees/notation/rescued_trees.h"
#include "trees/notation/tree_file.h"
#include "trees/tree_groups.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {

trees_hooks hooks_of_trees;

namespace {

/// The tree that `xread +` simulates data along.
std::vector<std::int32_t> copy_of_tree(int number) {
  require_trees();
  check_tree_number(number);
  const const_tree_span tree = stored_tree(number);
  return {tree.begin(), tree.end()};
}

std::vector<std::string> display_settings_as_commands() {
  std::vector<std::string> lines;
  if (tables.dense) lines.emplace_back("tables =");
  if (tables.precision >= 0) lines.push_back(text_of("tables /%i", tables.precision));
  if (!display.naked) lines.emplace_back("naked -");
  if (display.roomy) lines.emplace_back("naked [");
  if (display.code_page_lines) lines.emplace_back("lintrees -");
  if (display.draw_symmetric || display.second_largest_first)
    lines.push_back(std::string("tplot ") + (display.draw_symmetric ? "+" : "-") +
                    (display.second_largest_first ? "+" : ""));
  if (tags.tag_separator != 0) {
    const std::string width = tags.tag_width > 0 ? std::to_string(tags.tag_width) : std::string();
    lines.push_back("ttags [ " + width + tags.tag_position);
  }
  if (tags.tags_on) lines.emplace_back("ttags =");
  if (store.include_absent) lines.emplace_back("absincl =");
  return lines;
}

}  // namespace

void register_trees() {
  add_settings(noted<tables>);
  add_settings(noted<display>);
  add_settings(noted<shrinking>);
  add_methods(methods_part::session, display_settings_as_commands);
  hooks_of_matrix.stored_tree = copy_of_tree;
  hooks_of_language.flag_descendants = flag_descendants;
  register_tree_lists();

  add_new_matrix_hook(create_tree_buffer);
  add_new_matrix_hook(name_tree_groups);
  add_matrix_gone_hook(forget_tree_buffer);
  add_matrix_gone_hook(forget_tree_groups);
  add_matrix_gone_hook(clear_tags);
  add_matrix_gone_hook(show_trees_in_full);
  // A file for other data can't be gone on with.
  add_matrix_gone_hook([] { close_tree_file(); });

  add_matrix_gone_hook(forget_constraints);
  hooks_of_matrix.constraints_defined = [] { return constraints.defined(); };
  add_methods(methods_part::choices, []() -> std::vector<std::string> {
    if (!constraints.active) return {};
    return {definitions_line(), "constrain ="};
  });
  add_methods(methods_part::choices, []() -> std::vector<std::string> {
    const int vault = store.vault.maxtrees;
    if (!matrix.present || (store.maxtrees == tree_store().maxtrees && vault == 0)) return {};
    return {"hold " + std::to_string(store.maxtrees) +
            (vault > 0 ? "/" + std::to_string(vault) : "")};
  });

  add_command_over_hook(settle_tree_buffer);
  add_command_over_hook(auto_save_if_due);

  add_quit_hook(auto_save_at_end);
  add_quit_hook(rescue_trees);
  add_closing_hook(abandon_svg_file);
  add_closing_hook(abandon_tree_file);
}

}  // namespace zeb
