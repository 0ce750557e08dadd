// Random lists against a set that is kept in step while the text is made.
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <sstream>

#include "support/list_world.h"

namespace zeb_test {
namespace {

class random_list {
 public:
  random_list(unsigned seed, bool with_blocks) : random_(seed), with_blocks_(with_blocks) {}

  std::string text() const { return text_.str(); }
  const std::set<int>& members() const { return members_; }

  void add_item() {
    const int width = block_ ? 8 : elements;
    const int a = pick(width);
    const int b = pick(width);
    switch (pick(with_blocks_ ? 10 : 9)) {
      case 0:
        text_ << a;
        return put(a, a, 1);
      case 1: {
        const int step = 1 + pick(4);
        text_ << std::min(a, b) << "." << std::max(a, b);
        if (step > 1) text_ << "/" << step;
        return put(std::min(a, b), std::max(a, b), step);
      }
      case 2:
        text_ << a << ".";
        return put(a, width - 1, 1);
      case 3:
        text_ << "." << b;
        return put(0, b, 1);
      case 4: {
        const int step = 2 + pick(3);
        text_ << "./" << step;
        return put(0, width - 1, step);
      }
      case 5:
      case 6: {
        adding_ = pick(2) == 0;
        text_ << (adding_ ? "+" : "-");
        return;
      }
      case 7: {
        const char letter = static_cast<char>('a' + pick(5));
        text_ << (pick(2) ? "AB" : ":b") << letter;
        for (int e = 0; e < width; ++e) {
          if (element_names()[static_cast<std::size_t>(base() + e)][2] == letter) put(e, e, 1);
        }
        return;
      }
      case 8: {
        const int group = pick(3);
        static const char* const words[] = {"0", "THREES", "fo"};
        text_ << "{ " << words[group] << "}";
        for (int e = 0; e < width; ++e) {
          if ((base() + e) % (group + 2) == 0) put(e, e, 1);
        }
        return;
      }
      default:
        block_ = pick(4);
        text_ << "@" << (block_ == 2 && pick(2) ? "sec" : std::to_string(block_));
    }
  }

  void separate() { text_ << (pick(4) ? " " : "\n\t"); }

 private:
  int pick(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
  int base() const { return block_ ? (block_ - 1) * 8 : 0; }
  void put(int first, int last, int step) {
    for (int e = first; e <= last; e += step) {
      if (adding_) {
        members_.insert(base() + e);
      } else {
        members_.erase(base() + e);
      }
    }
  }

  std::mt19937 random_;
  bool with_blocks_;
  bool adding_ = true;
  int block_ = 0;
  std::ostringstream text_;
  std::set<int> members_;
};

TEST(list_parser, agrees_with_sets_on_random_lists) {
  for (unsigned seed = 0; seed < 4000; ++seed) {
    const bool characters = seed % 2 == 1;
    random_list made(seed, characters);
    for (unsigned i = 0; i <= seed % 7; ++i) {
      made.add_item();
      made.separate();
    }
    const auto marks = read_list_of(made.text() + ";", characters ? "character" : "taxon");
    ASSERT_TRUE(marks) << "seed " << seed << ": " << made.text();
    for (int e = 0; e < elements; ++e) {
      ASSERT_EQ((*marks)[static_cast<std::size_t>(e)], made.members().count(e))
          << "seed " << seed << ", element " << e << ": " << made.text();
    }
  }
}

}  // namespace
}  // namespace zeb_test
