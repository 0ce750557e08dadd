#include "parallel/tasks/session_text.h"

#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "engine/fit/weighting_settings.h"
#include "language/command_strings.h"
#include "language/methods.h"
#include "macro/macro_state.h"
#include "macro/script_files.h"
#include "matrix/matrix.h"
#include "matrix/settings/character_settings.h"
#include "search/sectors/sectors.h"
#include "taxonomy/taxonomy.h"
#include "trees/constraints/constraint_text.h"
#include "trees/constraints/constraints.h"
#include "trees/drawing/shrunken_tree.h"
#include "trees/drawing/tags.h"
#include "trees/tree_groups.h"

namespace zeb {
namespace {

std::string output_of_command(const std::string& command) {
  const output_capture said;
  const quiet_scope quiet;
  run_command_string(command);
  return said.text();
}

std::string macro_settings() {
  std::string text = text_of("macro -;macro *%i %i;macro [%i;", macros.max_loops,
                             macros.max_variables, static_cast<int>(macros.memory_bytes / 1000));
  text += text_of("macro protection %i;", macros.protection);
  if (script_files.most_files != script_file_state{}.most_files)
    text += text_of("hifile =%i;", script_files.most_files);
  if (macros.integer_only) text += "macfloat -;";
  if (macros.number_format == "%g") text += "macfloat e;";
  if (macros.number_format.starts_with("%.")) text += text_of("macfloat %i;", macros.digits);
  if (macros.names_as_numbers) text += "macro +;";
  text += "macro =;";
  if (macros.blank_after_strings) text += "set +;";
  if (macros.report) text += "macreport =;";
  return text + "\n";
}

/// Read as a tree, which then goes again.
std::string tags_as_commands() {
  if (!tags.tags_present) return {};
  std::string text;
  for (const std::string& line : readable_tags()) text += line + "\n";
  return text + "keep 0;\n";
}

std::string shrinking_as_commands() {
  if (shrinking.groups == 0) return {};
  std::string groups;
  for (int g = 0; g < matrix_state::group_count; ++g)
    if (((shrinking.groups >> g) & 1U) != 0) groups += text_of(" {%i}", g);
  return "tshrink" + groups + ";\n";
}

/// What must be set before data are read. Functions and sets of implied weights can be defined only
/// where these were on then; the settings come later, and turn them on where they are.
std::string read_as_here(const std::string& data) {
  const int levels = sectors.each.recurse;
  const std::string recursion =
      levels > sector_settings{}.each.recurse ? text_of("sectsch:recurse %i;\n", levels) : "";
  return recursion + (weighting.data_allow ? "piwe =;\n" + data + "piwe -;\n" : data);
}

}  // namespace

std::string data_as_commands() {
  std::string text = read_as_here(output_of_command("xread *;"));
  text += kept_settings_as_commands();
  if (matrix.defined_taxon_groups != 0) text += output_of_command("agroup *;");
  text += shrinking_as_commands();
  if (taxonomy_in_use()) text += "taxonomy =;\n";
  if (matrix.defined_character_groups != 0) text += output_of_command("xgroup *;");
  if (matrix.use_taxon_names) text += "taxname =;\n";
  text += tags_as_commands();
  if (matrix.use_char_names) text += "cnames =;\n";
  return text;
}

std::string data_as_commands(const write_request& request) {
  const output_capture said;
  write_matrix(request);
  return read_as_here(said.text());
}

std::string settings_as_commands() {
  std::string text = macro_settings();
  for (const std::string& command : session_settings()) text += command + ";\n";
  if (constraints.defined() && !constraints.active) text += definitions_text() + ";\n";
  for (const std::string& command : changed_settings()) text += command + ";\n";
  return text;
}

}  // namespace zeb
