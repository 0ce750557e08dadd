// recons: all most parsimonious reconstructions of characters, a tree for each.
#include <algorithm>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "mapping/commands.h"
#include "mapping/node_states.h"
#include "mapping/reconstructions.h"
#include "mapping/requests.h"
#include "matrix/matrix.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// Continuous and landmark characters are left out, with a warning.
void keep_discrete(std::vector<int>& characters) {
  const auto has_no_states = [](int c) {
    return is_landmark(c) || matrix.characters[at(c)].is_continuous != 0;
  };
  if (std::erase_if(characters, has_no_states) > 0)
    warning(
        "Cannot do reconstructions for continuous/landmark character(s); those will be ignored");
}

std::string count_text(double count) {
  constexpr double largest_exact = 9007199254740992.0;  // 2 to the power of 53
  return text_of(count <= largest_exact ? "%.0f" : "about %.4g", count) +
         (count == 1 ? " reconstruction" : " reconstructions");
}

/// The count comes first, since there may be more than anybody wants to see: a key ends the list.
void show_reconstructions(const tree_shape& shape, int tree, int character) {
  reconstruction_list list(shape, character);
  const std::string name = text_of("Tree %i, ", tree) + character_heading(character);
  emit(name, " (", steps_text(character, list.steps()), "): ", count_text(list.count()), "\n");
  std::vector<std::string> texts(shape.nodes());
  for (int number = 1; list.next(); ++number) {
    check_interrupt();
    for (int v = 0; at(v) < texts.size(); ++v) {
      if (!shape.has(v)) continue;
      const int state = list.value(v);
      texts[at(v)] = state < 0 ? "?" : state_name(character, state);
    }
    draw_tree(shape.tree, name + text_of(", reconstruction %i", number), texts);
  }
}

void show_numbers(const tree_shape& shape, int tree, const std::vector<int>& characters) {
  std::vector<double> numbers(at(matrix.nchar), no_fraction);
  for (const int c : characters) {
    check_interrupt();
    numbers[at(c)] = reconstruction_list(shape, c).count();
  }
  print_table(text_of("Tree %i, numbers of reconstructions", tree), numbers, 0);
}

}  // namespace

void recons_command() {
  require_data_and_trees("showing reconstructions");
  const bool only_numbers = accept_char('=');
  mapping_request request = read_trees_and_characters();
  expect_end();
  keep_discrete(request.characters);
  for (const int t : request.trees) {
    const tree_shape shape(stored_tree(t));
    if (only_numbers) show_numbers(shape, t, request.characters);
    for (const int c : request.characters)
      if (!only_numbers) show_reconstructions(shape, t, c);
  }
}

}  // namespace zeb
