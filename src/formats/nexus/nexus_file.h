// What one NEXUS file has said so far, shared by the readers of its blocks.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "formats/nexus/tokens.h"
#include "matrix/matrix.h"

namespace zeb {

/// What a list is of.
enum class nexus_list { taxa, characters };
/// The characters of one block of data; lists that name the block count within it.
struct nexus_characters {
  std::string title;  // one word; empty: none
  int first = 0;
  int count = 0;
};
/// Flags by taxon or character, by the lower-case name of the set.
using nexus_sets = std::unordered_map<std::string, std::vector<std::uint8_t>>;

struct nexus_file {
  explicit nexus_file(std::string file_name) : name(std::move(file_name)) {}
  /// Passes over a command whose first word has been read, and tells so once for each word.
  void skip_command(const nexus_token& word);
  std::string name;
  nexus_reader in;

  // TAXA, and the names of a DATA block without one.
  int ntax = 0;  // 0 not said
  int nchar = 0;
  bool new_taxa = false;  // the block being read may bring further taxa
  std::vector<std::string> taxon_labels;
  bool gaps_are_new_states = false;                // by our setting, or "gapmode=newstate" was met
  bool data_read = false;                          // the matrix in memory is of this file
  std::vector<nexus_characters> character_blocks;  // in the order of the file
  // That of "link characters = name" in the block being read; null for all characters.
  const nexus_characters* linked = nullptr;
  // Cells with gaps, and their states if gaps are states: that may be told after the data.
  struct gap_cell {
    int taxon = 0;
    int character = 0;
    std::uint32_t states = 0;
  };
  std::vector<gap_cell> gap_cells;

  std::string symbols;  // of standard states, in their order; empty: the usual ones

  int trees_read = 0;

  /// By character: whether the file gives its type.
  std::vector<std::uint8_t> typed_characters;

  nexus_sets taxon_sets;
  nexus_sets character_sets;
  // Position in the codon, by character: '1' to '3', 'n' for none, 0 where that isn't told.
  std::vector<std::uint8_t> codon_positions;
  bool codons_in_force = false;  // by "*": later sets without one don't count
  std::vector<std::string> character_groups, taxon_groups;  // made of sets, in this block
  std::vector<std::string> sets_without_group;
  std::map<std::string, std::string> set_of_group;  // lower case, by the name of the group
  bool told_long_set = false;
  std::set<std::string> skipped;  // commands that were told
  nexus_sets& sets_of(nexus_list kind) {
    return kind == nexus_list::taxa ? taxon_sets : character_sets;
  }
};

}  // namespace zeb
