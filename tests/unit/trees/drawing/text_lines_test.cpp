#include "trees/drawing/text_lines.h"

#include <gtest/gtest.h>

namespace zeb {
namespace {

TEST(text_lines, breaks_at_separators_and_blanks_but_not_within_characters) {
  using texts = std::vector<std::string>;
  EXPECT_EQ(text_lines("a\\b", 0, 1), texts({"a\\b"}));
  EXPECT_EQ(text_lines("a\\\\b\\", '\\', 0), texts({"a", "", "b", ""}));
  EXPECT_EQ(text_lines("one two three", '\\', 7), texts({"one two", "three"}));
  EXPECT_EQ(text_lines("1,2,3,4", '\\', 4), texts({"1,2,", "3,4"}));
  EXPECT_EQ(text_lines("unbreakable", '\\', 5), texts({"unbre", "akabl", "e"}));
  // Wide characters that have no room stay whole.
  EXPECT_EQ(text_lines("\xe4\xb8\xad\xe6\x96\x87", '\\', 1),
            texts({"\xe4\xb8\xad", "\xe6\x96\x87"}));
}

}  // namespace
}  // namespace zeb
