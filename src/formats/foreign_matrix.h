// What the readers of all foreign formats do with the matrix: begin it, name its taxa, and cut it
// to what was read.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "language/fit_text.h"
#include "matrix/matrix.h"
#include "matrix/reading/taxon_rows.h"
#include "matrix/symbols.h"

namespace zeb {

/// Drops the former data (asking where `warn` is on), checks the dimensions, makes room and lays
/// out a matrix with all cells missing.
void begin_foreign_matrix(const std::string& source, std::int64_t ntax, std::int64_t nchar,
                          const std::string& title = {});

/// What stands between `begin_foreign_matrix` and the former data, for data that replace parts of
/// themselves: drops them, makes room and lays out a matrix. Its size is told on wish only.
void lay_out_foreign_matrix(const std::string& source, int ntax, int nchar,
                            const std::string& title, bool tell);
/// Raises the number of states of the next data, with a note, where it is too low for characters of
/// this type and, if they are standard ones, `symbols` states.
void widen_states_for(data_type type, std::size_t symbols = 0);
/// The symbol as a message can show it.
char printable(int symbol);

/// Taxa by the names of a foreign file, made fit for ZEB with the usual warnings. Names that are
/// the same once they are fit get numbers at their ends.
class foreign_taxa {
 public:
  /// `warning_of_length`: for the first name that is too long.
  foreign_taxa(int ntax, std::string warning_of_length);
  /// Number of the taxon of that name; -1 for a name not met.
  int find(const std::string& name) const;
  /// A new taxon, whose name hasn't been met. Error for one too many.
  int add(const std::string& name);
  /// The same, for a name that was made fit before.
  int adopt(const std::string& name, const std::string& fit);
  int count() const { return rows_.count(); }
  /// As they stand in the file, by number.
  const std::vector<std::string>& names() const { return names_; }
  /// The same for messages.
  std::string name_in_file(int taxon) const;

 private:
  std::string distinct(const std::string& fit, const std::string& name) const;

  taxon_rows rows_;
  name_fitter fitter_{named::taxon};
  std::string warning_of_length_;
  std::vector<std::string> names_;
  std::unordered_map<std::string, int> by_name_;  // of the file
  std::unordered_set<std::string> used_;          // names in the matrix
};

/// "Taxon names over 31 letters will be truncated".
std::string warning_of_long_names();

/// The type that "dna", "proteins" or "numeric" names; empty: what `nstates` says, else what the
/// symbols of the sequences look like, of which `letters` flags those that occur.
data_type type_of_sequences(const std::string& type_word, const std::array<bool, 256>& letters);

/// Turns the rows of symbols of a sequence format into cells. "." is the cell above; in DNA "X" is
/// any base and "O" a gap.
class sequence_cells {
 public:
  /// `taxa` are kept by the caller.
  sequence_cells(data_type type, const foreign_taxa& taxa);
  /// The next cell of the taxon. `line`: of the file, for the error of an unknown symbol.
  void store(int taxon, int character, char symbol, std::size_t line);

 private:
  symbol_table symbols_;
  const foreign_taxa& taxa_;
};

/// Makes a matrix of characters of one type current, and tells of it.
void finish_sequences(data_type type);

/// Numbers of the characters whose records satisfy `holds`, for messages: " 0 3.5"; empty for none.
std::string characters_where(const std::function<bool(const character_record&)>& holds);

}  // namespace zeb
