// What one NEXUS file has said so far, shared by the readers of its blocks.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "formats/nexus/tokens.h"
#include "matrix/matrix.h"

namespace zeb {

/// What a list is of.
enum class nexus_list { taxa, characters };
/// Flags by taxon or character, by the lower-case name of the set.
using nexus_sets = std::unordered_map<std::string, std::vector<std::uint8_t>>;

struct nexus_file {
  explicit nexus_file(std::string file_name) : name(std::move(file_name)) {}
  std::string name;
  nexus_reader in;

  // TAXA, and the names of a DATA block without one.
  int ntax = 0;  // 0 not said
  int nchar = 0;
  std::vector<std::string> taxon_labels;
  bool gaps_are_new_states = false;  // "gapmode=newstate" stands somewhere in the file

  std::string symbols;  // of standard states, in their order; empty: the usual ones
  /// State that a symbol of these data stands for; -1 for none.
  int state_of_symbol(data_type type, char symbol) const;

  int trees_read = 0;

  nexus_sets taxon_sets;
  nexus_sets character_sets;
  nexus_sets& sets_of(nexus_list kind) {
    return kind == nexus_list::taxa ? taxon_sets : character_sets;
  }
};

/// The blocks. Each reads from behind the ";" of "begin NAME;" up to its "end;".
void read_taxa_block(nexus_file& file);
void read_data_block(nexus_file& file);
void read_assumptions_block(nexus_file& file);
void read_trees_block(nexus_file& file);

/// "usertype", from behind the word up to its ";".
void read_nexus_step_matrix(nexus_file& file);

/// Taxon by name (case ignored) or, for text of digits only, by number from 1; -1 none.
int find_nexus_taxon(const std::string& text);
/// Character by name or number from 1; -1 none.
int find_nexus_character(const std::string& text);

/// A list such as "1-5 7 10-. 3-30\3 all name" up to "," or ";" (left unread): flags by element.
/// Names are of elements or of sets.
std::vector<std::uint8_t> read_nexus_list(nexus_file& file, nexus_list kind);

/// Reads a whole NEXUS file from the top frame, behind "#NEXUS".
void read_nexus();

}  // namespace zeb
