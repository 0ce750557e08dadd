// `nstates`: how the next data are read, and tools that change the data in memory.
#include <array>
#include <cmath>

#include "base/errors.h"
#include "base/indices.h"
#include "base/process.h"
#include "console/output.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/commands.h"
#include "matrix/matrix.h"
#include "matrix/settings/continuous_scales.h"
#include "matrix/settings/data_conversion.h"
#include "matrix/symbols.h"

namespace zeb {
namespace {

// With data in memory their cells keep their width until they go.
void set_cell_width(int cell_bytes) {
  if (matrix.present) {
    matrix.next_cell_bytes = cell_bytes;
    return;
  }
  matrix.cell_bytes = cell_bytes;
  matrix.state_mask = mask_of_width(cell_bytes);
}

int next_width() { return matrix.next_cell_bytes ? matrix.next_cell_bytes : matrix.cell_bytes; }

void set_state_count(int states) {
  if (states < 1) error_end("Number of states must be 1-32");
  if (states > 32) error_end("Cannot use more than 32 states");
  matrix.one_scale = false;
  set_cell_width(states <= 8 ? 1 : states <= 16 ? 2 : 4);
}

void set_default_type(data_type type, int states) {
  matrix.default_type = type;
  set_state_count(states);
}

void read_numeric() {
  matrix.default_type = numeric_data;
  int states = 0;
  if (!read_optional_int(&states)) return;
  set_state_count(states);
  matrix.one_scale = states > digit_states;
}

void set_exactness(bool exact) {
  if (matrix.exact_min_steps == exact) return;
  matrix.exact_min_steps = exact;
  for (character_record& record : matrix.characters) record.needs_recheck = 1;
  if (matrix.present) drop_packed_data();
}

// The continuous characters of a list; of all without a list.
std::vector<int> read_continuous_list() {
  std::vector<std::uint8_t> marks(at(matrix.nchar), 0);
  const bool given = read_list(list_plain, 0, matrix.nchar, "character", marks);
  std::vector<int> characters;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!matrix.characters[at(c)].is_continuous) continue;
    if (!given || marks[at(c)]) characters.push_back(c);
  }
  return characters;
}

void require_continuous(const char* action) {
  require_data("changing the scale of characters");
  if (!any_continuous()) error_end(action, "only possible when having continuous characters");
}

void standardise_characters(bool in_logarithm) {
  require_continuous("Scaling values");
  if (in_logarithm && accept_char('-')) {
    for (const int c : read_continuous_list()) undo_logarithm(c);
    drop_packed_data();
    return;
  }
  const bool active_only = accept_char('*');
  double steps = 1;
  if (read_optional_float(&steps) && !(steps > 0 && steps <= 65)) {
    error_end("Minimum number of steps must be above 0, and no more than 65");
  }
  const std::vector<std::uint8_t> all(at(matrix.ntax), 1);
  const std::span<const std::uint8_t> taxa =
      active_only ? matrix.taxon_active.first(at(matrix.ntax)) : std::span(all);
  drop_packed_data();
  for (const int c : read_continuous_list()) standardise(c, steps, taxa, in_logarithm);
}

void read_shift() {
  require_continuous("Shifting values");
  double by = 0;
  if (!read_optional_float(&by)) error_end("Must specify how much to shift values");
  for (const int c : read_continuous_list()) shift_scale(c, by);
}

void read_fix() {
  require_continuous("Fixing scales");
  for (const int c : read_continuous_list()) fix_scale(c);
}

// "scale C F S", with "*" behind it in log form: what `xread *` writes.
void read_scale() {
  require_continuous("Setting scales");
  int character = 0;
  double factor = 0;
  double shift = 0;
  while (read_optional_int(&character)) {
    if (character < 0 || character >= matrix.nchar) error_end("No character", character);
    if (!matrix.characters[at(character)].is_continuous) {
      error_end("Character", character, "is not continuous");
    }
    if (!read_optional_float(&factor) || !(factor > 0) || !read_optional_float(&shift)) {
      error_end("Must give factor and shift for character", character);
    }
    set_scale(character, factor, shift, accept_char('*'));
  }
}

void read_entry_type() {
  if (read_word() == 0) error_end("Expected DNA, PROT, or NUM after slash");
  const std::string word(token());
  if (is_prefix(word, "dna")) {
    matrix.state_entry_type = dna_data;
  } else if (is_prefix(word, "proteins")) {
    matrix.state_entry_type = protein_data;
  } else if (is_prefix(word, "numeric")) {
    matrix.state_entry_type = numeric_data;
  } else {
    error_end("Expected DNA, PROT, or NUM after slash, found", word);
  }
}

void renumber_all() {
  require_data("renumbering states");
  const int changed = renumber_states();
  if (settings.report) {
    report_line(changed, changed == 1 ? "character renumbered" : "characters renumbered");
  }
}

struct option_row {
  std::string_view keyword;
  void (*apply)();
};
// A word takes the first row that it is a prefix of.
constexpr std::array options = {
    option_row{"dna", [] { set_default_type(dna_data, 8); }},
    option_row{"proteins", [] { set_default_type(protein_data, 32); }},
    option_row{"numeric", read_numeric},
    option_row{"gaps", [] { matrix.gaps_are_states = true; }},
    option_row{"nogaps", [] { matrix.gaps_are_states = false; }},
    option_row{"minimum", renumber_all},
    option_row{"stand", [] { standardise_characters(false); }},
    option_row{"lstand", [] { standardise_characters(true); }},
    option_row{"shift", read_shift},
    option_row{"fix", read_fix},
    option_row{"xmin", [] { set_exactness(true); }},
    option_row{"noxmin", [] { set_exactness(false); }},
    option_row{"scale", read_scale},
};

const char* type_text(int type) {
  return type == dna_data ? "DNA" : type == protein_data ? "protein" : "alphanumeric";
}

void show_settings() {
  if (matrix.present) {
    emit("Data in memory have at most ", 8 * matrix.cell_bytes, " states\n");
  }
  emit("Data will be read as ", type_text(matrix.default_type), ", with at most ", 8 * next_width(),
       " states\n");
  emit("Gaps are read as ", matrix.gaps_are_states ? "a state" : "missing entries",
       " (DNA and proteins)\n");
  emit("Minimum steps of polymorphic characters are ",
       matrix.exact_min_steps ? "exact" : "heuristic", "\n");
  emit("Continuous characters are shown in the ",
       matrix.show_original_scale ? "original" : "stored", " scale\n");
  emit("States in \"costs\" and \"change\" are read as ", type_text(matrix.state_entry_type), "\n");
}

void read_word_option() {
  read_word();
  const std::string word(token());
  for (const option_row& row : options) {
    if (!is_prefix(word, row.keyword)) continue;
    row.apply();
    return;
  }
  error_end("Unrecognized option for nstates:", word);
}

void read_sign_option(int sign) {
  switch (sign) {
    case '*':
      require_data("converting characters");
      convert_to_numeric();
      return;
    case '&':
      require_data("converting characters");
      convert_to_dna(matrix.gaps_are_states);
      return;
    case '/':
      read_entry_type();
      return;
    case '[':
      matrix.show_original_scale = true;
      return;
    case ']':
      matrix.show_original_scale = false;
      return;
    default:
      error_end_f("Wrong argument for nstates: '%c'", sign);
  }
}

bool is_letter(int c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

}  // namespace

void nstates_command() {
  no_timing();
  if (skip_blanks_peek() == ';') {
    show_settings();
    return;
  }
  for (int c = skip_blanks_peek(); c != ';'; c = skip_blanks_peek()) {
    int states = 0;
    if (is_letter(c)) {
      read_word_option();
    } else if (read_optional_int(&states)) {
      set_state_count(states);
    } else {
      read_sign_option(next_nonblank());
    }
  }
}

}  // namespace zeb
