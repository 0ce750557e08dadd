// A diagram drawn with eight different line characters is read back into a tree.
#include "trees/drawing/text_diagram.h"

#include <gtest/gtest.h>

#include <map>
#include <numeric>
#include <random>
#include <set>

#include "support/random_trees.h"

namespace {

using namespace zeb;

constexpr line_characters readable_lines{'v', 'r', 'l', 'u', 't', '-', 'j', 'x'};

std::vector<std::string> number_labels(int ntax) {
  std::vector<std::string> labels;
  for (int t = 0; t < ntax; ++t) labels.push_back("<" + std::to_string(t) + ">");
  return labels;
}

/// The groups of a tree, by walking from each terminal to the root.
std::set<std::set<int>> groups_of_tree(const std::vector<std::int32_t>& tree, int ntax) {
  std::map<int, std::set<int>> below;
  for (int t = 0; t < ntax; ++t)
    if (tree[static_cast<std::size_t>(t)] != 0)
      for (int n = t; n != ntax;) {
        n = tree[static_cast<std::size_t>(n)];
        below[n].insert(t);
      }
  std::set<std::set<int>> out;
  for (const auto& [node, group] : below) out.insert(group);
  return out;
}

class diagram_reader {
 public:
  explicit diagram_reader(const std::vector<std::string>& lines) : lines_(lines) {}

  std::set<std::set<int>> read() {
    for (std::size_t row = 0; row < lines_.size(); ++row)
      if (at(row, 0) == '-') follow(row, 0);
    return groups_;
  }

 private:
  char at(std::size_t row, std::size_t column) const {
    return row < lines_.size() && column < lines_[row].size() ? lines_[row][column] : ' ';
  }

  /// Terminals that the branch at a place leads to. Digits on the way are the text of the branch.
  std::set<int> follow(std::size_t row, std::size_t column) {
    while (at(row, column) == '-' || std::isdigit(static_cast<unsigned char>(at(row, column))))
      ++column;
    if (at(row, column) == ' ') {
      EXPECT_EQ(at(row, column + 1), '<') << "branch into nothing in " << lines_[row];
      return {std::stoi(lines_[row].substr(column + 2))};
    }
    EXPECT_NE(std::string("tjx").find(at(row, column)), std::string::npos) << lines_[row];
    std::size_t top = row;
    while (at(top, column) != 'u') {
      EXPECT_NE(std::string("vrltjx").find(at(top, column)), std::string::npos);
      if (top-- == 0) return {};
    }
    std::set<int> group;
    for (std::size_t r = top;; ++r) {
      const char c = at(r, column);
      if (std::string("urljx").find(c) != std::string::npos) group.merge(follow(r, column + 1));
      if (c == 'l' || c == 'j') break;
      if (r > lines_.size()) return {};
    }
    groups_.insert(group);
    return group;
  }

  const std::vector<std::string>& lines_;
  std::set<std::set<int>> groups_;
};

TEST(text_diagram, can_be_read_back) {
  std::mt19937 random(3216);
  for (int round = 0; round < 600; ++round) {
    const int ntax = 3 + static_cast<int>(random() % 40);
    const auto tree = zeb_test::random_tree(ntax, random, static_cast<double>(random() % 60) / 100,
                                            static_cast<double>(random() % 30) / 100);
    diagram_style style;
    style.lines = readable_lines;
    style.columns = 600;
    style.symmetric = random() % 2;
    style.roomy = random() % 2;
    style.second_largest_first = random() % 2;
    style.outgroup = static_cast<int>(random() % static_cast<unsigned>(ntax));
    std::vector<std::string> texts;
    if (random() % 2)
      for (int n = 0; n < tree[static_cast<std::size_t>(ntax)]; ++n)
        texts.push_back(random() % 3 ? std::to_string(random() % 1000) : "");
    const auto lines = diagram_lines(tree, ntax, number_labels(ntax), texts, style);
    ASSERT_EQ(diagram_reader(lines).read(), groups_of_tree(tree, ntax)) << "round " << round;
  }
}

TEST(text_diagram, passes_hold_every_name_once_and_match_at_the_cuts) {
  std::mt19937 random(77);
  for (int round = 0; round < 200; ++round) {
    const int ntax = 30 + static_cast<int>(random() % 200);
    const auto tree = zeb_test::random_tree(ntax, random, 0.05, 0);
    diagram_style style;
    style.columns = 24 + static_cast<int>(random() % 40);
    std::vector<std::string> texts;
    for (int n = 0; n < 2 * ntax - 1; ++n) texts.push_back(std::to_string(n));
    const auto lines = diagram_lines(tree, ntax, number_labels(ntax), texts, style);
    std::string all;
    int cuts = 0;
    int goes_on = 0;
    for (const std::string& line : lines) {
      ASSERT_LE(static_cast<int>(line.size()), style.columns);
      cuts += line.ends_with(">>>");
      goes_on += line.starts_with(">>>");
      all += line + "\n";
    }
    ASSERT_EQ(cuts, goes_on);
    for (const std::string& label : number_labels(ntax)) {
      const std::size_t first = all.find(label);
      ASSERT_NE(first, std::string::npos) << label;
      ASSERT_EQ(all.find(label, first + 1), std::string::npos) << label;
    }
  }
}

TEST(text_diagram, draws_very_deep_trees) {
  constexpr int ntax = 100000;
  const std::vector<std::string> labels(ntax, "x");
  diagram_style style;
  for (const int outgroup : {0, ntax / 2, ntax - 1}) {
    style.outgroup = outgroup;
    const auto lines = diagram_lines(zeb_test::caterpillar(ntax), ntax, labels, {}, style);
    const auto names = std::accumulate(
        lines.begin(), lines.end(), 0L,
        [](long sum, const std::string& line) { return sum + line.ends_with(" x"); });
    // A name alone after a cut sign has no blank in front.
    EXPECT_NEAR(static_cast<double>(names), ntax, ntax * 0.25);
    EXPECT_LT(lines.size(), 3U * ntax);
  }
}

}  // namespace
