#include "formats/foreign_matrix.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
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
  lay_out_foreign_matrix(source, static_cast<int>(ntax), static_cast<int>(nchar), title, true);
}

void lay_out_foreign_matrix(const std::string& source, int ntax, int nchar,
                            const std::string& title, bool tell) {
  wipe_matrix();
  make_room_for_matrix(ntax, nchar, tell);
  begin_matrix(ntax, nchar, matrix_rows::unset);
  set_matrix_source(title, source);
}

void widen_states_for(data_type type, std::size_t symbols) {
  constexpr int most = 32;
  int states = 0;
  if (type == protein_data || type == continuous_data) states = most;
  if (type == numeric_data) states = static_cast<int>(std::min<std::size_t>(symbols, most));
  if (states <= 8 * next_cell_width()) return;
  set_cell_width(states > 16 ? 4 : 2);
  report_line("Number of states raised to", 8 * next_cell_width(), "for",
              type == protein_data      ? "proteins"
              : type == continuous_data ? "continuous characters"
                                        : "the symbols of the file");
}

char printable(int symbol) { return symbol > 32 && symbol < 127 ? static_cast<char>(symbol) : '?'; }

foreign_taxa::foreign_taxa(int ntax, std::string warning_of_length)
    : rows_(ntax), warning_of_length_(std::move(warning_of_length)) {
  rows_.begin_block();
}

int foreign_taxa::find(const std::string& name) const {
  const auto found = by_name_.find(normal_form(name));
  return found == by_name_.end() ? -1 : found->second;
}

int foreign_taxa::add(const std::string& name) {
  const std::size_t longest = at(matrix.name_length) - 1;
  return adopt(name, distinct(fitter_.fit(name, longest, warning_of_length_), name));
}

int foreign_taxa::adopt(const std::string& name, const std::string& fit) {
  const int taxon = rows_.taxa_of_row(fit, false).front();
  by_name_.emplace(normal_form(name), taxon);
  used_.insert(fit);
  names_.push_back(name);
  return taxon;
}

std::string foreign_taxa::name_in_file(int taxon) const {
  return without_controls(names_[at(taxon)]);
}

std::string foreign_taxa::distinct(const std::string& fit, const std::string& name) const {
  std::string word = fit;
  for (int number = 2; used_.contains(word); ++number) {
    const std::string end = "_" + std::to_string(number);
    word = std::string(text_in_bytes(fit, at(matrix.name_length) - 1 - end.size())) + end;
  }
  if (word != fit) {
    warning("Taxon", without_controls(name), "would be called as another one: its name becomes",
            word);
  }
  return word;
}

std::string warning_of_long_names() {
  return text_of("Taxon names over %i letters will be truncated", matrix.name_length - 1);
}

data_type type_of_sequences(const std::string& type_word, const std::array<bool, 256>& letters) {
  if (!type_word.empty()) {
    return type_word.starts_with("d")   ? dna_data
           : type_word.starts_with("p") ? protein_data
                                        : numeric_data;
  }
  if (matrix.type_given) return static_cast<data_type>(matrix.default_type);
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

sequence_cells::sequence_cells(data_type type, const foreign_taxa& taxa)
    : symbols_(make_symbols(type, matrix.cell_bytes, matrix.gaps_are_states)), taxa_(taxa) {
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
                taxa_.name_in_file(taxon).c_str(), character,
                printable(static_cast<unsigned char>(symbol)), static_cast<int>(line),
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
