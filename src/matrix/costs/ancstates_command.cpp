// `ancstates`: which states the root may have, in characters with costs.
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "console/output.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/commands.h"
#include "matrix/costs/cost_items.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// Those of the outgroup; any where its cell says nothing.
std::uint32_t states_of_outgroup(int character) {
  const std::uint32_t states = cell(matrix.outgroup, character);
  return says_nothing(character, states) ? 0 : states;
}

void show_root_states() {
  emit("Ancstates\n");
  bool any = false;
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& record = matrix.characters[at(c)];
    if (!record.root_states) continue;
    any = true;
    std::string states;
    for (int s = 0; s < 32; ++s)
      if (record.root_states >> s & 1U) states += state_symbol(c, s);
    emit("  ", character_label(c), ": [", states, "]", record.is_sankoff ? "" : " (no costs)",
         "\n");
  }
  if (!any) emit("  none\n");
}

}  // namespace

void ancstates_command() {
  no_timing();
  require_data("setting ancestral states");
  if (skip_blanks_peek() == ';') return show_root_states();
  const bool clear = accept_char('-');
  std::vector<std::uint8_t> chosen(at(matrix.nchar), 0);
  if (!read_list(list_ends_at_signs, 0, matrix.nchar, "character", chosen))
    error_end("Must specify character(s) to set ancestral states");
  const bool given = !clear && skip_blanks_peek() == '[';
  const std::uint32_t states = given ? read_states() : 0;
  if (given && states == 0) error_end("Must specify ancestral state(s)");
  check_end();
  require_states(chosen);
  for (int c = 0; c < matrix.nchar; ++c)
    if (chosen[at(c)]) set_root_states(c, clear ? 0 : given ? states : states_of_outgroup(c));
}

}  // namespace zeb
