// `fillsank` and `usminmax`: settings of characters with costs.
#include <algorithm>
#include <bit>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/toggles.h"
#include "matrix/commands.h"
#include "matrix/costs/cost_text.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

constexpr int highest_state = 31;

bool is_discrete(const character_record& record) {
  return !(record.type & (continuous_data | landmark_data));
}

template <class predicate>
std::vector<int> characters_that(predicate holds) {
  std::vector<int> characters;
  for (int c = 0; c < matrix.nchar; ++c)
    if (holds(matrix.characters[at(c)])) characters.push_back(c);
  return characters;
}

void show_values(const char* title, const std::vector<int>& characters,
                 std::int32_t (*value)(const character_record&)) {
  emit(title, ":\n");
  for (const int c : characters)
    emit("  ", character_label(c), ": ", value(matrix.characters[at(c)]), "\n");
}

void show_user_steps() {
  const std::vector<int> with_min =
      characters_that([](const character_record& r) { return r.user_min_steps >= 0; });
  const std::vector<int> with_max =
      characters_that([](const character_record& r) { return r.user_max_state >= 0; });
  emitf("User-minimum defined for %i sankoff char(s)", static_cast<int>(with_min.size()));
  if (!with_min.empty())
    show_values("Sankoff characters with user defined minimum", with_min,
                [](const character_record& r) { return r.user_min_steps; });
  if (with_max.empty()) {
    emit("User-defined maximum state not in effect for any character\n");
    return;
  }
  show_values("Sankoff characters with user-defined maximum state", with_max,
              [](const character_record& r) { return std::int32_t{r.user_max_state}; });
}

int read_max_state() {
  if (accept_char('-')) return -1;
  int state = 0;
  const int next = skip_blanks_peek();
  if (next == ';') error_end("Give maximum state for sankoff characters");
  if (!read_optional_int(&state))
    error_end_f("Unexpected symbol reading maximum state: '%c'", next);
  if (state < 0 || state > highest_state)
    error_end_f("Cannot define maximum as %i (maximum must be 0-31)", state);
  return state;
}

void check_max_state(int character, int state) {
  const int states = 32 - std::countl_zero(states_in_cells(character));
  const int room = 8 * matrix.cell_bytes;
  if (state >= room) error_end_f("Cannot set maximum to %i (number of states is %i)", state, room);
  if (state + 1 < states)
    error_end_f("Cannot set maximum to %i (number of states is %i)", state, states);
}

/// "> N [list]": without a list, of all discrete characters that have so few states.
void set_max_states() {
  const int state = read_max_state();
  std::vector<std::uint8_t> chosen(at(matrix.nchar), 0);
  const bool listed = read_list(list_plain, 0, matrix.nchar, "character", chosen);
  check_end();
  require_states(chosen);
  std::vector<int> changed;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (listed ? !chosen[at(c)] : !is_discrete(matrix.characters[at(c)])) continue;
    if (state >= 0) check_max_state(c, state);
    changed.push_back(c);
  }
  for (const int c : changed) set_user_steps(c, matrix.characters[at(c)].user_min_steps, state);
  if (!settings.report) return;
  if (state < 0)
    emit("User-defined maximum state for Sankoff characters not in effect\n");
  else
    emitf("Setting user maximum state to %i for %i discrete characters", state,
          static_cast<int>(changed.size()));
}

/// "list = N", as often as there are lists.
void set_minima() {
  std::vector<std::int32_t> wanted(at(matrix.nchar), -2);
  while (skip_blanks_peek() != ';') {
    std::vector<std::uint8_t> chosen(at(matrix.nchar), 0);
    if (!read_list(list_plain, 0, matrix.nchar, "character", chosen))
      error_end("Must specify character(s) (or end with semicolon)");
    if (!accept_char('=')) error_end("Character list must be followed by \"=\"");
    require_states(chosen);
    int steps = -1;
    if (!accept_char('-') && (!read_optional_int(&steps) || steps < 0))
      error_end("Must specify value of user minimum after \"=\"");
    for (int c = 0; c < matrix.nchar; ++c)
      if (chosen[at(c)]) wanted[at(c)] = steps;
  }
  for (int c = 0; c < matrix.nchar; ++c)
    if (wanted[at(c)] > -2)
      set_user_steps(c, wanted[at(c)], matrix.characters[at(c)].user_max_state);
}

}  // namespace

void fillsank_command() {
  toggle_command(matrix.fill_polymorphic, "Fill Sankoff");
  if (!matrix.present) return;
  drop_packed_data();
  for (character_record& record : matrix.characters)
    if (record.is_sankoff) record.needs_recheck = 1;
}

void usminmax_command() {
  no_timing();
  require_data("defining minimum steps of sankoff characters");
  if (skip_blanks_peek() == ';') return show_user_steps();
  if (accept_char('>')) return set_max_states();
  set_minima();
}

}  // namespace zeb
