// `nstates`: how the next data are read, and tools that change the data in memory.
#include <cmath>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/options.h"
#include "matrix/commands.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "matrix/settings/continuous_scales.h"
#include "matrix/settings/data_conversion.h"
#include "matrix/symbols.h"

namespace zeb {
namespace {

/// How data are to be read and shown, as the words of one run ask for it: taken when all was read.
struct data_settings {
  int type = 0;                   // of plain matrices; 0: as it is
  int states = 0;                 // 0: as they are
  bool one_scale = false;         // digits may follow letters in a character
  bool gaps_are_states = false;   // in DNA and proteins
  bool exact_min_steps = true;    // of polymorphic characters
  bool original_scale = false;    // continuous values are shown in it
  int entry_type = numeric_data;  // of states that commands read
};

void set_state_count(data_settings& wanted, int states) {
  if (states < 1) error_end("Number of states must be 1-32");
  if (states > 32) error_end("Cannot use more than 32 states");
  wanted.one_scale = false;
  wanted.states = states;
}

void read_numeric(data_settings& wanted) {
  wanted.type = numeric_data;
  int states = 0;
  if (!read_optional_int(&states)) return;
  set_state_count(wanted, states);
  wanted.one_scale = states > digit_states;
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

void read_shift(data_settings&) {
  require_continuous("Shifting values");
  double by = 0;
  if (!read_optional_float(&by)) error_end("Must specify how much to shift values");
  for (const int c : read_continuous_list()) shift_scale(c, by);
}

void read_fix(data_settings&) {
  require_continuous("Fixing scales");
  for (const int c : read_continuous_list()) fix_scale(c);
}

// "scale C F S", and "*" after it in log form: what `xread *` writes.
void read_scale(data_settings&) {
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

void read_entry_type(data_settings& wanted) {
  constexpr std::string_view types[] = {"dna", "proteins", "numeric"};
  if (read_word() == 0) error_end("Expected DNA, PROT, or NUM after slash");
  const std::string word(token());
  const int type = find_keyword(word, types);
  if (type < 0) error_end("Expected DNA, PROT, or NUM after slash, found", word);
  wanted.entry_type = type == 0 ? dna_data : type == 1 ? protein_data : numeric_data;
}

void renumber_all(data_settings&) {
  require_data("renumbering states");
  const int changed = renumber_states();
  if (settings.report) {
    report_line(counted(changed, "character", "characters"), "renumbered");
  }
}

void read_stand(data_settings&) { standardise_characters(false); }
void read_lstand(data_settings&) { standardise_characters(true); }

void make_numeric(data_settings&) {
  require_data("converting characters");
  convert_to_numeric();
}
void make_dna(data_settings& wanted) {
  require_data("converting characters");
  convert_to_dna(wanted.gaps_are_states);
}

constexpr command_options rows = {
    choice<&data_settings::type>("dna", dna_data)
        .also<&data_settings::states>(8)
        .also<&data_settings::one_scale>(0)
        .help("matrices without block options are DNA (8 states)"),
    choice<&data_settings::type>("proteins", protein_data)
        .also<&data_settings::states>(32)
        .also<&data_settings::one_scale>(0)
        .help("the same for proteins (32 states)"),
    form<read_numeric>("numeric").argument("[N]").help(
        "the same for alphanumeric data, with N states (the default). With N over 10 digits "
        "may follow letters in a character"),
    toggle<&data_settings::gaps_are_states>("gaps").help("in DNA and proteins a gap is a state"),
    form<renumber_all>("minimum").help(
        "renumber the states of alphanumeric non-additive characters from 0, without holes (names "
        "of states follow)"),
    form<read_stand>("stand").argument("F L").help(
        "rescale the continuous characters L (default: all) so that each has at least F steps on "
        "any tree (default 1). \"*\" in front of F looks at the active taxa only"),
    form<read_lstand>("lstand").argument("F L").help(
        "the same in the logarithm; \"-\" in place of F undoes it"),
    form<read_shift>("shift").argument("N L").help(
        "add N to the original scale; the stored values stay"),
    form<read_fix>("fix").argument("L").help("the stored values become the original scale"),
    toggle<&data_settings::exact_min_steps>("xmin").help(
        "exact minimum steps for polymorphic non-additive characters; otherwise a quick "
        "heuristic, never below the exact value"),
    form<read_scale>("scale").argument("C F S").help(
        "set the original scale of character C: value = stored * F + S (\"*\" after it: in log "
        "form). Written by \"xread *\""),
    form<make_numeric>("*").help(
        "all characters become alphanumeric; states keep their numbers, and cells that say "
        "nothing become missing"),
    form<make_dna>("&").help(
        "all characters become DNA, states 0 to 3 being A, G, C and T (with gaps on, state 4 is "
        "the gap)"),
    form<read_entry_type>("/").argument("type").help(
        "how states are read in \"costs\" and \"change\": DNA, PROT or NUM"),
    choice<&data_settings::original_scale>("[", 1).help(
        "show continuous values in the original scale"),
    choice<&data_settings::original_scale>("]", 0).help("show continuous values as stored"),
};

const char* type_text(int type) {
  return type == dna_data ? "DNA" : type == protein_data ? "protein" : "alphanumeric";
}

void show_settings() {
  if (matrix.present) {
    emit("Data in memory have at most ", 8 * matrix.cell_bytes, " states\n");
  }
  emit("Data will be read as ", type_text(matrix.default_type), ", with at most ",
       8 * next_cell_width(), " states\n");
  emit("Gaps are read as ", matrix.gaps_are_states ? "a state" : "missing entries",
       " (DNA and proteins)\n");
  emit("Minimum steps of polymorphic characters are ",
       matrix.exact_min_steps ? "exact" : "heuristic", "\n");
  emit("Continuous characters are shown in the ",
       matrix.show_original_scale ? "original" : "stored", " scale\n");
  emit("States in \"costs\" and \"change\" are read as ", type_text(matrix.state_entry_type), "\n");
}

data_settings present_settings() {
  return {.one_scale = matrix.one_scale,
          .gaps_are_states = matrix.gaps_are_states,
          .exact_min_steps = matrix.exact_min_steps,
          .original_scale = matrix.show_original_scale,
          .entry_type = matrix.state_entry_type};
}

void take_settings(const data_settings& wanted) {
  if (wanted.type != 0) {
    matrix.default_type = static_cast<std::uint8_t>(wanted.type);
    matrix.type_given = true;
  }
  matrix.one_scale = wanted.one_scale;
  matrix.gaps_are_states = wanted.gaps_are_states;
  matrix.show_original_scale = wanted.original_scale;
  matrix.state_entry_type = static_cast<std::uint8_t>(wanted.entry_type);
  set_exactness(wanted.exact_min_steps);
  if (wanted.states > 0) set_cell_width(wanted.states <= 8 ? 1 : wanted.states <= 16 ? 2 : 4);
}

bool is_letter(int c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

}  // namespace

constexpr option_table nstates_options =
    rows.table("nstates", {.unknown = "Unrecognized option for nstates: %s"}).with_changes([] {
      std::string text = changed_options(present_settings(), nstates_options);
      if (matrix.show_original_scale) text += " [";
      if (matrix.state_entry_type != data_settings{}.entry_type)
        text += matrix.state_entry_type == dna_data ? " /DNA" : " /PROT";
      return text.starts_with(' ') ? text.substr(1) : text;
    });

void nstates_command() {
  no_timing();
  if (skip_blanks_peek() == ';') {
    show_settings();
    return;
  }
  data_settings wanted = present_settings();
  for (int c = skip_blanks_peek(); c != ';'; c = skip_blanks_peek()) {
    int states = 0;
    if (is_letter(c)) {
      read_option(wanted, nstates_options);
    } else if (read_optional_int(&states)) {
      set_state_count(wanted, states);
    } else if (!read_sign(wanted, nstates_options)) {
      error_end_f("Wrong argument for nstates: '%c'", next_nonblank());
    }
  }
  take_settings(wanted);
}

}  // namespace zeb
