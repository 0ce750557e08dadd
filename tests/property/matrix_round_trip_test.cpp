// What xread writes, xread reads back: cells, names, types, blocks and settings.
#include <gtest/gtest.h>

#include <random>

#include "../support/program.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "matrix/symbols.h"

namespace {

using zeb::matrix;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

/// All of the matrix that a text can carry, in a form that compares and prints.
std::string description() {
  std::string text = matrix.title + "\n";
  text += std::to_string(matrix.ntax) + " " + std::to_string(matrix.nchar) + " " +
          std::to_string(matrix.cell_bytes) + " " + std::to_string(matrix.outgroup) + "\n";
  for (int b = 1; b <= matrix.nblocks; ++b) {
    text += "block " + std::to_string(matrix.block_first[at(b)]) + "\n";
  }
  for (const std::string& name : matrix.block_names) text += "block " + name + "\n";
  for (int t = 0; t < matrix.ntax; ++t) {
    text += std::string(zeb::taxon_name(t)) + (matrix.taxon_active[at(t)] ? "" : " inactive");
    for (int c = 0; c < matrix.nchar; ++c) text += " " + std::to_string(zeb::cell(t, c));
    text += "\n";
  }
  for (int c = 0; c < matrix.nchar; ++c) {
    const zeb::character_record& r = matrix.characters[at(c)];
    for (const int n : {r.weight, r.internal_steps, int{r.type}, int{r.is_continuous},
                        int{r.active}, int{r.additive}, int{r.gap_is_state}, r.block}) {
      text += std::to_string(n) + " ";
    }
    if (r.is_continuous) {
      text += std::to_string(zeb::original_value(c, 0)) + " " +
              std::to_string(zeb::original_value(c, 65000));
    }
    text += "\n";
    if (at(c) >= matrix.char_names.size()) continue;
    text += matrix.char_names[at(c)].name;
    for (const std::string& state : matrix.char_names[at(c)].states) text += " " + state;
    text += "\n";
  }
  return text;
}

class generator {
 public:
  explicit generator(unsigned seed) : engine_(seed) {}

  int below(int n) { return static_cast<int>(engine_() % static_cast<unsigned>(n)); }
  bool once_in(int n) { return below(n) == 0; }

  /// A matrix with every kind of cell and setting, laid out without the reader.
  void make_matrix() {
    zeb::wipe_matrix();
    matrix.cell_bytes = 1 << below(3);
    const int ntax = 4 + below(6);
    const int nchar = 1 + below(40);
    zeb::begin_matrix(ntax, nchar);
    if (once_in(2)) matrix.title = "'A title; " + std::to_string(below(99)) + "\n, of two lines'";
    for (int t = 0; t < ntax; ++t) zeb::set_taxon_name(t, name() + std::to_string(t));
    lay_out_blocks();
    zeb::finish_matrix();
    for (int t = 0; t < ntax; ++t) {
      for (int c = 0; c < nchar; ++c) zeb::set_cell(t, c, any_cell(c));
    }
    choose_settings();
  }

 private:
  std::string name() {
    std::string text;
    for (int n = 1 + below(20); n > 0; --n) text += "abcXYZ_.19"[below(10)];
    return text;
  }

  void lay_out_blocks() {
    const bool named = once_in(2);
    matrix.block_first = {0};
    if (named) matrix.block_names = {"all"};
    zeb::data_type type =
        matrix.cell_bytes == 4 && once_in(2) ? zeb::continuous_data : other_type();
    bool gaps = once_in(2);
    for (int c = 0; c < matrix.nchar; ++c) {
      if (c == 0 || once_in(8)) {
        if (c > 0) {
          type = type == zeb::continuous_data && once_in(2) ? type : other_type();
          gaps = once_in(2);
        }
        matrix.block_first.push_back(c);
        ++matrix.nblocks;
        if (named) matrix.block_names.push_back("b" + std::to_string(matrix.nblocks));
      }
      zeb::set_character_type(c, type);
      matrix.characters[at(c)].gap_is_state =
          gaps && (type == zeb::dna_data || type == zeb::protein_data);
    }
  }

  zeb::data_type other_type() {
    const int kind = below(matrix.cell_bytes == 4 ? 3 : 2);
    return kind == 0 ? zeb::numeric_data : kind == 1 ? zeb::dna_data : zeb::protein_data;
  }

  std::uint32_t any_cell(int character) {
    const zeb::character_record& r = matrix.characters[at(character)];
    if (r.is_continuous) {
      if (once_in(6)) return once_in(2) ? zeb::missing_continuous : zeb::inapplicable_continuous;
      const auto low = static_cast<std::uint32_t>(below(65001));
      const auto high =
          once_in(3) ? low + static_cast<std::uint32_t>(below(65001 - int(low))) : low;
      return low | (high << 16);
    }
    const auto type = static_cast<zeb::data_type>(r.type);
    if (once_in(8)) return once_in(2) ? matrix.state_mask : zeb::star_mask(type, matrix.cell_bytes);
    int states = zeb::states_of_type(type, matrix.cell_bytes);
    if (type != zeb::numeric_data && !r.gap_is_state) --states;
    std::uint32_t cell = 0;
    for (int n = once_in(3) ? 1 + below(5) : 1; n > 0; --n) cell |= 1U << below(states);
    return cell;
  }

  void choose_settings() {
    for (zeb::character_record& r : matrix.characters) {
      if (once_in(4)) r.weight = below(5);
      if (once_in(6)) r.internal_steps = below(100);
      if (once_in(6)) r.active = 0;
      if (once_in(4) && !r.is_continuous) r.additive = 1;
    }
    for (int c = 0; c < matrix.nchar; ++c) {
      if (!matrix.characters[at(c)].is_continuous || !once_in(2)) continue;
      constexpr double sizes[] = {1, 0.1, 1e-7, 3e15};
      matrix.scales[at(c)].factor = sizes[below(4)] * (1 + below(50));
      matrix.scales[at(c)].shift = 0.3 * (below(50) - 25);
      matrix.characters[at(c)].scale_changed = 1;
    }
    matrix.outgroup = below(matrix.ntax);
    for (int t = 4; t < matrix.ntax; ++t) {
      if (t != matrix.outgroup && once_in(3)) matrix.taxon_active[at(t)] = 0;
    }
    if (!once_in(2)) return;
    matrix.char_names.resize(at(matrix.nchar));
    for (int c = 0; c < matrix.nchar; ++c) {
      if (once_in(3)) continue;
      matrix.char_names[at(c)].name = "Name" + std::to_string(c);
      if (matrix.characters[at(c)].is_continuous) continue;
      for (int s = below(4); s > 0; --s) {
        matrix.char_names[at(c)].states.push_back("state" + std::to_string(below(99)));
      }
    }
  }

  std::mt19937 engine_;
};

class matrix_round_trip : public ::testing::Test {
 protected:
  void TearDown() override {
    zeb::wipe_matrix();
    zeb_test::run_program("nstates nogaps num 16;");
  }
};

TEST_F(matrix_round_trip, written_matrices_read_back_the_same) {
  zeb_test::start_program();
  for (unsigned seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    generator(seed).make_matrix();
    const std::string before = description();
    const std::string written = zeb_test::run_program("xread *;\nproc/;\n");
    zeb::wipe_matrix();
    matrix.cell_bytes = 2;
    const std::string said = zeb_test::run_program("nstates gaps dna;" + written + "proc/;\n");
    ASSERT_TRUE(matrix.present) << written << said;
    ASSERT_EQ(description(), before) << written;
  }
}

// One text in the shapes that editors and systems give it.
struct variant {
  const char* name;
  std::string (*change)(std::string text);
};

std::string replaced(std::string text, std::string_view what, std::string_view by) {
  for (std::size_t i = text.find(what); i != std::string::npos;
       i = text.find(what, i + by.size())) {
    text.replace(i, what.size(), by);
  }
  return text;
}

TEST_F(matrix_round_trip, line_ends_and_blanks_make_no_difference) {
  const std::string plain =
      "xread 'two\nlines' 6 5\nout 0123?-\nant [01](23)4567\nbee 000000\ncat 1*1*1*\n"
      "dog ??????\n;\n";
  const std::string blocks =
      "xread 6 5\n&[num /one]\nout 01\nant 1[01]\nbee 22\ncat ??\ndog 3-\n"
      "&[dna]\ndog ACGT\ncat RYNN\nant A-CG\n;\n";
  const variant variants[] = {
      {"as it stands", [](std::string t) { return t; }},
      {"CRLF", [](std::string t) { return replaced(t, "\n", "\r\n"); }},
      {"CR", [](std::string t) { return replaced(t, "\n", "\r"); }},
      {"all line ends in one file",
       [](std::string t) { return replaced(replaced(t, "5\n", "5\r\n"), "?\n", "?\r"); }},
      {"byte order mark", [](std::string t) { return "\xef\xbb\xbf" + t; }},
      {"byte order mark and CRLF",
       [](std::string t) { return "\xef\xbb\xbf" + replaced(t, "\n", "\r\n"); }},
      {"tabs", [](std::string t) { return replaced(t, " ", "\t"); }},
      {"blanks at line ends", [](std::string t) { return replaced(t, "\n", "  \t\n"); }},
      {"blanks in front", [](std::string t) { return "\n\n\t" + replaced(t, "\n", "\n   "); }},
      {"empty lines", [](std::string t) { return replaced(t, "\n", "\n\n\n"); }},
      {"no newline at the end", [](std::string t) { return t.substr(0, t.size() - 1); }},
      {"no semicolon at the end", [](std::string t) { return t.substr(0, t.size() - 2); }},
      {"wide gaps", [](std::string t) { return replaced(t, " ", std::string(9000, ' ')); }},
  };
  for (const std::string& text : {plain, blocks}) {
    zeb_test::start_program();
    zeb_test::run_program("nstates nogaps num 16;" + text);
    const std::string wanted = description();
    for (const variant& v : variants) {
      SCOPED_TRACE(v.name);
      zeb::wipe_matrix();
      const std::string said = zeb_test::run_program(v.change(text));
      ASSERT_TRUE(matrix.present) << said;
      std::string found = description();
      // A title keeps the blanks between its quotes.
      if (text == plain) {
        found = found.substr(found.find('\'', 1) + 1);
        EXPECT_EQ(found, wanted.substr(wanted.find('\'', 1) + 1));
      } else {
        EXPECT_EQ(found, wanted);
      }
    }
  }
}

}  // namespace
