#include "base/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace zeb {
namespace {

TEST(number_text_test, takes_the_number_and_leaves_the_rest) {
  std::string_view text = "+2.5e-1,-3 x";
  EXPECT_EQ(take_real(text), 0.25);
  EXPECT_EQ(text, ",-3 x");
  EXPECT_FALSE(take_real(text));
  EXPECT_EQ(text, ",-3 x");
  text.remove_prefix(1);
  EXPECT_EQ(take_whole<int>(text), -3);
  EXPECT_EQ(text, " x");
  text = "12e";  // an exponent needs digits
  EXPECT_EQ(take_real(text), 12);
  EXPECT_EQ(text, "e");
}

TEST(number_text_test, reads_whole_texts_only) {
  EXPECT_EQ(real_of("-.5"), -0.5);
  EXPECT_EQ(real_of("7."), 7);
  EXPECT_TRUE(std::isnan(real_of("nan").value_or(0)));
  for (const char* text : {"", " 1", "1 ", "1,5", "+-1", "+", "-", ".", "e5", "0x10"})
    EXPECT_FALSE(real_of(text)) << text;
  for (const char* text : {"", "+1", "1.0", "2147483648", "1 "})
    EXPECT_FALSE(whole_of<int>(text)) << text;
  EXPECT_FALSE(whole_of<unsigned>("-1"));
}

TEST(number_text_test, tells_too_large_from_too_small) {
  const std::string zeros(400, '0');
  for (const std::string& text :
       {"1" + zeros, std::string("1e400"), std::string("0.001e999999999999"), "1" + zeros + "e-10",
        "0." + zeros + "1e4000"})
    EXPECT_EQ(real_of(text), INFINITY) << text;
  for (const std::string& text : {"0." + zeros + "1", std::string("1e-400"),
                                  std::string("100e-99999999999"), "1" + zeros + "e-4000"})
    EXPECT_EQ(real_of(text), 0) << text;
  EXPECT_EQ(real_of("-1e400"), -INFINITY);
}

}  // namespace
}  // namespace zeb
