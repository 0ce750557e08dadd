// Texts of files made fit for commands: characters of more than one byte, signs at the ends.
#include "language/fit_text.h"

#include <gtest/gtest.h>

namespace zeb {
namespace {

TEST(fit_name, leaves_letters_and_takes_signs_and_controls) {
  EXPECT_EQ(fit_name("Homo sapiens"), "Homo_sapiens");
  EXPECT_EQ(fit_name("&x&"), "_x&");
  EXPECT_EQ(fit_name("a.,b,c"), "a._b,c");
  EXPECT_EQ(fit_name("a;b'c\"d$e#f%g"), "a_b_c_d_e_f_g");
  EXPECT_EQ(fit_name("\xc3\xa9\xe6\x97\xa5"), "\xc3\xa9\xe6\x97\xa5");
  EXPECT_EQ(fit_name("e\xcc\x81"), "\xc3\xa9");  // composed
  // A C1 control as UTF-8 and as a byte, a line separator, a turn of direction.
  EXPECT_EQ(fit_name("a\xc2\x9b|\x9b|\xe2\x80\xa8|\xe2\x80\xae|\x7f"), "a_|_|_|_|_");
  EXPECT_EQ(fit_name("\xfc"), "\xfc");  // a letter of an older encoding
  EXPECT_EQ(fit_name("a-b/c+d"), "a_b_c_d");
  EXPECT_EQ(fit_name("a-b/c+d", named::character), "a-b/c+d");
}

TEST(fit_text, keeps_what_opens_no_expansion) {
  EXPECT_EQ(fit_text("95% sure, (n=5) \"so\" it's 5$ 'x' $y %1 #2"),
            "95% sure, (n=5) `so\" it`s 5$ `x' _y _1 _2");
  EXPECT_EQ(fit_text("0.95/12; a.,b"), "0.95/12, a. b");
  EXPECT_EQ(fit_text("a\n\x1b[2J\tb"), "a  [2J b");
}

TEST(without_controls, keeps_lines_and_signs) {
  EXPECT_EQ(without_controls("a;\n'b'\x1b\xc2\x85 $c"), "a;\n'b'   $c");
}

}  // namespace
}  // namespace zeb
