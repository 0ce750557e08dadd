// Text put before the rest of the input, and the ends of texts.
#include "macro/script_text.h"

#include <gtest/gtest.h>

#include <string>

#include "macro/bodies.h"
#include "support/macro_session.h"

namespace zeb {
namespace {

using zeb_test::macro_session;

std::string read_raw(std::size_t n) {
  std::string text;
  while (text.size() < n) text += static_cast<char>(read_raw_char());
  return text;
}

TEST(script_text, what_is_put_in_comes_before_what_is_left_of_the_last) {
  macro_session macro;
  macro.read("rest");
  insert_text("abc");
  EXPECT_EQ(read_raw_char(), 'a');
  insert_text("12");
  EXPECT_EQ(read_raw(6), "12bcre");
  insert_text("");
  EXPECT_EQ(read_raw(2), "st");
}

TEST(script_text, only_a_tail_may_be_expanded_again) {
  macro_session macro;
  macro.read("r");
  insert_text("ab'c'", 3);
  read_raw(2);
  EXPECT_TRUE(last_char_was_plain());
  read_raw(1);
  EXPECT_FALSE(last_char_was_plain());
  // What comes later stands before the tail: the tail stays open, and the new text plain.
  insert_text("xy");
  read_raw(2);
  EXPECT_TRUE(last_char_was_plain());
  read_raw(2);
  EXPECT_FALSE(last_char_was_plain());
}

TEST(script_text, steps_back_stop_at_the_start_of_a_text) {
  macro_session macro;
  macro.read("r");
  insert_text("ab");
  for (int i = 0; i < 3; ++i) unread_raw_char();
  EXPECT_EQ(read_raw(3), "abr");
}

TEST(script_text, a_text_that_is_too_long_loses_its_end_only) {
  macro_session macro;
  macro.read("Z");
  insert_text(std::string(20'000, 'x'));
  int count = 0;
  while (read_raw_char() == 'x') ++count;
  EXPECT_GE(count, 8500);
  EXPECT_LT(count, 20'000);
}

TEST(script_text, taking_an_expansion_leads_back_to_the_outer_text) {
  macro_session macro;
  macro.read("outer");
  insert_text("inner");
  read_raw(2);
  EXPECT_EQ(take_expansion(), "ner");
  EXPECT_EQ(take_expansion(), "");
  EXPECT_EQ(read_raw(5), "outer");
}

// A loop of two rounds over "ab" with the text after it.
void begin_loop(int from, int step, int end) {
  static const char body[] = "ab";
  body_record& loop = macros.bodies.emplace_back();
  loop.saved_top = macros.heap_top;
  loop.current = from;
  loop.step = step;
  loop.end = end;
  char* copy = take_heap(sizeof body);
  std::copy(std::begin(body), std::end(body), copy);
  loop.text = copy;
  loop.text_end = copy + 2;
  loop.resume = input.read_position;
  input.read_position = copy;
}

TEST(script_text, bodies_of_loops_are_read_as_often_as_they_count) {
  macro_session macro;
  const std::size_t used = macro_memory_used();
  macro.read("Z");
  begin_loop(1, 1, 3);
  EXPECT_EQ(read_raw(7), "abababZ");
  EXPECT_TRUE(macros.bodies.empty());
  EXPECT_EQ(macro_memory_used(), used);
  macro.read("Z");
  begin_loop(4, -3, 0);  // 4, 1; below 0 it ends
  EXPECT_EQ(read_raw(5), "ababZ");
  macro.read("Z");
  begin_loop(5, 0, 9);  // a step of nothing is one round
  EXPECT_EQ(read_raw(3), "abZ");
}

TEST(script_text, names_given_within_a_loop_outlive_its_text) {
  macro_session macro;
  name_variable(0, "before", {});
  const std::size_t used = macro_memory_used();
  macro.read("Z");
  begin_loop(1, 1, 1);
  name_variable(9, "later", {});
  name_variable(2, "within", {});
  EXPECT_EQ(read_raw(3), "abZ");
  EXPECT_EQ(find_variable("before"), 0);
  EXPECT_EQ(find_variable("later"), 9);
  EXPECT_EQ(find_variable("within"), 2);
  EXPECT_EQ(macro_memory_used(), used + sizeof "later" + sizeof "within");
}

}  // namespace
}  // namespace zeb
