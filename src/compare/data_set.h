// A data set beside the one in memory: taxa, characters, cells, blocks and trees as one value, so
// that several can be looked at side by side and a new one can be made of them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/indices.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "matrix/settings/named_groups.h"
#include "trees/tree_record.h"

namespace zeb {

struct data_character {
  std::string name;                 // empty: without one
  std::vector<std::string> states;  // by state; empty texts: without a name
  character_record settings;
  shared_costs costs;      // null: none
  continuous_scale scale;  // continuous characters
  bool is_discrete() const { return (settings.type & (continuous_data | landmark_data)) == 0; }
  bool is_continuous() const { return settings.type == continuous_data; }
  bool is_landmark() const { return settings.type == landmark_data; }
  /// States that are numbers, whose meaning only names can tell.
  bool has_numbered_states() const { return settings.type == numeric_data; }
};

/// Cells are sets of 32 states, whatever the width in the file: `missing_cell` is "?". Continuous
/// ones are as in the matrix; see `continuous_cell`.
constexpr std::uint32_t missing_cell = 0xffffffffU;

/// The ends of a continuous entry, in the units of the file.
struct entry_range {
  double low = 0;
  double high = 0;
  bool operator==(const entry_range&) const = default;
};

struct data_set {
  std::string file;
  std::string word;   // the file's name without folder and extension, as part of other names
  std::string title;  // without quotes
  std::vector<std::string> taxa;
  std::vector<std::uint8_t> taxon_active;
  int outgroup = 0;
  std::vector<data_character> characters;
  std::vector<std::string> block_names;           // by number, from that of block 0; empty: none
  std::vector<std::uint32_t> cells;               // by taxon, then by character
  std::vector<std::uint8_t> notes;                // the same: `silent_note`, `gap_note`
  std::vector<landmark_configuration> landmarks;  // in the order of the characters
  std::vector<step_matrix> step_matrices;         // those that have names
  std::vector<group_copy> taxon_groups, character_groups, tree_groups;
  std::vector<std::vector<tree_node>> trees;  // records of 2 * ntax - 1 nodes

  int ntax() const { return static_cast<int>(taxa.size()); }
  int nchar() const { return static_cast<int>(characters.size()); }
  std::size_t place(int taxon, int character) const {
    return at(taxon) * characters.size() + at(character);
  }
  std::uint32_t states(int taxon, int character) const { return cells[place(taxon, character)]; }
  /// Says the cell nothing: missing, inapplicable, or any state.
  bool is_silent(int taxon, int character) const;
  /// The values of a cell of a continuous character that says something.
  entry_range values(int taxon, int character) const;
  /// Has the character any entry for the taxon? Landmarks have theirs elsewhere.
  const landmark_configuration* landmarks_of(int character) const;
  /// Makes room for so many taxa and characters, with all cells missing.
  void resize(int taxa_count, int character_count);
};

constexpr std::uint8_t silent_note = 1;
constexpr std::uint8_t gap_note = 2;  // "-", read as missing

/// A copy of data and trees in memory.
data_set data_in_memory(const std::string& file);
/// Makes the data set the one in memory, with its trees, in place of what is there.
void put_into_memory(const data_set& data);

/// Can the two characters be the same: of one type, with as many landmarks?
bool are_of_one_kind(const data_set& first, int character, const data_set& second, int other);
bool has_step_matrices(const data_set& data);
/// Makes the character one without costs, root states and steps of the user's.
void drop_costs(data_character& character);
/// They are dropped where characters of two sets become one.
void warn_of_step_matrices();

/// "dir/Old data.zeb" as "Old_data": fit to be a part of the names of groups and files.
std::string word_of_file(const std::string& file);
/// Sets with the same word, as of files in different folders, get numbers after it.
void tell_words_apart(const std::vector<data_set*>& sets);

}  // namespace zeb
