#include "matrix/reading/block_format.h"

#include "base/errors.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/name_matching.h"
#include "language/options.h"
#include "matrix/commands.h"

namespace zeb {
namespace {

/// "landmark 2d"; the letter may be missing.
void read_landmark(block_format& format) {
  int dimension = 0;
  if (!read_optional_int(&dimension) || (dimension != 2 && dimension != 3)) {
    error_end("Landmark data must be 2D or 3D");
  }
  if (!accept_char('d')) accept_char('D');
  format.type = landmark_data;
  format.dimensions = dimension;
}

void read_match(block_format& format) {
  double threshold = 0;
  if (read_optional_float(&threshold)) {
    if (!(threshold >= 0 && threshold <= 1))
      error_end("Threshold for approximate matching must be 0 to 1");
    set_matching(matching.match_mode, threshold);
  }
  format.match_names = true;
}

void read_block_name(block_format& format) {
  std::string name;
  int c = skip_blanks_peek();
  while (c > 32 && c != ']' && c != ';') {
    name += static_cast<char>(read_char());
    c = read_char();
    unread_char();
  }
  if (name.empty()) error_end("Expected block name after slash");
  format.name = name;
}

constexpr command_options rows = {
    choice<&block_format::type>("dna", dna_data).help("cells are DNA"),
    form<read_landmark>("landmark")
        .argument("N")
        .help("a configuration of landmarks in 2 or 3 dimensions"),
    choice<&block_format::type>("continuous", continuous_data)
        .help("cells are numbers or ranges; needs \"nstates 32\", and comes before all others"),
    choice<&block_format::type>("proteins", protein_data)
        .help("cells are amino acids; needs \"nstates 32\""),
    choice<&block_format::type>("numeric", numeric_data).help("cells are digits and letters"),
    choice<&block_format::verbose>("verbose", 1).help("tell what the block holds"),
    toggle<&block_format::gaps>("gaps").help("a gap is a state"),
    choice<&block_format::trim_tail>("trimtail", 1)
        .help("with gaps: a run of gaps at the end of a row is missing"),
    choice<&block_format::trim_head>("trimhead", 1)
        .help("with gaps: a run of gaps at the head of a row is missing"),
    form<read_match>("match").argument("[N]").help(
        "names that aren't found may be those that resemble them; N is the similarity needed, 0 "
        "to 1"),
    form<read_block_name>("/").argument("name").help("name of the block"),
};

void check_type(const block_format& before, const block_format& format, bool other_types_read) {
  if (format.type != before.type) {
    check_type_fits(format.type);
    if (format.type == continuous_data && other_types_read) {
      error_end("Continuous characters must precede all other ones!");
    }
  }
}

}  // namespace

void check_type_fits(data_type type) {
  if (matrix.cell_bytes == 4) return;
  if (type == continuous_data) {
    error_end("To read data as continuous, must set nstates to 32 before reading matrix");
  }
  if (type == protein_data) {
    error_end("To read data as protein, must set nstates to 32 before reading matrix");
  }
}

constexpr option_table block_options =
    rows.table("xread", {.unknown = "Unrecognized string in format command: %s",
                         .no_word = "Expected format (dna, prot, contin, num) or closing bracket"});

void read_block_format(block_format& format, bool other_types_read) {
  block_format wanted = format;
  while (skip_blanks_peek() != ']') {
    if (!read_sign(wanted, block_options)) read_option(wanted, block_options);
  }
  check_type(format, wanted, other_types_read);
  accept_char(']');
  format = wanted;
}

}  // namespace zeb
