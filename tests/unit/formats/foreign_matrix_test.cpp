// Names of foreign files made fit, and their lines.
#include "formats/foreign_matrix.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "formats/labelled_trees.h"
#include "formats/text_lines.h"
#include "matrix/matrix_layout.h"
#include "support/program.h"
#include "support/text_session.h"

namespace zeb {
namespace {

TEST(foreign_taxa, have_names_that_fit_and_are_found_by_their_own) {
  const zeb_test::text_session session(4);
  foreign_taxa taxa(4, warning_of_long_names());
  const std::string long_name = std::string(30, 'x') + "\xc3\xa9\xc3\xa9";  // of 34 bytes
  EXPECT_EQ(taxa.add("Homo sapiens"), 0);
  EXPECT_EQ(taxa.add("a+b/c-d"), 1);
  EXPECT_EQ(taxa.add(long_name), 2);
  EXPECT_EQ(taxon_name(0), "Homo_sapiens");
  EXPECT_EQ(taxon_name(1), "a_b_c_d");
  EXPECT_EQ(taxon_name(2), std::string(30, 'x'));  // no half of a character
  EXPECT_EQ(taxa.find("Homo sapiens"), 0);
  EXPECT_EQ(taxa.find("a+b/c-d"), 1);
  EXPECT_EQ(taxa.find("Homo_sapiens"), -1);
  EXPECT_EQ(taxa.count(), 3);
  // Trees call the taxa as the file with the data did.
  foreign_names names;
  EXPECT_EQ(names.find("homo sapiens"), 0);
  EXPECT_EQ(names.find("a+b/c-d"), 1);
  EXPECT_EQ(names.find(long_name), 2);
  EXPECT_EQ(names.find("Pan"), -1);
}

TEST(text_lines, end_in_every_usual_way) {
  const std::string name = testing::TempDir() + "zeb_lines.txt";
  std::FILE* file = std::fopen(name.c_str(), "wb");
  ASSERT_NE(file, nullptr);
  std::fputs("\xef\xbb\xbfone\r\ntwo\n\rthree\r\rfour", file);
  std::fclose(file);
  input_file opened;
  ASSERT_TRUE(opened.open(name));
  const text_lines text(opened);
  const std::vector<std::string_view> wanted = {"one", "two", "", "three", "", "four"};
  EXPECT_EQ(text.lines(), wanted);
  std::remove(name.c_str());
}

}  // namespace
}  // namespace zeb
