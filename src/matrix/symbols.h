// Which character of the input stands for which set of states, by type of data and cell width.
#pragma once

#include <array>
#include <cstdint>

namespace zeb {

/// What the states of a character are, as bit flags.
enum data_type : std::uint8_t {
  numeric_data = 1,
  dna_data = 2,
  protein_data = 4,
  continuous_data = 8,
  landmark_data = 16,
};

/// The cell of each input character; 0 for a symbol that isn't allowed. Valid for one type of data
/// and one cell width.
using symbol_table = std::array<std::uint32_t, 256>;

/// All usable bits of a cell of this width (1, 2 or 4 bytes).
std::uint32_t mask_of_width(int cell_bytes);
/// "*": every state but the one of the highest bit; 21 states in proteins, seven bits in DNA.
std::uint32_t star_mask(data_type type, int cell_bytes);

/// `gaps_are_states` decides what "-" is in DNA and protein data. "?" is every usable bit in all
/// types, so that a missing cell is the same everywhere.
symbol_table make_symbols(data_type type, int cell_bytes, bool gaps_are_states);

/// The symbol that writes a single state; '?' for a state that the type has no symbol for.
char symbol_of_state(data_type type, int state);
/// The symbol that stands for a whole set in this type, as "R" for A or G; 0 without one.
char symbol_of_set(data_type type, int cell_bytes, std::uint32_t states);
/// How many states the type has symbols for at this width.
int states_of_type(data_type type, int cell_bytes);

constexpr int digit_states = 10;             // in alphanumeric data the states 0 to 9
constexpr std::uint32_t digit_mask = 0x3ff;  // the others are letters
constexpr std::uint32_t dna_bases = 15;
constexpr std::uint32_t all_amino_acids = 0x1fffff;
constexpr int dna_gap_state = 4;
constexpr int protein_gap_state = 21;

constexpr std::uint32_t missing_continuous = 0xffff0000U;       // 0 to 65,535
constexpr std::uint32_t inapplicable_continuous = 0xfffe0000U;  // 0 to 65,534

}  // namespace zeb
