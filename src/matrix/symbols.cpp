#include "matrix/symbols.h"

#include <bit>
#include <cctype>
#include <string_view>

namespace zeb {
namespace {

constexpr std::string_view numeric_states = "0123456789ABCDEFGHIJKLMNOPQRSTUV";
constexpr std::string_view dna_states = "AGCT-";
constexpr std::string_view protein_states = "ACDEFGHIKLMNPQRSTVWYU-";

struct named_set {
  char symbol;
  std::string_view members;
};
// The ambiguity codes of the IUPAC-IUB nomenclature.
constexpr named_set dna_sets[] = {
    {'U', "T"},  {'R', "AG"},  {'Y', "TC"},  {'M', "AC"},  {'K', "GT"},  {'S', "GC"},
    {'W', "AT"}, {'B', "GCT"}, {'D', "AGT"}, {'H', "ACT"}, {'V', "ACG"}, {'N', "AGCT"},
};
constexpr named_set protein_sets[] = {
    {'Z', "EQ"},
    {'B', "DN"},
    {'X', "ACDEFGHIKLMNPQRSTVWYU"},
};

std::string_view states_text(data_type type) {
  if (type == dna_data) return dna_states;
  if (type == protein_data) return protein_states;
  return numeric_states;
}

std::uint32_t members_mask(std::string_view members, std::string_view states) {
  std::uint32_t mask = 0;
  for (const char c : members) mask |= 1U << states.find(c);
  return mask;
}

void set_both_cases(symbol_table& table, char symbol, std::uint32_t states) {
  table[static_cast<unsigned char>(std::toupper(symbol))] = states;
  table[static_cast<unsigned char>(std::tolower(symbol))] = states;
}

}  // namespace

std::uint32_t mask_of_width(int cell_bytes) {
  return cell_bytes == 4 ? 0xffffffffU : (1U << (8 * cell_bytes)) - 1;
}

std::uint32_t star_mask(data_type type, int cell_bytes) {
  if (type == dna_data) return 127;
  if (type == protein_data) return all_amino_acids;
  return mask_of_width(cell_bytes) >> 1;
}

int states_of_type(data_type type, int cell_bytes) {
  const int bits = 8 * cell_bytes;
  const int symbols = static_cast<int>(states_text(type).size());
  return symbols < bits ? symbols : bits;
}

symbol_table make_symbols(data_type type, int cell_bytes, bool gaps_are_states) {
  symbol_table table{};
  const std::string_view states = states_text(type);
  const int count = states_of_type(type, cell_bytes);
  for (int s = 0; s < count; ++s) {
    set_both_cases(table, states[static_cast<std::size_t>(s)], 1U << s);
  }
  if (type == dna_data) {
    for (const named_set& set : dna_sets) {
      set_both_cases(table, set.symbol, members_mask(set.members, states));
    }
    if (!gaps_are_states) table['-'] = dna_bases;
  } else if (type == protein_data) {
    for (const named_set& set : protein_sets) {
      set_both_cases(table, set.symbol, members_mask(set.members, states));
    }
    if (!gaps_are_states) table['-'] = all_amino_acids;
  } else {
    table['-'] = mask_of_width(cell_bytes);
  }
  table['?'] = mask_of_width(cell_bytes);
  table['*'] = star_mask(type, cell_bytes);
  return table;
}

char symbol_of_state(data_type type, int state) {
  const std::string_view states = states_text(type);
  const auto s = static_cast<std::size_t>(state);
  return s < states.size() ? states[s] : '?';
}

char symbol_of_set(data_type type, int cell_bytes, std::uint32_t states) {
  if (states == mask_of_width(cell_bytes)) return '?';
  if (std::has_single_bit(states)) {
    const int state = std::countr_zero(states);
    return state < states_of_type(type, cell_bytes) ? symbol_of_state(type, state) : '\0';
  }
  if (type == dna_data) {
    for (const named_set& set : dna_sets) {
      if (members_mask(set.members, dna_states) == states) return set.symbol;
    }
  } else if (type == protein_data) {
    for (const named_set& set : protein_sets) {
      if (members_mask(set.members, protein_states) == states) return set.symbol;
    }
  }
  return states == star_mask(type, cell_bytes) ? '*' : '\0';
}

}  // namespace zeb
