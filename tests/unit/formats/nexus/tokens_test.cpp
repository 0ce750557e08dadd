// Pieces of NEXUS files, and names that must survive being written and read.
#include "formats/nexus/tokens.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "formats/written_words.h"
#include "language/input.h"
#include "support/program.h"

namespace zeb {
namespace {

/// A file with the text as the top frame of the input.
class typed_file {
 public:
  explicit typed_file(const std::string& text) {
    zeb_test::start_program();
    const int descriptor = mkstemp(name_);
    std::FILE* file = fdopen(descriptor, "wb");
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
    push_file(name_, {});
  }
  ~typed_file() {
    pop_all();
    std::remove(name_);
  }
  typed_file(const typed_file&) = delete;
  typed_file& operator=(const typed_file&) = delete;

 private:
  char name_[32] = "/tmp/zeb_tokens_XXXXXX";
};

std::vector<std::string> tokens_of(const std::string& text) {
  const typed_file file(text);
  nexus_reader in;
  std::vector<std::string> found;
  for (nexus_token t = in.token(); t.what != nexus_token::kind::end; t = in.token())
    found.push_back(t.text);
  return found;
}

using words = std::vector<std::string>;

TEST(nexus_tokens, are_words_and_punctuation) {
  EXPECT_EQ(tokens_of("begin data;\n dimensions ntax=5"),
            (words{"begin", "data", ";", "dimensions", "ntax", "=", "5"}));
  EXPECT_EQ(tokens_of("1-5 7\\3,a-b"), (words{"1-5", "7", "\\", "3", ",", "a-b"}));
  EXPECT_EQ(tokens_of(" \t\n"), words{});
}

TEST(nexus_tokens, part_at_comments) {
  EXPECT_EQ(tokens_of("a[x]b [one [two] ';] c"), (words{"a", "b", "c"}));
  EXPECT_EQ(tokens_of("[a]"), words{});
}

TEST(nexus_tokens, of_quoted_names_keep_what_stands_in_them) {
  EXPECT_EQ(tokens_of("'a b''c[d];' e"), (words{"a_b'c[d];", "e"}));
  const typed_file file("END 'end' 7");
  nexus_reader in;
  EXPECT_TRUE(in.peek_token().is("end"));
  EXPECT_FALSE(in.token().quoted);
  EXPECT_TRUE(in.token().quoted);
  EXPECT_FALSE(in.accept('7'));  // punctuation only
  EXPECT_EQ(in.value(), "7");
  EXPECT_EQ(in.next(), -1);
}

TEST(nexus_tokens, of_labels_are_what_was_written) {
  std::mt19937 random(7);
  for (int round = 0; round < 60; ++round) {
    std::string name;
    for (int n = 1 + static_cast<int>(random() % 12); n > 0; --n)
      name += "ab_.'\"[]();:,=*\\/-{}"[random() % 20];
    EXPECT_EQ(tokens_of(quoted_label(name) + ";"), (words{name, ";"}));
  }
}

TEST(nexus_tokens, whole_numbers_are_whole_and_within_range) {
  int value = 0;
  EXPECT_TRUE(whole_number("12", 1, 12, &value));
  EXPECT_EQ(value, 12);
  for (const char* text : {"", "13", "0", "-1", "1x", "1.5", "99999999999", " 1"})
    EXPECT_FALSE(whole_number(text, 1, 12, &value)) << text;
}

}  // namespace
}  // namespace zeb
