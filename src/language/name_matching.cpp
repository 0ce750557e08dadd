#include "language/name_matching.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/console.h"
#include "console/progress.h"

namespace zeb {

matching_state matching;

namespace {

constexpr std::size_t longest_compared = 25;  // characters of a word and a candidate
constexpr int unreachable = 1 << 20;

int folded(char c) { return std::tolower(static_cast<unsigned char>(c)); }

std::string lowered(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = static_cast<char>(folded(c));
  return result;
}

// Costs of the best alignments that end in a match, a gap in `a`, a gap in `b`.
struct cell {
  int match = unreachable;
  int gap_in_a = unreachable;
  int gap_in_b = unreachable;
  int best() const { return std::min({match, gap_in_a, gap_in_b}); }
};

}  // namespace

void set_matching(int mode, double threshold) { matching = {mode, threshold}; }

// Affine gaps with opening and extension both 1 and mismatches at 1 are unit costs throughout, but
// the three cells are kept apart, so that other costs need no other recursion.
double similarity(std::string_view a, std::string_view b, double threshold) {
  const std::size_t shorter = std::min(a.size(), b.size());
  if (shorter == 0) return 0;
  if (a.size() == 1 && b.size() == 1) return folded(a[0]) == folded(b[0]) ? 1 : 0;
  const auto as_similarity = [shorter](int cost) {
    return std::max(0.0, 1 - static_cast<double>(cost) / static_cast<double>(shorter));
  };
  std::vector<cell> row(b.size() + 1);
  row[0].match = 0;
  for (std::size_t j = 1; j <= b.size(); ++j) row[j].gap_in_a = static_cast<int>(j);
  for (const char c : a) {
    cell diagonal = row[0];
    row[0] = {unreachable, unreachable, diagonal.best() + 1};
    int best_of_row = row[0].best();
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const cell above = row[j];
      row[j].match = diagonal.best() + (folded(c) == folded(b[j - 1]) ? 0 : 1);
      row[j].gap_in_a = row[j - 1].best() + 1;
      row[j].gap_in_b = above.best() + 1;
      diagonal = above;
      best_of_row = std::min(best_of_row, row[j].best());
    }
    if (threshold > 0 && as_similarity(best_of_row) < threshold) return 0;
  }
  return as_similarity(row.back().best());
}

bool ask_match(std::string_view word, std::string_view candidate, std::string_view noun) {
  if (word.empty() || process.background) return false;
  word = word.substr(0, longest_compared);
  candidate = candidate.substr(0, longest_compared);
  const std::string_view compared = candidate.substr(0, word.size());
  if (lowered(word) == lowered(compared)) return true;
  if (!user_present() ||
      similarity(word, compared, matching.match_threshold) < matching.match_threshold) {
    return false;
  }
  clear_progress();
  const std::string question = text_of(
      "\n\n\rDid you mean:\n\r%13s \"%s\"\n\r\ninstead of:\n\r              \"%s\" "
      "?\n\r(y/n/cancel)? ",
      std::string(noun).c_str(), std::string(candidate).c_str(), std::string(word).c_str());
  const int answer = ask_key(question, "ync\x1b");
  write_console("\r                 \r");
  if (answer == 'y') return true;
  if (answer == 'n') return false;
  error_end_f("Can't match %s name!", std::string(noun).c_str());
}

}  // namespace zeb
