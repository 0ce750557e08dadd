#include "console/text_buffer.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>
#include <string>

namespace zeb {
namespace {

std::vector<std::string> contents(const text_buffer& buffer) {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < buffer.lines(); ++i) lines.push_back(buffer.line(i));
  return lines;
}

TEST(text_buffer, keeps_lines_with_blanks_of_any_number) {
  for (const bool compression : {true, false}) {
    text_buffer buffer;
    ASSERT_TRUE(buffer.allot(50));
    buffer.set_compression(compression);
    std::vector<std::string> lines;
    for (const std::size_t blanks : {0, 1, 2, 3, 124, 125, 126, 127, 250, 251, 1000}) {
      lines.push_back("a" + std::string(blanks, ' ') + "b" + std::string(blanks, ' '));
      buffer.add(lines.back() + "\n");
    }
    buffer.add("in ");
    buffer.add(" pieces, unfinished");
    lines.emplace_back("in  pieces, unfinished");
    EXPECT_EQ(contents(buffer), lines);
    std::size_t bytes = 0;
    for (const std::string& line : lines) bytes += line.size() + 1;
    EXPECT_EQ(buffer.written_bytes(), bytes - 1);
  }
}

TEST(text_buffer, codes_of_its_own_become_blanks_and_carriage_returns_go) {
  text_buffer buffer;
  ASSERT_TRUE(buffer.allot(50));
  buffer.add(std::string_view("a\1\62b\0c\r\n", 8));
  EXPECT_EQ(buffer.line(0), "a 2b c");
}

// Whatever comes in, what is held is the newest lines, whole and in order.
TEST(text_buffer, holds_the_newest_lines) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::mt19937 random(seed);
    text_buffer buffer;
    ASSERT_TRUE(buffer.allot(50));
    buffer.set_compression(seed % 2 == 0);
    const int longest = seed % 3 == 0 ? 3 : 900;
    std::deque<std::string> all;
    for (int i = 0; i < 12000; ++i) {
      std::string line = std::to_string(i);
      while (random() % 4 != 0 && line.size() < static_cast<std::size_t>(longest)) {
        line.append(random() % 130, " x"[random() % 2]);
      }
      all.push_back(line);
      ASSERT_TRUE(buffer.add(line + "\n"));
      if (i % 500 != 0) continue;
      const std::size_t n = buffer.lines();
      ASSERT_LE(n, all.size());
      ASSERT_GT(n, 0u);
      for (std::size_t k = 0; k < n; ++k) {
        ASSERT_EQ(buffer.line(k), all[all.size() - n + k]) << "seed " << seed;
      }
    }
    // No more is dropped than must be: the table has 5,002 lines, the text 50,000 bytes.
    const bool table_full = buffer.lines() == 5002;
    EXPECT_TRUE(table_full || buffer.written_bytes() > 50000 - 1200) << "seed " << seed;
  }
}

TEST(text_buffer, a_line_longer_than_the_buffer_empties_it) {
  text_buffer buffer;
  ASSERT_TRUE(buffer.allot(50));
  buffer.add("before\n");
  bool kept = true;
  for (int i = 0; i < 60; ++i) kept &= buffer.add(std::string(1000, 'x'));
  EXPECT_FALSE(kept);
  EXPECT_TRUE(buffer.add("\nafter\n"));
  EXPECT_EQ(buffer.lines(), 2u);
  EXPECT_EQ(buffer.line(1), "after");
}

TEST(text_buffer, a_size_that_cannot_be_had_changes_nothing) {
  text_buffer buffer;
  ASSERT_TRUE(buffer.allot(10));
  EXPECT_EQ(buffer.kilobytes(), 50);
  buffer.add("kept\n");
  EXPECT_FALSE(buffer.allot(2147483647));
  EXPECT_EQ(buffer.line(0), "kept");
}

}  // namespace
}  // namespace zeb
