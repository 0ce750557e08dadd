// What the reader of numbers takes, leaves and refuses.
#include "macro/macro_values.h"

#include <gtest/gtest.h>

#include <cmath>

#include "language/lexer.h"
#include "support/macro_session.h"

namespace zeb {
namespace {

using zeb_test::error_of;
using zeb_test::macro_session;

TEST(macro_values, numbers_tell_what_they_were_read_from) {
  macro_session macro;
  name_variable(3, "x", {});
  store_variable(3, 8);
  macro.read("x 'x' (x) ((2)+0.5) -x 3.25.5 3e2");
  read_number n = macro_number();
  EXPECT_TRUE(n.named);
  EXPECT_EQ(n.value, 3);  // the variable's number
  n = macro_number();
  EXPECT_FALSE(n.named);
  EXPECT_EQ(n.value, 8);
  n = macro_number();
  EXPECT_FALSE(n.named);  // what was read within says nothing about the whole
  EXPECT_TRUE(n.parenthesised);
  n = macro_number();
  EXPECT_TRUE(n.parenthesised);
  EXPECT_EQ(n.value, 2.5);
  n = macro_number();
  EXPECT_TRUE(n.named);
  EXPECT_EQ(n.value, -3);
  n = macro_number();
  EXPECT_FALSE(n.parenthesised);
  EXPECT_EQ(n.value, 3.25);
  EXPECT_EQ(read_char(), '.');  // a second point ends a number
  EXPECT_EQ(macro_value(), 5);
  EXPECT_EQ(macro_value(), 3);  // so does an exponent
  EXPECT_EQ(read_char(), 'e');
}

TEST(macro_values, what_is_no_number_is_left_to_the_command) {
  macro_session macro;
  double value = 77;
  for (const char* text : {"tree", "=5", "- ;", "-=", "{1 2}", "*", ";", "_"}) {
    macro.read(text);
    EXPECT_FALSE(read_value(&value, nullptr)) << text;
    EXPECT_EQ(value, 77) << text;
    EXPECT_EQ(read_char(), text[0]) << text;
  }
}

TEST(macro_values, digits_beyond_all_numbers_are_no_trap) {
  macro_session macro;
  macro.read(std::string(400, '9') + " 0." + std::string(400, '0') + "1 " + std::string(600, '1'));
  EXPECT_TRUE(std::isinf(macro_value()));
  EXPECT_GE(macro_value(), 0);
  EXPECT_TRUE(std::isinf(macro_value()));  // as much of it as a word may have
  EXPECT_NE(error_of([] { check_variable(INFINITY); }), "");
  EXPECT_NE(error_of([] { check_variable(NAN); }), "");
}

TEST(macro_values, nesting_ends_in_an_error_and_leaves_no_trace) {
  macro_session macro;
  const auto nested = [](int n) {
    return std::string(static_cast<std::size_t>(n), '(') + "1" +
           std::string(static_cast<std::size_t>(n), ')') + " ";
  };
  for (int again = 0; again < 3; ++again) {
    macro.read(nested(400));
    EXPECT_EQ(macro_value(), 1);
    macro.read(nested(1500));
    EXPECT_NE(error_of([] { macro_value(); }).find("nested too deep"), std::string::npos);
    // Errors from within leave the count at what it was outside.
    for (int i = 0; i < 50; ++i) {
      macro.read(std::string(100, '(') + "nosuch");
      EXPECT_NE(error_of([] { macro_value(); }).find("Unrecognized variable"), std::string::npos);
    }
  }
}

TEST(macro_values, subscripts_end_where_a_range_begins) {
  macro_session macro;
  macro.read("2+3-4] 2+3-4]");
  EXPECT_EQ(macro_subscript(true), 5);
  EXPECT_EQ(read_char(), '-');
  EXPECT_EQ(read_char(), '4');
  EXPECT_EQ(read_char(), ']');
  EXPECT_EQ(macro_subscript(false), 1);
  EXPECT_EQ(read_char(), ']');
}

}  // namespace
}  // namespace zeb
