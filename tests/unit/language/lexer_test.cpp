// Characters, words and numbers from the input stack.
#include "language/lexer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "base/command.h"
#include "language/input.h"
#include "support/program.h"

namespace zeb {
namespace {

// A text on the input stack for the length of a test.
class text_input {
 public:
  explicit text_input(std::string_view text) {
    zeb_test::start_program();
    push_string(text, "test");
  }
  ~text_input() { pop_all(); }
};

bool fails(int (*read)()) {
  const jump_context context;
  try {
    read();
  } catch (const command_unwinding&) {
    return true;
  }
  return false;
}

TEST(lexer, words_are_letters_folded_and_leave_what_follows) {
  const text_input in("  TSave*foo xread=5");
  EXPECT_EQ(read_word(), 5);
  EXPECT_EQ(token(), "tsave");
  EXPECT_TRUE(accept_char('*'));
  EXPECT_EQ(read_word(), 3);
  EXPECT_EQ(read_word(), 5);
  EXPECT_EQ(read_word(), 0);
  EXPECT_EQ(read_char(), '=');
}

TEST(lexer, names_keep_case_and_take_digits_after_the_first_letter) {
  const text_input in("Homo_sap-2.x+ 3abc");
  read_name();
  EXPECT_EQ(token(), "Homo_sap-2.x+");
  EXPECT_EQ(read_name(), 0);
}

TEST(lexer, a_word_of_33_letters_is_too_long) {
  const text_input in(std::string(32, 'a') + " " + std::string(33, 'b'));
  EXPECT_EQ(read_word(), 32);
  EXPECT_TRUE(fails(read_word));
}

TEST(lexer, items_end_at_blanks_and_semicolons) {
  const text_input in("a/b,c.txt\x01next;last");
  read_item();
  EXPECT_EQ(token(), "a/b,c.txt");
  EXPECT_TRUE(at_end_of_word(false));
  EXPECT_EQ(read_item(), 4);
  EXPECT_EQ(read_item(), 0);
  EXPECT_FALSE(at_end_of_word(true));
}

TEST(lexer, numbers_leave_what_is_none) {
  const text_input in("12 -7 3.25 -x 2.5.5;");
  EXPECT_EQ(read_int(), 12);
  int value = 0;
  EXPECT_TRUE(read_optional_int(&value));
  EXPECT_EQ(value, -7);
  EXPECT_EQ(read_float(), 3.25);
  EXPECT_FALSE(read_optional_int(&value));
  EXPECT_EQ(read_char(), '-');
  EXPECT_EQ(read_char(), 'x');
  EXPECT_EQ(read_float(), 2.5);
  EXPECT_EQ(read_char(), '.');
  EXPECT_EQ(read_int(), 5);
  EXPECT_EQ(read_int(), -1);
  EXPECT_EQ(read_char(), ';');
}

TEST(lexer, a_literal_fraction_is_no_integer_nor_is_what_no_int_holds) {
  const text_input in("2.5;");
  EXPECT_TRUE(fails(read_int));
  const text_input large("99999999999;");
  EXPECT_TRUE(fails(read_int));
}

// Texts are read in pieces: what lies across a border can still be unread.
TEST(input, characters_can_be_unread_across_pieces_of_a_file) {
  zeb_test::start_program();
  const std::string name = testing::TempDir() + "zeb_pieces.txt";
  for (int length = refill_size - 3; length <= refill_size + 3; ++length) {
    std::ofstream(name) << std::string(static_cast<std::size_t>(length), 'x') << "-y";
    push_file(name, {});
    for (int i = 0; i < length; ++i) ASSERT_EQ(read_char(), 'x');
    int value = 0;
    EXPECT_FALSE(read_optional_int(&value));
    EXPECT_EQ(read_char(), '-') << length;
    EXPECT_EQ(read_char(), 'y');
    EXPECT_EQ(read_char(), '\n');
    EXPECT_EQ(read_char(), ';');
    pop_all();
  }
}

TEST(input, a_nul_byte_is_a_blank_and_bytes_are_never_negative) {
  zeb_test::start_program();
  const std::string name = testing::TempDir() + "zeb_bytes.txt";
  std::ofstream(name, std::ios::binary) << std::string("a\0\xff;", 4);
  push_file(name, {});
  EXPECT_EQ(read_char(), 'a');
  EXPECT_EQ(read_char(), ' ');
  EXPECT_EQ(read_char(), 255);
  pop_all();
}

TEST(input, lines_are_counted_through_reading_and_unreading) {
  const text_input in("a\nb\nc");
  for (int i = 0; i < 4; ++i) read_char();
  EXPECT_EQ(top_frame().line_number, 2);
  unread_char();
  EXPECT_EQ(top_frame().line_number, 1);
}

TEST(input, a_text_ends_once_its_supplied_semicolon_is_read) {
  const text_input in("a");
  const int level = input.top;
  read_char();
  EXPECT_TRUE(has_text_at(level));
  EXPECT_EQ(read_char(), '\n');
  EXPECT_TRUE(input_ended());
  EXPECT_EQ(read_char(), ';');
  EXPECT_FALSE(has_text_at(level));
}

}  // namespace
}  // namespace zeb
