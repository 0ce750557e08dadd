#include "formats/nexus/data_rows.h"

#include <algorithm>
#include <map>
#include <utility>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "formats/foreign_matrix.h"
#include "language/fit_text.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "matrix/blocks.h"
#include "matrix/matrix_growth.h"
#include "matrix/matrix_layout.h"
#include "matrix/reading/continuous_reader.h"
#include "matrix/reading/matrix_reader.h"
#include "matrix/settings/data_conversion.h"
#include "trees/drawing/tags.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

class nexus_matrix_reader {
 public:
  // The characters from `first` on are to be read, `former` are those of blocks before.
  nexus_matrix_reader(nexus_file& file, const nexus_format& format, int first,
                      const data_aside* former)
      : file_(file),
        format_(format),
        former_(former),
        first_(first),
        taxa_(matrix.ntax, text_of("Taxon names with more than %i characters will be truncated",
                                   matrix.name_length - 1)),
        position_(at(matrix.ntax), 0),
        first_row_(at(file.nchar)) {
    for (std::size_t t = 0; t < file.taxon_labels.size(); ++t) {
      if (former_) {
        taxa_.adopt(file.taxon_labels[t], former_->taxon_names()[t]);
      } else {
        taxa_.add(file.taxon_labels[t]);
      }
    }
    if (former_) former_->put_back_cells();
  }
  // Returns how many characters there were.
  int read();

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
  const symbol_tables& symbols_of(int character);
  void set_types();
  int finish();

  nexus_file& file_;
  const nexus_format& format_;
  const data_aside* former_;  // null for the first block of the file
  int first_;                 // characters below are of this block, and count from it
  foreign_taxa taxa_;
  std::vector<int> position_;  // by taxon: cells read
  std::map<data_type, symbol_tables> tables_;
  std::vector<cell_states> first_row_;  // that other rows may repeat
  int rows_without_label_ = 0;
};

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
    const int taxon = rows_without_label_++ % file_.ntax;
    if (taxon >= taxa_.count()) taxa_.add("Taxon" + std::to_string(taxon + 1));
    return taxon;
  }
  const std::string name = file_.in.name(";");  // many files have punctuation in names
  const int known = taxa_.find(name);
  if (known >= 0) {
    const bool goes_on = format_.interleaved && position_[at(known)] < file_.nchar;
    if (position_[at(known)] > 0 && !goes_on) file_.in.fail("taxon " + name + " appears twice");
    return known;
  }
  if (!file_.taxon_labels.empty() && !file_.new_taxa) file_.in.fail("No taxon " + name);
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
  error_end_f("Found alien symbol for taxon %i (%s), char. %i: '%c'%s", taxon,
              taxa_.name_in_file(taxon).c_str(), first_ + character, printable(symbol),
              file_.in.place().c_str());
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
  set_cell(taxon, first_ + character, states.now);
  if (states.missing_gap) note_gap(taxon, first_ + character);
  if (taxon == 0) first_row_[at(character)] = states;
  if (states.now != states.with_gaps)
    file_.gap_cells.push_back({taxon, first_ + character, states.with_gaps});
}

void nexus_matrix_reader::read_row(int taxon) {
  int& position = position_[at(taxon)];
  const int start = position;
  for (;;) {
    const int c = file_.in.next();
    // After the last cell of a row that isn't interleaved, a blank at least must follow.
    if (!format_.interleaved && position == file_.nchar && (c < 33 || c == ';')) {
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
    if (position == file_.nchar) {
      error_end_f(
          "Error reading taxon %s: too many characters\n   char. %i (last ch.) should be followed "
          "by newline%s",
          taxa_.name_in_file(taxon).c_str(), first_ + file_.nchar - 1, file_.in.place().c_str());
    }
    const int character = position++;
    if (c == '(' || c == '{') {
      store(taxon, character, read_set(taxon, character, c == '(' ? ')' : '}'));
    } else if (repeats_first(character, c)) {
      if (taxon == 0) error_end("Can't use \".\" for the first taxon" + file_.in.place());
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
  std::byte* const high = arena.high;
  continuous_reader values;
  for (int taxon = row_taxon(); taxon >= 0; taxon = row_taxon()) {
    {
      const comments_skipped skipping;
      row_place place;
      place.taxon = taxon;
      place.first = first_;
      place.end = first_ + continuous;
      position_[at(taxon)] = values.read_row(place) - first_;
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
  for (int c = 0; c < file_.nchar; ++c) {
    const data_type type = format_.type_of(c);
    set_character_type(first_ + c, type, file_.gaps_are_new_states);
    if (c == 0 || (type != last && !format_.mixed.empty())) starts.push_back(first_ + c);
    last = type;
  }
  if (former_) {
    const std::vector<int> others = former_->block_starts();
    starts.insert(starts.end(), others.begin(), others.end());
    std::sort(starts.begin(), starts.end());
  }
  lay_out_blocks(starts);
}

void warn_of_missing_rows(const std::vector<std::string>& names) {
  if (names.empty()) return;
  if (names.size() == 1) {
    warning("Taxon", names[0], "has no row in the matrix: all its cells are missing");
  } else {
    warning(names.size(), "taxa have no row in the matrix, and all their cells are missing:" +
                              wrapped_words(names, 60));
  }
}

int nexus_matrix_reader::finish() {
  const int longest = *std::max_element(position_.begin(), position_.begin() + taxa_.count());
  std::vector<std::string> without_row;
  for (int t = 0; t < taxa_.count(); ++t) {
    if (position_[at(t)] == longest) continue;
    if (position_[at(t)] == 0) {
      without_row.emplace_back(taxon_name(t));
      continue;
    }
    error_end_f("Taxon %i (%s) has %i characters, others have %i", t, taxa_.name_in_file(t).c_str(),
                position_[at(t)], longest);
  }
  warn_of_missing_rows(without_row);
  if (longest < file_.nchar && first_ + file_.nchar < matrix.nchar)
    file_.in.fail(text_of("the block has %i characters instead of %i", longest, file_.nchar));
  if (former_) shrink_matrix(taxa_.count(), matrix.nchar);  // of the new taxa some may be known
  cut_to_what_was_read(taxa_.count(), matrix.nchar - file_.nchar + longest, "re-set to");
  finish_matrix();
  if (former_) former_->put_back_settings();
  file_.taxon_labels = taxa_.names();
  return longest;
}

int nexus_matrix_reader::read() {
  set_types();
  const bool all = format_.type == continuous_data && format_.mixed.empty();
  const int continuous = std::min(file_.nchar, all ? file_.nchar : format_.continuous);
  if (continuous > 0) {
    read_with_continuous(continuous);
  } else {
    read_discrete();
  }
  if (taxa_.count() == 0) file_.in.fail("the matrix is empty");
  return finish();
}

// The first character of a further block. Continuous ones go before all others.
int place_of_block(const nexus_file& file, const nexus_format& format) {
  const bool continuous = format.type_of(0) == continuous_data;
  int place = 0;
  while (place < matrix.nchar && matrix.characters[at(place)].is_continuous) ++place;
  if (!continuous || place == matrix.nchar) return matrix.nchar;
  if (format.continuous > 0 && format.continuous < file.nchar)
    error_end("Continuous characters must precede all other ones!");
  return place;
}

void move_up(std::vector<std::uint8_t>& flags, int place, int count) {
  if (flags.size() >= at(place)) flags.insert(flags.begin() + place, at(count), 0);
}

// What was noted by the numbers of characters, which grow by `count` from `place` on.
void move_notes(nexus_file& file, int place, int count) {
  for (nexus_characters& block : file.character_blocks)
    if (block.first >= place) block.first += count;
  for (nexus_file::gap_cell& gap : file.gap_cells)
    if (gap.character >= place) gap.character += count;
  for (auto& [name, flags] : file.character_sets) move_up(flags, place, count);
  move_up(file.typed_characters, place, count);
  move_up(file.codon_positions, place, count);
}

void widen_for(const nexus_format& format) {
  if (format.mixed.empty()) widen_states_for(format.type, format.symbols.size());
  for (const nexus_type_range& range : format.mixed)
    widen_states_for(range.type, format.symbols.size());
}

// Lays out the matrix anew, with the characters of the blocks before.
int read_further_block(nexus_file& file, const nexus_format& format) {
  if (store.ntrees > 0 || tags.tags_present)
    warning("Trees are dropped: a further block of characters comes after them");
  const int place = place_of_block(file, format);
  const data_aside former(place, file.nchar);
  const int ntax = former.taxa() + (file.new_taxa ? file.ntax : 0);
  lay_out_foreign_matrix(file.name, ntax, matrix.nchar + file.nchar, {}, false);
  move_notes(file, place, file.nchar);
  file.nchar = nexus_matrix_reader(file, format, place, &former).read();
  return place;
}

}  // namespace

void read_nexus_matrix(nexus_file& file, const nexus_format& format, const std::string& title) {
  widen_for(format);
  const bool further = file.data_read;
  file.data_read = false;
  int place = 0;
  if (further) {
    place = read_further_block(file, format);
  } else {
    begin_foreign_matrix(file.name, file.ntax, file.nchar,
                         title.empty() ? title : "'" + title + "'");
    file.gap_cells.clear();
    file.nchar = nexus_matrix_reader(file, format, 0, nullptr).read();
  }
  file.character_blocks.push_back({fit_name(title), place, file.nchar});
  file.ntax = matrix.ntax;
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
