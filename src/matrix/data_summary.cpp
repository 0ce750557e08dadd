#include "matrix/data_summary.h"

#include <algorithm>
#include <functional>
#include <span>
#include <sstream>
#include <string>
#include <utility>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/list_text.h"
#include "matrix/character_steps.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// Both lack the configuration, or have the same points.
bool have_same_landmarks(int a, int b) {
  return std::ranges::all_of(landmark_configurations(), [&](const landmark_configuration& one) {
    return !matrix.characters[at(one.character)].active ||
           std::ranges::equal(points_of(one, a), points_of(one, b));
  });
}

/// The rows of one cell width; what inactive characters hold is as if it were missing.
template <class word>
class row_pass {
 public:
  explicit row_pass(std::span<word* const> rows) : rows_(rows), telling_(at(matrix.nchar)) {
    for (int c = 0; c < matrix.nchar; ++c) {
      const bool active = matrix.characters[at(c)].active != 0;
      const silent_pattern pattern = active ? silent_pattern_of(c) : silent_pattern{};
      mask_.push_back(pattern.mask);
      silent_.push_back(pattern.silent);
      inactive_ += !active;
    }
  }

  data_summary run() {
    data_summary result;
    result.missing_of_taxon.resize(at(matrix.ntax));
    std::vector<std::pair<std::uint64_t, int>> hashes;
    for (int t = 0; t < matrix.ntax; ++t) {
      if (!matrix.taxon_active[at(t)]) continue;
      check_interrupt();
      std::uint64_t hash = 0;
      const int missing = read_row(t, &hash) - inactive_;
      result.missing_cells += missing;
      result.missing_of_taxon[at(t)] = missing;
      if (missing == matrix.nchar - inactive_) {
        result.empty_taxa.push_back(t);
      } else {
        hashes.emplace_back(hash, t);
      }
    }
    for (int c = 0; c < matrix.nchar; ++c) {
      if (matrix.characters[at(c)].active && telling_[at(c)] == 0)
        result.empty_characters.push_back(c);
    }
    result.same_rows = same_rows(std::move(hashes));
    return result;
  }

 private:
  bool is_silent(word states, std::size_t c) const { return (states & mask_[c]) == silent_[c]; }

  // Number of missing cells.
  int read_row(int taxon, std::uint64_t* hash) {
    constexpr std::uint64_t odd = 0x9e3779b97f4a7c15U;
    const word* const row = rows_[at(taxon)];
    int missing = 0;
    std::uint64_t sum = 0;
    for (std::size_t c = 0; c < mask_.size(); ++c) {
      const bool silent = is_silent(row[c], c);
      missing += silent;
      telling_[c] += !silent;
      sum = (sum ^ (silent ? 0 : std::uint64_t{row[c]} + 1)) * odd;
      sum ^= sum >> 32;
    }
    for (const landmark_configuration& one : landmark_configurations()) {
      const auto points = points_of(one, taxon);
      if (!matrix.characters[at(one.character)].active || all_missing(points)) continue;
      --missing;
      ++telling_[at(one.character)];
      for (const landmark_point& p : points)
        sum = (sum ^ std::hash<double>()(p.x) ^ (std::hash<double>()(p.y) << 1)) * odd;
    }
    *hash = sum;
    return missing;
  }

  bool have_same_cells(int a, int b) const {
    const word* const row = rows_[at(a)];
    const word* const other = rows_[at(b)];
    for (std::size_t c = 0; c < mask_.size(); ++c) {
      if (row[c] != other[c] && !(is_silent(row[c], c) && is_silent(other[c], c))) return false;
    }
    return have_same_landmarks(a, b);
  }

  // Sorted by the first taxon of each. Of different rows with one hash only those like the first
  // one are found.
  std::vector<std::vector<int>> same_rows(std::vector<std::pair<std::uint64_t, int>> hashes) const {
    std::sort(hashes.begin(), hashes.end());
    std::vector<std::vector<int>> result;
    for (std::size_t i = 0, next = 0; i < hashes.size(); i = next) {
      std::vector<int> group = {hashes[i].second};
      for (next = i + 1; next < hashes.size() && hashes[next].first == hashes[i].first; ++next) {
        if (have_same_cells(group.front(), hashes[next].second))
          group.push_back(hashes[next].second);
      }
      if (group.size() > 1) result.push_back(std::move(group));
    }
    std::sort(result.begin(), result.end());
    return result;
  }

  std::span<word* const> rows_;
  std::vector<std::uint32_t> mask_;
  std::vector<std::uint32_t> silent_;
  std::vector<int> telling_;  // by character: cells that say something
  int inactive_ = 0;          // characters
};

constexpr std::size_t most_named = 3;

// "a, b, c and 5 others".
std::string some_of(const std::vector<std::string>& items, const char* separator) {
  std::string text;
  for (std::size_t i = 0; i < std::min(items.size(), most_named); ++i) {
    text += (i ? separator : "") + items[i];
  }
  if (items.size() > most_named) {
    text += " and " + counted(static_cast<long long>(items.size() - most_named), "other", "others");
  }
  return text;
}

}  // namespace

data_summary summarise_data() {
  switch (matrix.cell_bytes) {
    case 1:
      return row_pass<std::uint8_t>(matrix.rows8).run();
    case 2:
      return row_pass<std::uint16_t>(matrix.rows16).run();
    default:
      return row_pass<std::uint32_t>(matrix.rows32).run();
  }
}

std::string some_taxa(const std::vector<int>& taxa, const char* separator) {
  std::vector<std::string> names;
  for (const int t : taxa) names.emplace_back(taxon_name(t));
  return some_of(names, separator);
}

std::string some_same_rows(const data_summary& summary) {
  std::vector<std::string> groups;
  for (const std::vector<int>& group : summary.same_rows) groups.push_back(some_taxa(group, " = "));
  return some_of(groups, ", ");
}

void note_what_spoils_searches() {
  const data_summary summary = summarise_data();
  std::string text;
  const auto add = [&text](const std::string& what) { text += (text.empty() ? "" : "; ") + what; };
  const auto add_count = [&add](std::size_t count, const char* one, const char* many,
                                const std::string& which) {
    if (count > 0) add(counted(static_cast<long long>(count), one, many) + " (" + which + ")");
  };
  add_count(summary.empty_taxa.size(), "taxon has no data", "taxa have no data",
            some_taxa(summary.empty_taxa));
  std::size_t repeated = 0;
  for (const std::vector<int>& group : summary.same_rows) repeated += group.size() - 1;
  add_count(repeated, "taxon has the same data as another one", "taxa have the same data as others",
            some_same_rows(summary));
  std::vector<std::string> empty;
  for (const int c : summary.empty_characters) empty.push_back(std::to_string(c));
  add_count(empty.size(), "character has no data", "characters have no data", some_of(empty, ", "));
  bool informative = false;
  for (int c = 0; c < matrix.nchar && !informative; ++c) informative = is_informative(c);
  if (!informative) add("no character is informative");
  if (text.empty()) return;
  std::istringstream in(text);
  std::vector<std::string> words;
  for (std::string word; in >> word;) words.push_back(word);
  constexpr std::string_view head = "Note:";
  emit(head, wrapped_words(words, head.size()), "\n");
}

}  // namespace zeb
