#include "base/text_columns.h"

#include <gtest/gtest.h>

#include <string>

namespace zeb {
namespace {

TEST(text_columns_test, takes_bytes_that_are_no_characters_one_by_one) {
  // A continuation alone, an overlong "/", half of a pair of UTF-16, a code too high, an end too
  // early.
  for (const std::string text :
       {"\x80", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82", "\xff"}) {
    EXPECT_EQ(character_bytes(text, 0), 1) << text;
    EXPECT_EQ(text_columns(text), static_cast<int>(text.size())) << text;
    EXPECT_EQ(normal_form(text), text);
  }
  std::int32_t code = 0;
  EXPECT_EQ(character_bytes("\xe9t\xe9", 0, &code), 1);  // as in Latin-1
  EXPECT_EQ(code, 0xe9);
}

TEST(text_columns_test, cuts_no_character) {
  const std::string text = "a\xc3\xa9\xe0\xa4\x95\xf0\x9f\x90\x9f";  // of 1 to 4 bytes
  const std::size_t expected[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 10};
  for (std::size_t most = 0; most < std::size(expected); ++most)
    EXPECT_EQ(text_in_bytes(text, most).size(), expected[most]) << most;
  EXPECT_EQ(text_in_bytes("\x80\x80\x80\x80\x80", 4).size(), 4);
  EXPECT_EQ(text_columns(text), 5);
  EXPECT_EQ(text_in_columns(text, 1, 2), "\xc3\xa9\xe0\xa4\x95");
  EXPECT_EQ(text_in_columns(text, 1, 3), "\xc3\xa9\xe0\xa4\x95");  // half a fish isn't shown
  std::size_t place = text.size();
  for (const std::size_t bytes : {4U, 3U, 2U, 1U}) {
    EXPECT_EQ(character_bytes_before(text, place), bytes);
    place -= bytes;
  }
}

TEST(text_columns_test, waits_for_the_rest_of_a_character_only) {
  for (const char* partial : {"\xc3", "\xe0", "\xe0\xa4", "\xed", "\xf0", "\xf0\x9f\x90", "\xf4"})
    EXPECT_TRUE(is_partial_character(partial)) << partial;
  for (const char* whole : {"a", "\x80", "\xc0", "\xc3\xa9", "\xe0\x80", "\xed\xa0", "\xf5"})
    EXPECT_FALSE(is_partial_character(whole)) << whole;
}

TEST(text_columns_test, composes_letters_with_their_marks) {
  EXPECT_EQ(normal_form("e\xcc\x81"), "\xc3\xa9");
  EXPECT_EQ(normal_form("\xc3\xa9"), "\xc3\xa9");
  EXPECT_EQ(normal_form("q\xcc\x81"), "q\xcc\x81");  // there is no such letter
  EXPECT_EQ(text_columns("q\xcc\x81"), 1);
}

}  // namespace
}  // namespace zeb
