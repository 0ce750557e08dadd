// Symbols and state sets, for every type of data and width of cells.
#include "matrix/symbols.h"

#include <gtest/gtest.h>

#include <bit>
#include <cctype>

namespace zeb {
namespace {

constexpr data_type types[] = {numeric_data, dna_data, protein_data};
constexpr int widths[] = {1, 2, 4};

std::size_t place(char symbol) { return static_cast<unsigned char>(symbol); }

TEST(symbols, of_single_states_stand_for_them_in_both_cases) {
  for (const data_type type : types) {
    for (const int width : widths) {
      SCOPED_TRACE(testing::Message() << "type " << type << ", width " << width);
      const symbol_table table = make_symbols(type, width, true);
      for (int s = 0; s < states_of_type(type, width); ++s) {
        const char symbol = symbol_of_state(type, s);
        EXPECT_EQ(table[place(symbol)], 1U << s) << symbol;
        EXPECT_EQ(table[static_cast<std::size_t>(std::tolower(symbol))], 1U << s) << symbol;
      }
    }
  }
}

// Whatever has one symbol is read back from it; all others are written as sets.
TEST(symbols, of_sets_stand_for_them) {
  for (const data_type type : types) {
    for (const int width : widths) {
      const symbol_table table = make_symbols(type, width, true);
      const int states = states_of_type(type, width);
      int named = 0;
      for (std::uint32_t set = 1; set < 1U << std::min(states, 16); ++set) {
        const char symbol = symbol_of_set(type, width, set);
        if (!symbol) continue;
        ++named;
        EXPECT_EQ(table[place(symbol)], set) << "type " << type << ", width " << width << symbol;
      }
      EXPECT_GE(named, std::min(states, 16));
    }
  }
}

TEST(symbols, of_dna_sets_are_complete) {
  for (std::uint32_t set = 1; set <= dna_bases; ++set) {
    EXPECT_NE(symbol_of_set(dna_data, 2, set), '\0') << set;
  }
}

TEST(symbols, of_cells_that_say_little_differ_by_type_and_width) {
  for (const data_type type : types) {
    for (const int width : widths) {
      for (const bool gaps : {false, true}) {
        const symbol_table table = make_symbols(type, width, gaps);
        EXPECT_EQ(table[place('?')], mask_of_width(width));
        EXPECT_EQ(table[place('*')], star_mask(type, width));
        EXPECT_EQ(symbol_of_set(type, width, mask_of_width(width)), '?');
        // A gap as a state is one beside the others; as a missing entry it allows them all.
        const std::uint32_t gap = table[place('-')];
        if (type == numeric_data) {
          EXPECT_EQ(gap, mask_of_width(width));
        } else if (width == 4) {
          const std::uint32_t others = type == dna_data ? dna_bases : all_amino_acids;
          EXPECT_EQ(gap, gaps ? others + 1 : others);
          EXPECT_EQ(std::has_single_bit(gap), gaps);
        }
        EXPECT_EQ(table[place(' ')], 0U);
        EXPECT_EQ(table[place(';')], 0U);
      }
    }
  }
}

}  // namespace
}  // namespace zeb
