// A short run of what the fuzz target does at length: damaged matrices never harm.
#include <gtest/gtest.h>

#include <random>

#include "../support/matrix_probe.h"

namespace {

constexpr std::string_view seeds[] = {
    "'title' 4 4 a 01?[01] b (12)3-* c 0000 d 1111;",
    "9 5\n&[num /one]\na 01\nb 1[01]\nc 22\n&[dna gaps trimtail]\nb ACGT\nc RY--\nd A...\n"
    "&[dna]\na... ACG\ne TTT\n;",
    "6 4\n&[cont verbose]\na 0.5 1-2 100\nb ? * 3e1\nc 1 2 3\nd 4-3 .5 0\n&[num]\na 0\nb____ 1\nd "
    "1\n;\n&[prot nogaps]\na ACD\n;",
    "/6 5 3;",
    "4 6 &[dna match 0.5]\nab ACGT\ncd AAAA\nef CCCC\ngh TTTT\n;",
};
constexpr std::string_view pieces[] = {
    ";",       "&",  "[", "]", "(",    ")",    "...",       "____",          "\n",
    "\r\n",    " ",  "?", "-", "*",    "'",    "&[cont]\n", "&[dna gaps]\n", "[num /x]",
    "0.5-0.6", "99", "A", "V", "\x04", "\xff", "1e308",     "landmark 2d"};
constexpr const char* settings[] = {"nstates num 8 nogaps;", "nstates num 16;",
                                    "nstates num 32;",       "nstates dna;",
                                    "nstates dna gaps;",     "nstates prot gaps;"};

std::string damaged(std::mt19937& random) {
  std::string text(seeds[random() % std::size(seeds)]);
  for (auto n = 1 + random() % 3; n > 0; --n) {
    const std::size_t place = random() % (text.size() + 1);
    switch (random() % 4) {
      case 0:
        text.erase(place, random() % 6);
        break;
      case 1:
        text.insert(place, pieces[random() % std::size(pieces)]);
        break;
      case 2:
        if (place < text.size()) text[place] = static_cast<char>(random() % 256);
        break;
      default:
        text.insert(place, text.substr(random() % (text.size() + 1), random() % 12));
    }
  }
  return text;
}

TEST(matrix_reader, damaged_matrices_do_no_harm) {
  int read = 0;
  for (unsigned seed = 1; seed <= 3000; ++seed) {
    std::mt19937 random(seed);
    const std::string text = damaged(random);
    if (zeb_test::asks_for_much(text)) continue;
    SCOPED_TRACE("seed " + std::to_string(seed) + ": " + text);
    const bool wide = random() % 4 && (text.find("cont") + 1 || text.find("prot") + 1);
    const char* set = wide ? "nstates num 32 nogaps;" : settings[random() % std::size(settings)];
    read += zeb_test::probe_matrix_reader(text, set);
  }
  zeb_test::run_program("nstates nogaps num 16;");
  EXPECT_GT(read, 300);  // else the damage is too great to test anything
}

}  // namespace
