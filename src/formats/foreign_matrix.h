// What the readers of all foreign formats do with the matrix: begin it, name its taxa, and cut it
// to what was read.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "matrix/matrix.h"
#include "matrix/reading/taxon_rows.h"
#include "matrix/symbols.h"

namespace zeb {

/// Drops the former data (asking where `warn` is on), checks the dimensions, makes room and lays
/// out a matrix with all cells missing.
void begin_foreign_matrix(const std::string& source, std::int64_t ntax, std::int64_t nchar,
                          const std::string& title = {});

/// Taxa by the names of a foreign file, made fit for ZEB with the usual warnings.
class foreign_taxa {
 public:
  explicit foreign_taxa(int ntax) : rows_(ntax) { rows_.begin_block(); }
  /// Number of the taxon of that name; -1 for a name not met.
  int find(const std::string& name) const;
  /// A new taxon. Errors for one too many and for a name met before.
  int add(const std::string& name);
  int count() const { return rows_.count(); }

 private:
  taxon_rows rows_;
  std::unordered_map<std::string, int> by_name_;
};

/// The type that "dna", "proteins" or "numeric" names; empty: what `nstates` says, else what the
/// symbols of the sequences look like, of which `letters` flags those that occur.
data_type type_of_sequences(const std::string& type_word, const std::array<bool, 256>& letters);

/// Turns the rows of symbols of a sequence format into cells. "." is the cell above; in DNA "X" is
/// any base and "O" a gap.
class sequence_cells {
 public:
  explicit sequence_cells(data_type type);
  /// The next cell of the taxon. `line`: of the file, for the error of an unknown symbol.
  void store(int taxon, int character, char symbol, std::size_t line);

 private:
  symbol_table symbols_;
};

/// Makes a matrix of characters of one type current, and tells of it.
void finish_sequences(data_type type);

/// Numbers of the characters whose records satisfy `holds`, for messages: " 0 3.5"; empty for none.
std::string characters_where(const std::function<bool(const character_record&)>& holds);

}  // namespace zeb
