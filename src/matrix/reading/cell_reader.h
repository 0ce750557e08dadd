// Reads the cells of one row of discrete characters, symbol by symbol.
#pragma once

#include <string>

#include "matrix/reading/block_format.h"
#include "matrix/symbols.h"

namespace zeb {

/// Where a row's cells go.
struct row_place {
  int taxon = 0;
  int first = 0;                 // first character
  int end = 0;                   // one past the last that may be read
  int block = 1;                 // number, for messages
  bool ends_at_newline = false;  // in blocks; elsewhere a row ends with its last cell
  bool may_match = true;         // taxon 0 has its row already, so that "." can refer to it
};

/// Keeps the symbol table between rows, and what has been warned about.
class cell_reader {
 public:
  /// Makes the table of the format, unless it is the one in use.
  void use_format(const block_format& format);
  /// Reads cells into the matrix; returns one past the last character read. The newline that ends a
  /// row of a block is consumed; a ";" that ends it isn't.
  int read_row(const row_place& place);
  /// Of the last row read: how many of its cells stood in front of its first newline, for messages;
  /// empty for a row on one line.
  std::string cells_before_newline(const row_place& place) const;

 private:
  template <class word>
  int read_cells(const row_place& place, std::span<word*> rows);
  std::uint32_t read_set(const row_place& place, int character);
  std::uint32_t lookup(const row_place& place, int character, int symbol);
  [[noreturn]] void alien_symbol(const row_place& place, int character, int symbol) const;

  symbol_table table_{};
  data_type type_ = numeric_data;
  bool gaps_ = false;
  bool gaps_are_missing_ = true;  // they are never states in alphanumeric data
  bool ready_ = false;
  bool told_gaps_ = false;
  int newline_at_ = 0;  // character at which the row first went on in another line; 0: none
};

/// "\n(line N of FILE)" for messages, while a file is read; empty otherwise.
std::string place_in_file();
/// Ends the command when the input ended instead of going on.
void check_input_goes_on();

}  // namespace zeb
