#include "matrix/reading/cell_reader.h"

#include "base/errors.h"
#include "base/message_text.h"
#include "language/input.h"

namespace zeb {
namespace {

constexpr const char* unexpected_end = "Unexpected end of file (possibly missing \"procedure/;\")";

bool is_newline(int c) { return c == '\n' || c == '\r'; }

std::uint32_t match_cell(const row_place& place, int character) {
  if (place.taxon == 0) {
    error_end("The match symbol ('.') cannot be used for taxon 0");
  }
  if (!place.may_match) {
    error_end("The match symbol ('.') can be used only after the row of taxon 0");
  }
  return cell(0, character);
}

}  // namespace

std::string place_in_file() {
  const input_frame& frame = top_frame();
  if (!frame.file.is_open() || frame.is_terminal || input.top == 0) return {};
  return text_of("\n(line %i of %s)", frame.line_number + 1, frame.name);
}

void check_input_goes_on() {
  if (input_ended()) error_end(unexpected_end);
}

void cell_reader::use_format(const block_format& format) {
  if (ready_ && type_ == format.type && gaps_ == format.gaps) return;
  ready_ = true;
  type_ = format.type;
  gaps_ = format.gaps;
  gaps_are_missing_ = !gaps_ || type_ == numeric_data;
  table_ = make_symbols(type_, matrix.cell_bytes, gaps_);
  // The first gap that is read as a state comes by the slow way, which tells the user.
  if (gaps_ && type_ != numeric_data && !told_gaps_) table_['-'] = 0;
}

std::string cell_reader::cells_before_newline(const row_place& place) const {
  if (newline_at_ == 0) return {};
  return text_of("only %i of %i characters before the end of its line", newline_at_ - place.first,
                 place.end - place.first);
}

void cell_reader::alien_symbol(const row_place& place, int character, int symbol) const {
  if (symbol == ';' && input_ended()) {
    error_end_f("%s\nTaxon %i (%s) has %i of %i characters%s", unexpected_end, place.taxon,
                std::string(taxon_name(place.taxon)).c_str(), character - place.first,
                place.end - place.first, place_in_file().c_str());
  }
  std::string story = cells_before_newline(place);
  if (!story.empty()) story = "\nThe row has " + story;
  if (symbol == ';') {
    story = text_of("\nThe row has %i of %i characters", character - place.first,
                    place.end - place.first);
  }
  error_end_f("Found alien symbol for taxon %i (%s), char. %i (block %i): '%c'%s%s", place.taxon,
              std::string(taxon_name(place.taxon)).c_str(), character, place.block, symbol,
              story.c_str(), place_in_file().c_str());
}

// The cell of a symbol that the table doesn't have outright.
std::uint32_t cell_reader::lookup(const row_place& place, int character, int symbol) {
  const std::uint32_t states = table_[static_cast<unsigned char>(symbol)];
  if (states) return states;
  if (type_ != numeric_data) {
    if (symbol == '.') return match_cell(place, character);
    if (symbol == '-') {
      told_gaps_ = true;
      table_['-'] = make_symbols(type_, matrix.cell_bytes, true)['-'];
      warning(
          "Gaps will be read as an additional state\nTo read gaps as missing entries, change data "
          "format");
      return table_['-'];
    }
  }
  alien_symbol(place, character, symbol);
}

// The states after an opening bracket, up to the closing one.
std::uint32_t cell_reader::read_set(const row_place& place, int character) {
  std::uint32_t states = 0;
  for (;;) {
    const int symbol = read_char();
    if (symbol == ']' || symbol == ')') break;
    if (symbol < 33 && !(place.ends_at_newline && is_newline(symbol))) continue;
    if (symbol < 33) {
      error_end_f("Taxon %i (%s), char. %i (block %i): set of states not closed%s", place.taxon,
                  std::string(taxon_name(place.taxon)).c_str(), character, place.block,
                  place_in_file().c_str());
    }
    states |= lookup(place, character, symbol);
  }
  if (!states) {
    error_end_f("Taxon %i (%s), char. %i (block %i): empty set of states%s", place.taxon,
                std::string(taxon_name(place.taxon)).c_str(), character, place.block,
                place_in_file().c_str());
  }
  return states;
}

template <class word>
int cell_reader::read_cells(const row_place& place, std::span<word*> rows) {
  word* const row = rows[static_cast<std::size_t>(place.taxon)];
  const std::uint32_t* const table = table_.data();
  int (*const next)() = read_char;
  int c = place.first;
  while (c < place.end) {
    const int symbol = next();
    const std::uint32_t states = table[static_cast<unsigned char>(symbol)];
    if (states) {
      row[c] = static_cast<word>(states);
      if (symbol == '-' && gaps_are_missing_) note_gap(place.taxon, c);
      ++c;
    } else if (symbol < 33) {
      if (place.ends_at_newline && is_newline(symbol)) return c;
      if (newline_at_ == 0 && c > place.first && is_newline(symbol)) newline_at_ = c;
    } else if (symbol == '[' || symbol == '(') {
      row[c] = static_cast<word>(read_set(place, c));
      ++c;
    } else if (place.ends_at_newline && symbol == ';') {
      unread_char();
      return c;
    } else {
      row[c] = static_cast<word>(lookup(place, c, symbol));
      if (symbol == '.') copy_gaps(0, place.taxon, c, c + 1);
      ++c;
    }
  }
  return c;
}

int cell_reader::read_row(const row_place& place) {
  newline_at_ = 0;
  switch (matrix.cell_bytes) {
    case 1:
      return read_cells(place, matrix.rows8);
    case 2:
      return read_cells(place, matrix.rows16);
    default:
      return read_cells(place, matrix.rows32);
  }
}

}  // namespace zeb
