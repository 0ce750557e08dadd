#include "matrix/reading/matrix_reader.h"

#include <algorithm>
#include <cstring>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/fit_text.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/script_text.h"
#include "matrix/blocks.h"
#include "matrix/data_summary.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "matrix/matrix_memory.h"
#include "matrix/reading/block_format.h"
#include "matrix/reading/cell_reader.h"
#include "matrix/reading/continuous_reader.h"
#include "matrix/reading/landmark_reader.h"
#include "matrix/reading/letter_check.h"
#include "matrix/reading/taxon_rows.h"

namespace zeb {
namespace {

constexpr int block_sign = 4;  // control character that opens a block, as "&" does
constexpr std::size_t longest_title = 100'000;

// Skips blanks, to which the block sign doesn't belong; leaves what follows unread.
int peek_past_blanks() {
  int c = read_char();
  while (c < 33 && c != block_sign) c = read_char();
  unread_char();
  return c;
}

// The title with its quotes; empty without one. Quotes and signs in it are no macro references, and
// commas no ends of commands.
std::string read_title() {
  const reading_flag plain(&macro_reading::no_expansion);
  const comma_reading commas;
  std::string title;
  if (!accept_char('\'')) return title;
  commas.set_literal(true);
  title = "'";
  for (;;) {
    const int c = read_char();
    if (c == ';') check_input_goes_on();
    if (c == '\r') continue;
    title += static_cast<char>(c);
    if (c == '\'') return without_controls(title);
    if (title.size() > longest_title) error_end("Title too long (possibly missing closing quote)");
  }
}

// In pieces that fit the line buffer.
void print_title(const std::string& title) {
  if (title.empty()) return;
  constexpr std::size_t piece = 1000;
  for (std::size_t i = 0; i < title.size(); i += piece) emit(title.substr(i, piece));
  emit("\n");
}

class matrix_reader {
 public:
  matrix_reader() : rows_(matrix.ntax) {
    format_.type = static_cast<data_type>(matrix.default_type);
    format_.gaps = matrix.gaps_are_states;
  }
  void read() {
    const int c = peek_past_blanks();
    if (c == '&' || c == block_sign) {
      read_blocks();
    } else {
      read_plain();
    }
    next_nonblank();  // the ";"
    finish();
  }

 private:
  void read_plain();
  void read_blocks();
  void read_block_rows();
  void read_block_row(int& width);
  int read_cells(const row_place& place);
  void check_row_end(const row_place& place);
  void check_plain_row_end(const row_place& place);
  void warn_of_short_rows(int width);
  void trim_gaps(int taxon, int first, int end);
  void copy_row(int from, int to, int first, int end);
  void set_types(int first, int end);
  void drop_empty_blocks();
  void finish();

  taxon_rows rows_;
  block_format format_;
  cell_reader cells_;
  continuous_reader continuous_;
  landmark_reader landmarks_;
  letter_check letters_;
  std::byte* const high_at_start_ = arena.high;
  std::vector<int> block_first_ = {0};  // [0] unused
  std::vector<std::string> block_names_ = {"all"};
  bool blocks_named_ = false;
  bool landmarks_read_ = false;
  int block_ = 0;           // number of the block being read
  int next_character_ = 0;  // first character of the block; once it is read, of the next one
  bool other_types_read_ = false;
  bool told_row_end_ = false;  // of a plain matrix
  int short_rows_ = 0;         // of the block
  std::string first_short_row_;
};

int matrix_reader::read_cells(const row_place& place) {
  if (format_.type == continuous_data) return continuous_.read_row(place);
  if (format_.type == landmark_data) return landmarks_.read_row(place, format_.dimensions);
  const int end = cells_.read_row(place);
  if (format_.type == numeric_data && matrix.cell_bytes > 1 && !matrix.one_scale) {
    letters_.check_row(place, end);
  }
  if (format_.gaps && format_.type != numeric_data) trim_gaps(place.taxon, place.first, end);
  return end;
}

void matrix_reader::trim_gaps(int taxon, int first, int end) {
  const std::uint32_t gap = 1U << (format_.type == dna_data ? dna_gap_state : protein_gap_state);
  if (format_.trim_head) {
    for (int c = first; c < end && cell(taxon, c) == gap; ++c)
      set_cell(taxon, c, matrix.state_mask);
  }
  if (format_.trim_tail) {
    for (int c = end - 1; c >= first && cell(taxon, c) == gap; --c) {
      set_cell(taxon, c, matrix.state_mask);
    }
  }
}

void matrix_reader::copy_row(int from, int to, int first, int end) {
  if (format_.type == continuous_data) {
    continuous_.copy_row(from, to);
    return;
  }
  if (format_.type == landmark_data) {
    landmark_reader::copy_row(from, to, first);
    return;
  }
  const std::size_t width = at(matrix.cell_bytes);
  std::memcpy(matrix.rows8[at(to)] + at(first) * width, matrix.rows8[at(from)] + at(first) * width,
              at(end - first) * width);
  copy_gaps(from, to, first, end);
}

void matrix_reader::set_types(int first, int end) {
  for (int c = first; c < end; ++c) {
    set_character_type(c, format_.type, format_.gaps);
  }
  other_types_read_ = other_types_read_ || (end > first && format_.type != continuous_data);
}

// Nothing tells where a row of a plain matrix ends but the number of its cells: where that is
// wrong, names become cells or cells names, and what is wrong shows only later.
void matrix_reader::check_plain_row_end(const row_place& place) {
  std::string found = cells_.cells_before_newline(place);
  int c = read_char();
  // A row that goes on in another line ends with a line, too.
  while (!found.empty() && (c == ' ' || c == '\t')) c = read_char();
  unread_char();
  if (c < 33 || c == ';' || told_row_end_) return;
  told_row_end_ = true;
  if (found.empty()) found = text_of("more than %i characters in its row", place.end);
  warning_f("Taxon %i (%s) has %s%s", place.taxon, std::string(taxon_name(place.taxon)).c_str(),
            found.c_str(), place_in_file().c_str());
}

void matrix_reader::read_plain() {
  block_ = 1;
  check_type_fits(format_.type);
  cells_.use_format(format_);
  rows_.begin_block();
  set_types(0, matrix.nchar);
  while (read_item() > 0) {
    check_interrupt();
    const int taxon = rows_.taxa_of_row(token(), false).front();
    const row_place place = {.taxon = taxon, .first = 0, .end = matrix.nchar};
    read_cells(place);
    check_plain_row_end(place);
  }
  next_character_ = matrix.nchar;
  block_first_.push_back(0);
  block_names_.emplace_back();
}

// In a block only a newline or the closing ";" may follow the last cell that a row can have.
void matrix_reader::check_row_end(const row_place& place) {
  int c = read_char();
  while (c < 33 && c != '\n' && c != '\r') c = read_char();
  if (c == '\n' || c == '\r') return;
  if (c == ';') {
    unread_char();
    return;
  }
  error_end_f(
      "Error reading block %i, taxon %s: too many characters\n   char. %i (last char.) should be "
      "followed by newline%s",
      block_, std::string(taxon_name(place.taxon)).c_str(), place.end - 1, place_in_file().c_str());
}

void matrix_reader::read_block_row(int& width) {
  const std::string name(token());
  const std::vector<int> taxa = rows_.taxa_of_row(name, format_.match_names);
  const int first = next_character_;
  const row_place place = {.taxon = taxa.front(),
                           .first = first,
                           .end = width > 0 ? first + width : matrix.nchar,
                           .block = block_,
                           .ends_at_newline = true,
                           .may_match = rows_.has_row(0)};
  // A row may hold no cell at all: then its newline is what comes next.
  const int end = read_cells(place);
  if (end == place.end) check_row_end(place);
  if (width == 0) {
    width = end - first;
    set_types(first, end);
  }
  if (end > first && end < first + width && short_rows_++ == 0) {
    first_short_row_ = text_of("%s, with %i", name.c_str(), end - first) + place_in_file();
  }
  for (std::size_t i = 1; i < taxa.size(); ++i) copy_row(taxa.front(), taxa[i], first, end);
}

void matrix_reader::warn_of_short_rows(int width) {
  if (short_rows_ == 0) return;
  warning_f("Block %i: %s fewer characters than %i, the others are missing; first taxon %s", block_,
            counted(short_rows_, "row has", "rows have").c_str(), width, first_short_row_.c_str());
  short_rows_ = 0;
}

void matrix_reader::read_block_rows() {
  cells_.use_format(format_);
  rows_.begin_block();
  int width = 0;
  for (;;) {
    const int c = peek_past_blanks();
    if (c == ';' || c == '&' || c == block_sign) break;
    check_interrupt();
    read_item();
    read_block_row(width);
  }
  if (format_.type == landmark_data && width > 0) {
    landmark_reader::end_block(next_character_, format_.dimensions);
  }
  next_character_ += width;
  warn_of_short_rows(width);
  if (format_.verbose) {
    emitf("\nBlock %i: %i taxa (%i total), %i characters (%i total)", block_, rows_.rows_in_block(),
          rows_.count(), width, next_character_);
  }
}

void matrix_reader::read_blocks() {
  while (peek_past_blanks() != ';') {
    read_char();  // "&" or the block sign
    ++block_;
    format_.name.clear();
    if (accept_char('[')) read_block_format(format_, other_types_read_);
    check_type_fits(format_.type);
    block_first_.push_back(next_character_);
    blocks_named_ = blocks_named_ || !format_.name.empty();
    landmarks_read_ = landmarks_read_ || format_.type == landmark_data;
    if (blocks_named_ && landmarks_read_) {
      error_end("Sorry, if data matrix contains landmarks, blocks cannot be named data matrix");
    }
    block_names_.push_back(format_.name);
    read_block_rows();
  }
}

// A block without a cell holds no character that a list could name.
void matrix_reader::drop_empty_blocks() {
  for (std::size_t b = block_first_.size() - 1; b > 0; --b) {
    const int end = b + 1 < block_first_.size() ? block_first_[b + 1] : next_character_;
    if (end > block_first_[b]) continue;
    block_first_.erase(block_first_.begin() + static_cast<std::ptrdiff_t>(b));
    block_names_.erase(block_names_.begin() + static_cast<std::ptrdiff_t>(b));
  }
}

void matrix_reader::finish() {
  cut_to_what_was_read(rows_.count(), next_character_, "will be re-set to");
  continuous_.store_all();
  free_to_high(high_at_start_);
  drop_empty_blocks();
  if (blocks_named_) {
    for (std::size_t b = 1; b < block_names_.size(); ++b) {
      if (block_names_[b].empty()) block_names_[b] = "Block_" + std::to_string(b);
    }
  } else {
    block_names_.clear();
  }
  lay_out_blocks({block_first_.begin() + 1, block_first_.end()}, block_names_);
  finish_matrix();
}

// "numeric and DNA", "continuous, numeric and DNA".
std::string type_names(int types) {
  struct named_type {
    int bit;
    std::string_view name;
  };
  constexpr named_type names[] = {{numeric_data, "numeric"},
                                  {dna_data, "DNA"},
                                  {protein_data, "proteins"},
                                  {continuous_data, "continuous"},
                                  {landmark_data, "landmark"}};
  std::vector<std::string_view> found;
  for (const named_type& type : names) {
    if (types & type.bit) found.push_back(type.name);
  }
  return joined_list(found);
}

}  // namespace

void warn_of_replacement(const char* source) {
  if (!matrix.present) return;
  const std::string& old = matrix.title.empty() ? matrix.file_name : matrix.title;
  warning("Data from:\n\n      " + old + "\n\nwill be replaced with data from:\n\n      " + source +
          "\n\n");
}

void cut_to_what_was_read(int ntax, int nchar, const char* reset) {
  if (ntax < matrix.ntax) {
    warning("Number of taxa set to", matrix.ntax, "but only", ntax,
            "taxon names defined.\nNumber of taxa", reset, ntax);
    if (ntax < 4) error_end("Must specify number of taxa (4 or more)");
  }
  if (nchar < matrix.nchar) {
    const std::string undefined =
        nchar + 1 == matrix.nchar
            ? text_of("%i, but character %i", matrix.nchar, nchar)
            : text_of("%i, but characters %i-%i", matrix.nchar, nchar, matrix.nchar - 1);
    warning("Number of characters set to", undefined, "undefined\nNumber of chars.", reset, nchar);
    if (nchar < 1) error_end("Must specify number of characters");
  }
  shrink_matrix(ntax, nchar);
}

void tell_what_was_read() {
  if (matrix.data_type_in_use & (matrix.data_type_in_use - 1)) {
    emit("Data were read as mixed types: ", type_names(matrix.data_type_in_use), "\n");
  }
  if (!settings.report) return;
  emit("Read ", matrix.ntax, " taxa, ", counted(matrix.nchar, "character", "characters"));
  if (matrix.nblocks > 1) emit(" in ", matrix.nblocks, " blocks");
  emit("\n");
  note_what_spoils_searches();
}

void read_matrix() {
  const std::string source = input.frames[at(input.top)]->name;
  warn_of_replacement(source.c_str());
  wipe_matrix();
  const std::string title = read_title();
  print_title(title);
  const int nchar = read_int();
  if (nchar < 1) error_end("Must specify number of characters");
  const int ntax = read_int();
  if (ntax < 4) error_end("Must specify number of taxa (4 or more)");
  make_room_for_matrix(ntax, nchar);
  begin_matrix(ntax, nchar, matrix_rows::unset);
  set_matrix_source(title, source);
  matrix_reader().read();
  tell_what_was_read();
}

}  // namespace zeb
