// tplot, naked and lintrees: trees as text diagrams.
#include <algorithm>
#include <vector>

#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/toggles.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/drawing/display.h"
#include "trees/drawing/text_lines.h"
#include "trees/notation/parenthetical_writer.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

std::vector<std::uint8_t> read_trees_to_show() {
  std::vector<std::uint8_t> chosen = read_tree_list_or_last();
  check_end();
  return chosen;
}

void show_parenthetical() {
  const std::vector<std::uint8_t> chosen = read_trees_to_show();
  const auto count = std::count(chosen.begin(), chosen.end(), 1);
  emit(text_of("Tread 'set of %i trees'", static_cast<int>(count)), "\n");
  auto left = count;
  for (int t = 0; t < store.ntrees; ++t) {
    if (!chosen[at(t)]) continue;
    emit_broken_at_blanks(stored_tree_text(stored_tree(t)) + (--left > 0 ? " *" : " ; "));
  }
  if (count == 0) emit(" ; \n");
}

/// "+" and "-", once or twice.
void change_drawing_order(bool symmetric) {
  display.draw_symmetric = symmetric;
  report_line(symmetric ? "Drawing trees symmetrically" : "Drawing trees asymmetrycally");
  const bool second = accept_char('+');
  if (!second && !accept_char('-')) return;
  display.second_largest_first = second;
  report_line(second ? "Drawing second largest clade first"
                     : "Drawing trees with clades increasing in size");
}

}  // namespace

void tplot_command() {
  const bool plus = accept_char('+');
  if (plus || accept_char('-')) {
    change_drawing_order(plus);
    no_timing();
    if (skip_blanks_peek() == ';') return;
  }
  require_trees();
  if (accept_char('*')) return show_parenthetical();
  const std::vector<std::uint8_t> chosen = read_trees_to_show();
  for (int t = 0; t < store.ntrees; ++t)
    if (chosen[at(t)]) plot_stored_tree(t);
}

void naked_command() {
  const int c = skip_blanks_peek();
  if (c != '[' && c != ']') return toggle_command(display.naked, "Naked");
  next_nonblank();
  check_end();
  display.roomy = c == '[';
  if (settings.report)
    report_line(display.roomy ? "Drawing trees with an empty line between terminals"
                              : "Drawing trees with one line per terminal");
}

void lintrees_command() {
  if (accept_char('*')) {  // recall by the arrow keys is always there
    check_end();
    if (settings.report) report_line("Command recall is ON");
    return;
  }
  bool plain = !display.code_page_lines;
  toggle_command(plain, "Drawing of trees with plain characters");
  display.code_page_lines = !plain;
}

}  // namespace zeb
