#include "console/line_editor.h"

#include <gtest/gtest.h>

#include <initializer_list>

#include "base/text_columns.h"
#include "console/keys.h"

namespace zeb {
namespace {

TEST(console_history, keeps_the_newest_56_lines_of_255_bytes) {
  console_history history;
  for (int i = 0; i < 60; ++i) history.add("line " + std::to_string(i));
  history.add("");
  history.add("   ");
  history.add("line 59");
  ASSERT_EQ(history.size(), 56u);
  EXPECT_EQ(history.line(0), "line 4");
  EXPECT_EQ(history.line(55), "line 59");
  history.add(std::string(254, 'x') + "\xC3\xBC");  // the character would end in byte 256
  EXPECT_EQ(history.line(55), std::string(254, 'x'));
}

TEST(console_history, reads_what_it_wrote) {
  console_history history;
  history.add("quote \xC3\xBC;");
  history.add("xread data;");
  EXPECT_EQ(history.file_text(), "2 quote \xC3\xBC;\1xread data;\1");
  console_history copy;
  copy.read_file_text(history.file_text());
  EXPECT_EQ(copy.file_text(), history.file_text());
}

TEST(line_editor, refuses_what_does_not_fit) {
  const console_history none;
  line_editor editor(none, 5);
  for (const char c : {'a', 'b', 'c', 'd'})
    EXPECT_EQ(editor.take(c), line_editor::outcome::going_on);
  EXPECT_EQ(editor.take(0xC3), line_editor::outcome::going_on);
  EXPECT_EQ(editor.take(0xBC), line_editor::outcome::full);
  EXPECT_EQ(editor.text(), "abcd");
  EXPECT_EQ(editor.take('e'), line_editor::outcome::going_on);
  EXPECT_EQ(editor.take('f'), line_editor::outcome::full);
  EXPECT_EQ(editor.take(key_delete), line_editor::outcome::refused);
  EXPECT_EQ(editor.take('\r'), line_editor::outcome::entered);
  EXPECT_EQ(editor.text(), "abcde");
}

TEST(line_editor, searches_the_history) {
  console_history history;
  for (const char* line : {"mult;",
                           "quote \xC3\xBC"
                           "bel;",
                           "mult=hold 2;"})
    history.add(line);
  line_editor editor(history, 100);
  editor.take('x');
  const auto keys = [&editor](std::initializer_list<int> list) {
    line_editor::outcome last{};
    for (const int key : list) last = editor.take(key);
    return last;
  };
  constexpr int search = 'R' - '@';
  EXPECT_EQ(keys({search, 'u'}), line_editor::outcome::going_on);
  EXPECT_EQ(editor.text(), "mult=hold 2;");
  EXPECT_EQ(keys({0xC3, 0xBC}), line_editor::outcome::refused);  // no line has both
  EXPECT_EQ(keys({key_backspace, 0xC3, 0xBC}), line_editor::outcome::going_on);
  EXPECT_EQ(editor.text(), history.line(1));
  EXPECT_EQ(editor.cursor(), 6u);
  EXPECT_EQ(keys({key_backspace, 'm', search}), line_editor::outcome::going_on);
  EXPECT_EQ(editor.text(), "mult;");
  EXPECT_EQ(keys({search}), line_editor::outcome::refused);
  keys({escape_key});
  EXPECT_FALSE(editor.is_searching());
  EXPECT_EQ(editor.text(), "x");
  EXPECT_EQ(keys({search, '=', key_end, '\r'}), line_editor::outcome::entered);
  EXPECT_EQ(editor.text(), "mult=hold 2;");
}

TEST(text_columns, counts_what_the_screen_shows) {
  EXPECT_EQ(text_columns("plain"), 5);
  EXPECT_EQ(text_columns("\xC3\xBC"), 1);                  // one letter
  EXPECT_EQ(text_columns("u\xCC\x88"), 1);                 // a letter and a mark on it
  EXPECT_EQ(text_columns("\xE4\xBD\xA0\xE5\xA5\xBD"), 4);  // two wide ones
  EXPECT_EQ(text_columns("\xFC\xE4"), 2);                  // bytes of another code
  EXPECT_EQ(text_columns("a\xE4\xBD"), 3);                 // a character that was cut
}

TEST(text_columns, cuts_between_characters) {
  const std::string text =
      "a\xE4\xBD\xA0"
      "b\xC3\xBC"
      "c";
  EXPECT_EQ(text_in_columns(text, 0, 2), "a");  // half of a wide one isn't shown
  EXPECT_EQ(text_in_columns(text, 0, 3), "a\xE4\xBD\xA0");
  EXPECT_EQ(text_in_columns(text, 3, 2), "b\xC3\xBC");
  EXPECT_EQ(text_in_columns(text, 9, 5), "");
}

}  // namespace
}  // namespace zeb
