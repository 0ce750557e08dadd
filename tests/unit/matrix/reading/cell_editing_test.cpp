// Cells as text: what is written of a cell stands for the same cell where it is edited.
#include "matrix/reading/cell_editing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "base/random.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "matrix/reading/matrix_writer.h"
#include "support/program.h"

namespace zeb {
namespace {

/// A matrix of one character, with cells of this width.
void lay_out(data_type type, int width, bool gaps) {
  wipe_matrix();
  matrix.cell_bytes = width;
  begin_matrix(5, 1);
  set_character_type(0, type, gaps);
  if (type == continuous_data) {
    matrix.characters[0].is_continuous = 1;
  }
  finish_matrix();
}

class cell_text : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zeb_test::start_program(); }
  void TearDown() override {
    wipe_matrix();
    matrix.cell_bytes = 2;
    matrix.state_mask = mask_of_width(2);
  }
};

TEST_F(cell_text, of_states_is_read_back) {
  std::mt19937 random(3);
  for (const data_type type : {numeric_data, dna_data, protein_data}) {
    for (const int width : {1, 2, 4}) {
      for (const bool gaps : {false, true}) {
        if (type == protein_data && width < 4) continue;
        lay_out(type, width, gaps);
        int states = states_of_type(type, width);
        if (type != numeric_data && !gaps) --states;
        const std::uint32_t all = states == 32 ? ~0U : (1U << states) - 1;
        for (int round = 0; round < 200; ++round) {
          std::uint32_t cell = static_cast<std::uint32_t>(random()) & all;
          if (round % 3) cell &= static_cast<std::uint32_t>(random() & random());
          if (!cell) continue;
          const std::string text = written_cell(0, cell);
          EXPECT_EQ(cell_from_text(0, text), cell)
              << text << ", type " << type << ", width " << width;
        }
        EXPECT_EQ(cell_from_text(0, written_cell(0, matrix.state_mask)), matrix.state_mask);
      }
    }
  }
}

TEST_F(cell_text, of_values_is_read_back_to_the_thousandth) {
  lay_out(continuous_data, 4, false);
  for (std::uint32_t low = 0; low <= 65000; low += 37) {
    const std::uint32_t high = low + std::min(low % 5 * 1111, 65000 - low);
    const std::uint32_t cell = low | (high << 16);
    EXPECT_EQ(cell_from_text(0, written_cell(0, cell)), cell) << written_cell(0, cell);
  }
  EXPECT_EQ(cell_from_text(0, written_cell(0, missing_continuous)), missing_continuous);
  EXPECT_EQ(cell_from_text(0, written_cell(0, inapplicable_continuous)), inapplicable_continuous);
}

// All arrangements of four cells turn up, and cells that are left out stay in their places.
TEST_F(cell_text, shuffled_among_taxa_keeps_what_it_must) {
  lay_out(numeric_data, 2, false);
  const std::vector<std::uint32_t> before = {1, 2, matrix.state_mask, 4, 8};
  const std::vector<std::uint8_t> taxa = {1, 1, 1, 0, 1};
  std::vector<int> scratch(before.size());
  std::vector<std::vector<std::uint32_t>> seen;
  for (int round = 0; round < 200; ++round) {
    std::vector<std::uint32_t> cells = before;
    permute_cells(0, cells, taxa, false, scratch);
    EXPECT_EQ(cells[2], matrix.state_mask);
    EXPECT_EQ(cells[3], 4U);
    EXPECT_TRUE(std::is_permutation(cells.begin(), cells.end(), before.begin()));
    seen.push_back(cells);
  }
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(std::unique(seen.begin(), seen.end()) - seen.begin(), 6);
}

}  // namespace
}  // namespace zeb
