// What reaches the text buffer stands for what reaches every place: the line buffer is one.
#include "console/output.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "console/log.h"
#include "console/text_buffer.h"

namespace zeb {
namespace {

class output_to_buffer : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(display_buffer.allot(50));
    output.output_mask = no_console;
  }
  void TearDown() override {
    reset_output();
    close_log();
    output = {};
    display_buffer.forget();
  }
  static std::string shown() {
    std::string text;
    for (std::size_t i = 0; i < display_buffer.lines(); ++i) text += display_buffer.line(i) + "\n";
    return text;
  }
};

TEST_F(output_to_buffer, lines_are_cut_at_2048_bytes_and_keep_their_newline) {
  emit(std::string(3000, 'a'), "\n", std::string(2048, 'b'), "\nshort\n");
  EXPECT_EQ(shown(), std::string(2048, 'a') + "\n" + std::string(2048, 'b') + "\nshort\n");
  display_buffer.forget();
  emit(std::string(2047, 'a'), "\xC3\xBC", "more\n");  // no half of a character is left
  EXPECT_EQ(shown(), std::string(2047, 'a') + "\n");
}

TEST_F(output_to_buffer, the_forms_differ_in_blanks_and_line_ends) {
  emit("a", 1, 'c');
  report_line("x", 2, "y");
  emitf("%s-%i", "z", 3);
  newline();
  EXPECT_EQ(shown(), "a1cx 2 y \nz-3 \n \n");
}

TEST_F(output_to_buffer, the_log_is_complete_when_it_is_closed) {
  const std::string name = testing::TempDir() + "zeb_output_test.log";
  std::string expected;
  ASSERT_TRUE(open_log(name, false));
  for (int i = 0; i < 500; ++i) {
    report_line("line", i);
    expected += "line " + std::to_string(i) + " \n";
  }
  {
    const output_mask_scope quiet(no_log | no_console);
    report_line("not in the log");
  }
  ASSERT_TRUE(open_log(name, true));
  report_line("added");
  close_log();
  std::ifstream file(name);
  std::stringstream text;
  text << file.rdbuf();
  EXPECT_EQ(text.str(), expected + "added \n");
  EXPECT_FALSE(open_log(testing::TempDir() + "no/such/folder/x.log", false));
  EXPECT_FALSE(log_is_open());
  EXPECT_FALSE(open_log(std::string(160, 'x'), false));
  std::remove(name.c_str());
}

}  // namespace
}  // namespace zeb
