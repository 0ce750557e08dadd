#include "trees/drawing/svg_tree.h"

#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>

#include "support/random_trees.h"
#include "support/xml_check.h"
#include "trees/drawing/branch_style.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/svg_text.h"

namespace {

using namespace zeb;

std::string drawn(const std::vector<std::int32_t>& tree, int ntax,
                  const std::vector<std::string>& labels, const std::vector<std::string>& texts,
                  const svg_options& options, const std::string& title) {
  const std::string name =
      ::testing::TempDir() + "zeb_svg_tree_test_" + std::to_string(getpid()) + ".svg";
  open_svg_file(name, title);
  draw_svg_tree(tree, ntax, 0, false, labels, texts, options);
  close_svg_file();
  std::ostringstream out;
  out << std::ifstream(name, std::ios::binary).rdbuf();
  std::remove(name.c_str());
  return out.str();
}

std::string hostile_text(std::mt19937& random) {
  constexpr std::string_view pieces[] = {"<",
                                         "&",
                                         "\"",
                                         "'",
                                         ">",
                                         "]]>",
                                         "<!--",
                                         "&amp;",
                                         "\x01",
                                         "\xff",
                                         "\xc3",
                                         "\xc3\xa9",
                                         "\xed\xa0\x80",
                                         "\\",
                                         "a name",
                                         "\x7f",
                                         "\xc0\x80",
                                         "\xf4\x90\x80\x80"};
  std::string out;
  for (unsigned i = random() % 8 + 1; i > 0; --i) out += pieces[random() % std::size(pieces)];
  return out;
}

TEST(svg_tree, is_well_formed_and_within_the_page_whatever_the_texts) {
  std::mt19937 random(99);
  for (int round = 0; round < 300; ++round) {
    const int ntax = 3 + static_cast<int>(random() % 20);
    const auto tree = zeb_test::random_tree(ntax, random, 0.2, 0.1);
    std::vector<std::string> labels, texts;
    for (int t = 0; t < ntax; ++t) labels.push_back(hostile_text(random));
    for (int n = 0; n < 2 * ntax - 1; ++n)
      texts.push_back(random() % 2 ? std::to_string(random() % 12) + "/" + hostile_text(random)
                                   : hostile_text(random));
    svg_options options;
    options.colors = random() % 2;
    options.separator = random() % 2 ? '\\' : 0;
    options.position = "abcd"[random() % 4];
    options.shift = static_cast<int>(random() % 400) - 200;
    options.legend_shift = static_cast<int>(random() % 400) - 200;
    options.legend_up = static_cast<int>(random() % 100) - 50;
    options.branch_length = static_cast<int>(random() % 60) - 1;
    options.caption = hostile_text(random);
    const std::string document = drawn(tree, ntax, labels, texts, options, hostile_text(random));
    std::string fault;
    const auto elements = zeb_test::read_xml(document, fault);
    ASSERT_EQ(fault, "") << document;
    std::istringstream box(elements.front().attribute("viewBox"));
    double left = 0, top = 0, width = 0, height = 0;
    box >> left >> top >> width >> height;
    for (const auto& e : elements) {
      if (e.name == "text") {
        ASSERT_GE(e.number("x"), left);
        ASSERT_LE(e.number("x") + 5, left + width);
        ASSERT_GE(e.number("y") - 8, top);
        ASSERT_LE(e.number("y"), top + height);
      } else if (e.name == "line") {
        ASSERT_GE(std::min(e.number("x1"), e.number("x2")), left);
        ASSERT_LE(std::max(e.number("x1"), e.number("x2")), left + width);
        ASSERT_LE(std::max(e.number("y1"), e.number("y2")), top + height);
      }
    }
  }
}

TEST(svg_tree, legends_of_fitting_trees_touch_no_other_legend) {
  std::mt19937 random(5);
  const int ntax = 25;
  const auto tree = zeb_test::random_tree(ntax, random, 0.1, 0);
  std::vector<std::string> labels(ntax, "name"), texts;
  for (int n = 0; n < 2 * ntax - 1; ++n) texts.push_back(std::string(random() % 12 + 1, 'W'));
  const svg_options options;
  std::string fault;
  struct box {
    double left, right, base;
  };
  std::vector<box> legends;
  for (const auto& e : zeb_test::read_xml(drawn(tree, ntax, labels, texts, options, ""), fault))
    if (e.name == "text" && !e.attribute("filter").empty())
      legends.push_back({e.number("x"), e.number("x") + svg_text_width(e.text, options.branch_font),
                         e.number("y")});
  ASSERT_EQ(static_cast<int>(legends.size()), tree[ntax]);
  for (const box& a : legends)
    for (const box& b : legends) {
      const bool apart = a.right < b.left || b.right < a.left;
      EXPECT_TRUE(&a == &b || apart || std::abs(a.base - b.base) >= options.branch_font);
    }
}

TEST(branch_style, reads_colors) {
  struct {
    const char *tag, *color, *text;
    bool dashed;
    double thickness, length;
  } const cases[] = {
      {"", "black", "", false, 0, -1},
      {"3", "cyan", "", false, 0, -1},
      {"-0/x/y", "red", "x/y", true, 0, -1},
      {"12/z", "gray", "z", false, 0, -1},
      {"N", "gray", "", false, 0, -1},
      {"(1,2,300)", "rgb(1,2,255)", "", false, 0, -1},
      {"(1,2,3,4:50)/t", "rgb(1,2,3)", "t", false, 4, 50},
      {"-(1, 2, 3)7", "rgb(1,2,3)", "", true, 7, -1},
      {"(1,2)", "gray", "", false, 0, -1},
      {"(1,2,x)", "gray", "", false, 0, -1},
      {"(1,2,3", "gray", "", false, 0, -1},
      {"/only text", "black", "only text", false, 0, -1},
  };
  for (const auto& c : cases) {
    const branch_style style = read_branch_style(c.tag);
    EXPECT_EQ(style.color, c.color) << c.tag;
    EXPECT_EQ(style.text, c.text) << c.tag;
    EXPECT_EQ(style.dashed, c.dashed) << c.tag;
    EXPECT_EQ(style.thickness, c.thickness) << c.tag;
    EXPECT_EQ(style.length, c.length) << c.tag;
  }
}

}  // namespace
