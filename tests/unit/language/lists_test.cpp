// Where lists end, and what they refuse.
#include "language/lists.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <string>

#include "base/errors.h"
#include "language/input.h"
#include "language/taxon_reference.h"
#include "support/list_world.h"

namespace zeb_test {
namespace {

int size_of_list(std::string_view text, std::string_view kind, unsigned flags = 0,
                 int* rest = nullptr) {
  const auto marks = read_list_of(text, kind, flags, rest);
  return marks ? std::accumulate(marks->begin(), marks->end(), 0) : -1;
}

TEST(lists, end_unread_at_what_belongs_to_the_caller) {
  int rest = 0;
  for (const char end : {'&', '/', ';', '<', '=', '>', '\\', ']'}) {
    EXPECT_EQ(size_of_list(std::string("1 2 ") + end + "3;", "taxon", 0, &rest), 2);
    EXPECT_EQ(rest, end);
  }
  for (const char end : {'+', '-', '(', ')', '[', '*', '@'}) {
    const std::string text = std::string("1 2") + end + "3;";
    EXPECT_EQ(size_of_list(text, "character", zeb::list_ends_at_signs, &rest), 2);
    EXPECT_EQ(rest, end);
  }
  EXPECT_EQ(size_of_list("0.9/2;", "tree", 0, &rest), 5);
  EXPECT_EQ(rest, ';');
  EXPECT_EQ(size_of_list("0.9/2;", "tree", zeb::list_slash_ends, &rest), 10);
  EXPECT_EQ(rest, '/');
  EXPECT_EQ(size_of_list("0.9/ 2;", "tree", 0, &rest), 10);
  EXPECT_EQ(rest, '/');
}

TEST(lists, what_is_not_there_is_an_error) {
  for (const char* text : {"24;", "0.24;", "99999999999999999999999;", "Abz;", ":zz;", ":;", "{9};",
                           "{fives};", "{x;", "{0 ;", "\"0\";", "0.9/0;", "!;", "|;", "#;"}) {
    EXPECT_EQ(size_of_list(text, "taxon"), -1) << text;
  }
  for (const char* text : {"@4 0;", "@x 0;", "@ ;", "@1 8;", "@1 Abe9;"}) {
    EXPECT_EQ(size_of_list(text, "character"), -1) << text;
  }
  EXPECT_EQ(size_of_list("Aba;", "tree"), -1) << "trees have no names";
  EXPECT_EQ(size_of_list("@1 0;", "tree"), -1) << "nor nodes or blocks";
  EXPECT_EQ(size_of_list("{3};", "taxon"), 0) << "an undefined group selects nothing by number";
  EXPECT_EQ(size_of_list("", "taxon"), 0) << "ended input ends the list";
}

TEST(lists, one_taxon_by_reference) {
  const list_world world;
  const auto read = [](std::string_view text, std::vector<std::uint8_t>& marks) {
    zeb::push_string(text, "taxon");
    const int taxon = zeb::read_taxon(marks);
    zeb::pop_all();
    return taxon;
  };
  std::vector<std::uint8_t> marks(elements);
  EXPECT_EQ(read("12 ;", marks), 12);
  EXPECT_EQ(read("abA;", marks), 0) << "the first that begins so";
  EXPECT_EQ(read("aba10)", marks), 10) << "rather the one of that name";
  EXPECT_EQ(read("Abb1;", marks), 1) << "than Abb11";
  EXPECT_EQ(read(":c12;", marks), 12);
  EXPECT_EQ(read("Abb...", marks), -1);
  EXPECT_EQ(std::accumulate(marks.begin(), marks.end(), 0), 5);
  EXPECT_EQ(read("{threes};", marks), -1);
  EXPECT_EQ(std::accumulate(marks.begin(), marks.end(), 0), 8);
}

TEST(lists, survive_any_text) {
  constexpr std::string_view letters = "0123456789....//++--@@{{}}:Aba twos \n;*[(<\"!\x80";
  std::mt19937 random(20);
  for (int round = 0; round < 3000; ++round) {
    std::string text(random() % 30 + 1, ' ');
    for (char& c : text) c = letters[random() % letters.size()];
    text.front() = static_cast<char>(random() % 96);
    probe_list_parser(text);
  }
}

}  // namespace
}  // namespace zeb_test
