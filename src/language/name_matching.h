// Approximate matching of names: the alignment of two words, and the question to the user.
#pragma once

#include <string_view>

namespace zeb {

struct matching_state {
  int match_mode = 0;  // 0 exact, 1 from "help >", 2 from "help !"
  double match_threshold = 0.75;
};
extern matching_state matching;

void set_matching(int mode, double threshold);

/// Similarity of two words, 0 to 1: 1 - d / L, with d the cost of the best alignment (Needleman and
/// Wunsch 1970; mismatch, gap opening and extension all 1, case folded) and L the shorter length.
/// With a threshold above 0, may return 0 as soon as it can't be reached.
double similarity(std::string_view a, std::string_view b, double threshold = 0);
/// Asks whether `candidate` was meant by `word`. True without a question when they are the same;
/// false at once in the background or without a terminal. "c" and <esc> end the command.
bool ask_match(std::string_view word, std::string_view candidate, std::string_view noun);

}  // namespace zeb
