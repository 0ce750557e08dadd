#include "formats/foreign_matrix.h"

#include <algorithm>
#include <cctype>

#include "base/errors.h"
#include "base/indices.h"
#include "base/text_columns.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/list_text.h"
#include "matrix/matrix_layout.h"
#include "matrix/matrix_memory.h"
#include "matrix/reading/matrix_reader.h"

namespace zeb {

void begin_foreign_matrix(const std::string& source, std::int64_t ntax, std::int64_t nchar,
                          const std::string& title) {
  constexpr std::int64_t most = 1'000'000'000;  // begin_matrix checks what really fits
  if (nchar < 1 || nchar > most) error_end("Must specify number of characters");
  if (ntax < 4 || ntax > most) error_end("Must specify number of taxa (4 or more)");
  warn_of_replacement(source.c_str());
  wipe_matrix();
  make_room_for_matrix(static_cast<int>(ntax), static_cast<int>(nchar));
  begin_matrix(static_cast<int>(ntax), static_cast<int>(nchar), matrix_rows::unset);
  set_matrix_source(title, source);
}

int foreign_taxa::find(const std::string& name) const {
  const auto found = by_name_.find(normal_form(name));
  return found == by_name_.end() ? -1 : found->second;
}

int foreign_taxa::add(const std::string& name) {
  std::string word = name;
  std::replace(word.begin(), word.end(), ' ', '_');
  const int taxon = rows_.taxa_of_row(word, false).front();
  by_name_.emplace(normal_form(name), taxon);
  return taxon;
}

data_type type_of_sequences(const std::string& type_word, const std::array<bool, 256>& letters) {
  if (!type_word.empty()) {
    return type_word.starts_with("d")   ? dna_data
           : type_word.starts_with("p") ? protein_data
                                        : numeric_data;
  }
  if (matrix.default_type != numeric_data) return static_cast<data_type>(matrix.default_type);
  bool digits = false;
  bool bases = true;
  for (std::size_t c = 33; c < letters.size(); ++c) {
    if (!letters[c]) continue;
    const int letter = std::toupper(static_cast<int>(c));
    digits = digits || std::isdigit(letter);
    // Letters that aren't of bases, but of amino acids.
    bases = bases &&
            std::string_view("EFILPQZ").find(static_cast<char>(letter)) == std::string_view::npos;
  }
  return digits ? numeric_data : bases ? dna_data : protein_data;
}

sequence_cells::sequence_cells(data_type type)
    : symbols_(make_symbols(type, matrix.cell_bytes, matrix.gaps_are_states)) {
  if (type != dna_data) return;
  symbols_['X'] = symbols_['x'] = dna_bases;
  symbols_['O'] = symbols_['o'] = symbols_['-'];
}

void sequence_cells::store(int taxon, int character, char symbol, std::size_t line) {
  std::uint32_t states = symbols_[static_cast<unsigned char>(symbol)];
  if (!states && symbol == '.') {
    if (taxon == 0) error_end("Can't use \".\" for the first taxon");
    states = cell(taxon - 1, character);
  }
  if (!states) {
    error_end_f("Found alien symbol for taxon %i (%s), char. %i: '%c' (line %i of %s)", taxon,
                std::string(taxon_name(taxon)).c_str(), character, symbol, static_cast<int>(line),
                matrix.file_name.c_str());
  }
  set_cell(taxon, character, states);
  if (symbol == '.') {
    copy_gaps(taxon - 1, taxon, character, character + 1);
  } else if (symbol == '-' && !matrix.gaps_are_states) {
    note_gap(taxon, character);
  }
}

void finish_sequences(data_type type) {
  for (int c = 0; c < matrix.nchar; ++c) set_character_type(c, type, matrix.gaps_are_states);
  finish_matrix();
  if (settings.report) {
    report_line("Sequences taken as", type == dna_data       ? "DNA"
                                      : type == protein_data ? "proteins"
                                                             : "numbered states");
  }
  tell_what_was_read();
}

std::string characters_where(const std::function<bool(const character_record&)>& holds) {
  const auto of_number = [&holds](int character) {
    return holds(matrix.characters[at(character)]);
  };
  return wrapped_words(list_items(matrix.nchar, of_number), 0);
}

}  // namespace zeb
