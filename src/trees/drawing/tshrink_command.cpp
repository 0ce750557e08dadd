// `tshrink`: groups of taxa that diagrams show as single terminals.
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/drawing/shrunken_tree.h"

namespace zeb {

namespace {

void show_groups() {
  if (shrinking.groups == 0) {
    report_line("Trees are shown in full");
    return;
  }
  emit("Groups shown as one terminal:");
  for (int g = 0; g < matrix_state::group_count; ++g) {
    if (((shrinking.groups >> g) & 1U) != 0) {
      emit(" ", matrix.taxon_group_names[at(g)]);
    }
  }
  emit("\n");
}

}  // namespace

void tshrink_command() {
  no_timing();
  if (accept_char('-')) {
    check_end();
    show_trees_in_full();
  } else if (accept_char('*')) {
    check_end();
    require_data("shrinking trees");
    show_groups_as_terminals(matrix.defined_taxon_groups);
  } else if (accept_char('{')) {
    require_data("shrinking trees");
    std::vector<std::uint8_t> chosen(matrix_state::group_count, 0);
    read_group_references(find_list_kind("taxon"), chosen);
    check_end();
    std::uint32_t groups = 0;
    for (std::size_t g = 0; g < chosen.size(); ++g) groups |= (chosen[g] ? 1U : 0U) << g;
    show_groups_as_terminals(groups);
  } else if (skip_blanks_peek() != ';') {
    error_end("Expected \"{groups}\", \"*\" or \"-\" after \"tshrink\"");
  }
  show_groups();
}

}  // namespace zeb
