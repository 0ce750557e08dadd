#include "formats/nexus/data_rows.h"

#include <algorithm>
#include <map>
#include <utility>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/text_columns.h"
#include "console/output.h"
#include "formats/foreign_matrix.h"
#include "language/input.h"
#include "language/lexer.h"
#include "matrix/blocks.h"
#include "matrix/matrix_layout.h"
#include "matrix/reading/continuous_reader.h"
#include "matrix/reading/matrix_reader.h"
#include "matrix/settings/data_conversion.h"

namespace zeb {

namespace {

class nexus_matrix_reader {
 public:
  nexus_matrix_reader(nexus_file& file, const nexus_format& format)
      : file_(file),
        format_(format),
        taxa_(matrix.ntax),
        position_(at(matrix.ntax), 0),
        first_row_(at(matrix.nchar)) {
    file.gap_cells.clear();
    for (const std::string& label : file.taxon_labels) taxa_.add(fitting(label));
  }
  void read();

 private:
  int row_taxon();
  void read_discrete();
  void read_row(int taxon);
  void read_with_continuous(int continuous);
  // What a cell holds as gaps are understood so far, and what it would hold if they were states.
  struct cell_states {
    std::uint32_t now = 0;
    std::uint32_t with_gaps = 0;
    bool missing_gap = false;  // a gap, and read as missing
  };
  struct symbol_tables {
    symbol_table now;
    symbol_table with_gaps;
  };
  cell_states read_set(int taxon, int character, int close);
  cell_states lookup(int taxon, int character, int symbol);
  void store(int taxon, int character, const cell_states& states);
  bool repeats_first(int character, int symbol);
  std::string read_row_name();
  std::string fitting(const std::string& name);
  const symbol_tables& symbols_of(int character);
  void set_types();
  void finish();

  nexus_file& file_;
  const nexus_format& format_;
  foreign_taxa taxa_;
  std::vector<int> position_;  // by taxon: cells read
  std::map<data_type, symbol_tables> tables_;
  std::vector<cell_states> first_row_;  // that other rows may repeat
  int rows_without_label_ = 0;
  bool told_truncation_ = false;
};

// The name cut to what is kept of names; tells so the first time.
std::string nexus_matrix_reader::fitting(const std::string& name) {
  const std::size_t longest = at(matrix.name_length) - 1;
  if (name.size() <= longest) return name;
  if (!told_truncation_) {
    told_truncation_ = true;
    warning_f("Taxon names with more than %i characters will be truncated",
              static_cast<int>(longest));
  }
  return std::string(text_in_bytes(name, longest));
}

// A name in quotes, or all up to a blank: many files have punctuation in names.
std::string nexus_matrix_reader::read_row_name() { return fitting(file_.in.name(";")); }

const nexus_matrix_reader::symbol_tables& nexus_matrix_reader::symbols_of(int character) {
  const data_type type = format_.type_of(character);
  const auto found = tables_.find(type);
  if (found != tables_.end()) return found->second;
  const symbol_tables made = {nexus_symbols(format_, type, file_.gaps_are_new_states),
                              nexus_symbols(format_, type, true)};
  return tables_.emplace(type, made).first->second;
}

// The taxon of the row that comes next; -1 where the matrix ends.
int nexus_matrix_reader::row_taxon() {
  if (file_.in.peek() == ';') return -1;
  if (file_.in.peek() < 0) file_.in.fail("the file ends within the matrix");
  if (!format_.labels) {
    const int taxon = rows_without_label_++ % matrix.ntax;
    if (taxon >= taxa_.count()) taxa_.add("Taxon" + std::to_string(taxon + 1));
    return taxon;
  }
  const std::string name = read_row_name();
  const int known = taxa_.find(name);
  if (known >= 0) {
    const bool goes_on = format_.interleaved && position_[at(known)] < matrix.nchar;
    if (position_[at(known)] > 0 && !goes_on) file_.in.fail("taxon " + name + " appears twice");
    return known;
  }
  if (!file_.taxon_labels.empty()) file_.in.fail("No taxon " + name);
  if (taxa_.count() == matrix.ntax) {
    file_.in.fail(text_of("can't have more than %i taxa, found %s", matrix.ntax, name.c_str()));
  }
  return taxa_.add(name);
}

// "." stands for the first taxon's states in sequences, as in our own files, even where the format
// doesn't say so.
bool nexus_matrix_reader::repeats_first(int character, int symbol) {
  if (format_.match) return symbol == format_.match;
  return symbol == '.' && format_.type_of(character) != numeric_data &&
         symbols_of(character).now[at(symbol)] == 0;
}

nexus_matrix_reader::cell_states nexus_matrix_reader::lookup(int taxon, int character, int symbol) {
  const symbol_tables& tables = symbols_of(character);
  const bool gap = symbol == '-' || (format_.gap && symbol == format_.gap);
  const bool missing = !file_.gaps_are_new_states || format_.type_of(character) == numeric_data;
  const cell_states states = {tables.now[at(symbol & 255)], tables.with_gaps[at(symbol & 255)],
                              gap && missing};
  if (states.now) return states;
  error_end_f("Found alien symbol for taxon %i (%s), char. %i: '%c'", taxon,
              std::string(taxon_name(taxon)).c_str(), character, symbol < 32 ? ' ' : symbol);
}

nexus_matrix_reader::cell_states nexus_matrix_reader::read_set(int taxon, int character,
                                                               int close) {
  cell_states set;
  for (int c = file_.in.next(); c != close; c = file_.in.next()) {
    if (c < 0 || c == ';') file_.in.fail("a set of states isn't closed");
    if (c < 33 || c == ',') continue;
    const cell_states one = lookup(taxon, character, c);
    set.now |= one.now;
    set.with_gaps |= one.with_gaps;
  }
  if (!set.now) file_.in.fail("a set of states is empty");
  return set;
}

void nexus_matrix_reader::store(int taxon, int character, const cell_states& states) {
  set_cell(taxon, character, states.now);
  if (states.missing_gap) note_gap(taxon, character);
  if (taxon == 0) first_row_[at(character)] = states;
  if (states.now != states.with_gaps)
    file_.gap_cells.push_back({taxon, character, states.with_gaps});
}

void nexus_matrix_reader::read_row(int taxon) {
  int& position = position_[at(taxon)];
  const int start = position;
  for (;;) {
    const int c = file_.in.next();
    // After the last cell of a row that isn't interleaved, a blank at least must follow.
    if (!format_.interleaved && position == matrix.nchar && (c < 33 || c == ';')) {
      if (c == ';') file_.in.back();
      return;
    }
    if (c < 0) file_.in.fail("the file ends within the matrix");
    if (c == '\n' || c == '\r') {
      if (format_.interleaved && position > start) return;
      continue;
    }
    if (c < 33) continue;
    if (c == ';') {
      file_.in.back();
      return;
    }
    if (position == matrix.nchar) {
      error_end_f(
          "Error reading taxon %s: too many characters\n   char. %i (last ch.) should be followed "
          "by newline",
          std::string(taxon_name(taxon)).c_str(), matrix.nchar - 1);
    }
    const int character = position++;
    if (c == '(' || c == '{') {
      store(taxon, character, read_set(taxon, character, c == '(' ? ')' : '}'));
    } else if (repeats_first(character, c)) {
      if (taxon == 0) error_end("Can't use \".\" for the first taxon");
      store(taxon, character, first_row_[at(character)]);
    } else {
      store(taxon, character, lookup(taxon, character, c));
    }
  }
}

void nexus_matrix_reader::read_discrete() {
  for (int taxon = row_taxon(); taxon >= 0; taxon = row_taxon()) {
    check_interrupt();
    read_row(taxon);
  }
  file_.in.expect(';', "after the matrix");
}

// A comment ends at the character that is returned in its place: values need blanks around
// comments.
int char_without_comments() {
  int c = plain_read_char();
  for (int open = 0; c == '[' || open > 0; c = plain_read_char()) {
    if (c == '[') ++open;
    if (c == ']' && --open == 0) continue;
    if (input_ended()) error_end("Error reading NEXUS file: a comment isn't closed");
  }
  return c;
}

// While one lives, the readers of the matrix skip comments.
struct comments_skipped : reader_scope {
  comments_skipped() : reader_scope({char_without_comments, plain_unread_char}) {}
};

// Values as in our own files, numbers or ranges as "1.2-1.5"; then the symbols of mixed data.
void nexus_matrix_reader::read_with_continuous(int continuous) {
  if (format_.interleaved) file_.in.fail("continuous characters can't be interleaved");
  nexus_symbols(format_, continuous_data, false);  // checks the width of the cells
  std::byte* const high = arena.high;
  continuous_reader values;
  for (int taxon = row_taxon(); taxon >= 0; taxon = row_taxon()) {
    {
      const comments_skipped skipping;
      row_place place;
      place.taxon = taxon;
      place.first = 0;
      place.end = continuous;
      position_[at(taxon)] = values.read_row(place);
    }
    read_row(taxon);
  }
  file_.in.expect(';', "after the matrix");
  values.store_all();
  free_to_high(high);
}

void nexus_matrix_reader::set_types() {
  std::vector<int> starts;
  data_type last = continuous_data;
  for (int c = 0; c < matrix.nchar; ++c) {
    const data_type type = format_.type_of(c);
    set_character_type(c, type, file_.gaps_are_new_states);
    if (c == 0 || (type != last && !format_.mixed.empty())) starts.push_back(c);
    last = type;
  }
  lay_out_blocks(starts);
}

void nexus_matrix_reader::finish() {
  const int longest = *std::max_element(position_.begin(), position_.begin() + taxa_.count());
  for (int t = 0; t < taxa_.count(); ++t) {
    if (position_[at(t)] == longest) continue;
    if (position_[at(t)] == 0) {
      warning("Taxon", taxon_name(t), "has no row in the matrix: all its cells are missing");
      continue;
    }
    error_end_f("Taxon %i (%s) has %i characters, others have %i", t,
                std::string(taxon_name(t)).c_str(), position_[at(t)], longest);
  }
  cut_to_what_was_read(taxa_.count(), longest, "re-set to");
  finish_matrix();
}

void nexus_matrix_reader::read() {
  set_types();
  const bool all = format_.type == continuous_data && format_.mixed.empty();
  const int continuous = std::min(matrix.nchar, all ? matrix.nchar : format_.continuous);
  if (continuous > 0) {
    read_with_continuous(continuous);
  } else {
    read_discrete();
  }
  if (taxa_.count() == 0) file_.in.fail("the matrix is empty");
  finish();
}

}  // namespace

void read_nexus_matrix(nexus_file& file, const nexus_format& format) {
  file.data_read = false;
  nexus_matrix_reader(file, format).read();
  file.data_read = true;
}

void make_gaps_states(nexus_file& file) {
  if (file.gaps_are_new_states) return;
  file.gaps_are_new_states = true;
  if (!file.data_read) return;
  make_gaps_states_of_sequences();
  for (const nexus_file::gap_cell& gap : file.gap_cells)
    set_cell(gap.taxon, gap.character, gap.states);
  file.gap_cells.clear();
}

}  // namespace zeb
