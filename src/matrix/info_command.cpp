// `info`: what the data in memory are, and which characters are informative for the active taxa.
#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "language/lists.h"
#include "matrix/character_steps.h"
#include "matrix/commands.h"
#include "matrix/data_summary.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// The active characters chosen, by what they can tell, and the inactive ones.
struct sorted_characters {
  std::vector<int> informative;
  std::vector<int> uninformative;
  std::vector<int> inactive;
};

sorted_characters sort_characters(const std::vector<std::uint8_t>& chosen) {
  recheck_steps();
  sorted_characters result;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!chosen[at(c)]) continue;
    if (!matrix.characters[at(c)].active) {
      result.inactive.push_back(c);
    } else {
      (is_informative(c) ? result.informative : result.uninformative).push_back(c);
    }
  }
  return result;
}

// "12 informative characters: 0 2.5", cut into lines.
void show_characters(const std::vector<int>& characters, const std::string& what) {
  std::string head =
      counted(static_cast<long long>(characters.size()), what + " character", what + " characters");
  if (!characters.empty()) head += ":";
  std::vector<std::string> labels;
  if (matrix.use_char_names) {
    for (const int c : characters) labels.push_back(character_label(c));
  } else {
    labels = list_items(matrix.nchar, [&characters](int c) {
      return std::binary_search(characters.begin(), characters.end(), c);
    });
  }
  emit(head, wrapped_words(labels, head.size()), "\n");
}

// ---- the summary ----

template <class predicate>
int characters_that(predicate holds) {
  return static_cast<int>(std::count_if(matrix.characters.begin(), matrix.characters.end(), holds));
}

int points_of_landmarks() {
  int points = 0;
  for (const landmark_configuration& one : matrix.landmarks) points += one.points;
  return points;
}

std::string joined(const std::vector<std::string>& parts) {
  return joined_list(std::vector<std::string_view>(parts.begin(), parts.end()));
}

void show_wrapped(const std::string& head, const std::string& text) {
  std::vector<std::string> words;
  std::istringstream in(text);
  for (std::string word; in >> word;) words.push_back(word);
  emit(head, wrapped_words(words, head.size()), "\n");
}

// "20 numeric (5 additive), 40 DNA (gaps are a state)".
void show_types() {
  struct named_type {
    data_type type;
    const char* name;
  };
  std::vector<std::string> parts;
  for (const auto& [type, name] : {named_type{numeric_data, "numeric"},
                                   {dna_data, "DNA"},
                                   {protein_data, "proteins"},
                                   {continuous_data, "continuous"},
                                   {landmark_data, "landmarks"}}) {
    const auto of_type = [wanted = type](const character_record& r) { return r.type == wanted; };
    const int count = characters_that(of_type);
    if (count == 0) continue;
    const auto that = [of_type](auto holds) {
      return characters_that(
          [of_type, holds](const character_record& r) { return of_type(r) && holds(r); });
    };
    std::vector<std::string> notes;
    const auto note = [&](int n, const char* words) {
      if (n == count) notes.emplace_back(words);
      if (n > 0 && n < count) notes.push_back(std::to_string(n) + " " + words);
    };
    note(that([](const character_record& r) { return r.additive && !r.is_continuous; }),
         "additive");
    note(that([](const character_record& r) { return r.is_sankoff != 0; }), "with step matrices");
    note(that([](const character_record& r) { return r.gap_is_state != 0; }),
         "with gaps as a state");
    note(that([](const character_record& r) { return r.log_scale != 0; }), "in logarithms");
    if (type == landmark_data) notes.push_back(counted(points_of_landmarks(), "point", "points"));
    parts.push_back(std::to_string(count) + " " + name);
    if (!notes.empty()) parts.back() += " (" + joined(notes) + ")";
  }
  show_wrapped("  Types:", joined(parts));
}

std::string share(std::int64_t part, std::int64_t whole) {
  return text_of("%.1f%%",
                 whole ? 100.0 * static_cast<double>(part) / static_cast<double>(whole) : 0.0);
}

std::int64_t gaps_among_missing() {
  std::int64_t gaps = 0;
  for (int t = 0; t < matrix.ntax && !matrix.gap_bits.empty(); ++t) {
    if (!matrix.taxon_active[at(t)]) continue;
    for (int c = 0; c < matrix.nchar; ++c) gaps += matrix.characters[at(c)].active && was_gap(t, c);
  }
  return gaps;
}

void show_missing(const data_summary& summary, int active_characters) {
  const std::int64_t cells = std::int64_t{active_taxa()} * active_characters;
  std::string line = "  Missing cells: " + std::to_string(summary.missing_cells) + " of " +
                     std::to_string(cells) + " (" + share(summary.missing_cells, cells) + ")";
  if (const std::int64_t gaps = gaps_among_missing(); gaps > 0) {
    line += ", " + counted(gaps, "gap", "gaps") + " among them";
  }
  emit(line, "\n");
  constexpr std::size_t shown = 3;
  std::vector<int> worst(at(matrix.ntax));
  for (int t = 0; t < matrix.ntax; ++t) worst[at(t)] = t;
  const auto& missing = summary.missing_of_taxon;
  std::partial_sort(worst.begin(), worst.begin() + shown, worst.end(), [&missing](int a, int b) {
    return missing[at(a)] != missing[at(b)] ? missing[at(a)] > missing[at(b)] : a < b;
  });
  std::vector<std::string> parts;
  for (std::size_t i = 0; i < shown && missing[at(worst[i])] > 0; ++i) {
    parts.push_back(std::string(taxon_name(worst[i])) + " " +
                    share(missing[at(worst[i])], active_characters));
  }
  if (!parts.empty()) show_wrapped("    most in", joined(parts));
}

// Settings that differ from those that new data have.
void show_changed_settings() {
  std::vector<std::string> parts;
  const auto part = [&parts](int count, const char* one, const char* many) {
    if (count > 0) parts.push_back(counted(count, one, many));
  };
  part(matrix.ntax - active_taxa(), "inactive taxon", "inactive taxa");
  part(characters_that([](const character_record& r) { return !r.active; }), "inactive character",
       "inactive characters");
  part(characters_that([](const character_record& r) { return r.weight != 1; }),
       "character with a weight other than 1", "characters with weights other than 1");
  part(characters_that([](const character_record& r) { return r.internal_steps != 0; }),
       "character with internal steps", "characters with internal steps");
  if (matrix.outgroup != 0) parts.push_back("outgroup " + std::string(taxon_name(matrix.outgroup)));
  if (!matrix.exact_min_steps) parts.emplace_back("heuristic minimum steps");
  if (!parts.empty()) show_wrapped("  Settings:", joined(parts));
}

void show_summary(const sorted_characters& sorted) {
  const data_summary summary = summarise_data();
  emit(counted(matrix.ntax, "taxon", "taxa"), ", ",
       counted(matrix.nchar, "character", "characters"),
       matrix.nblocks > 1 ? text_of(" in %i blocks", matrix.nblocks) : std::string(), "\n");
  show_types();
  const auto constant = std::count_if(sorted.uninformative.begin(), sorted.uninformative.end(),
                                      [](int c) { return lengths_over_active_taxa(c).most == 0; });
  emit("  Characters: ", constant, " constant",
       summary.empty_characters.empty()
           ? std::string()
           : text_of(" (%zu without data)", summary.empty_characters.size()),
       ", ", static_cast<std::ptrdiff_t>(sorted.uninformative.size()) - constant,
       " variable but uninformative, ", sorted.informative.size(), " informative\n");
  show_missing(summary, static_cast<int>(sorted.informative.size() + sorted.uninformative.size()));
  if (!summary.empty_taxa.empty())
    show_wrapped("  Taxa without data:", some_taxa(summary.empty_taxa));
  if (!summary.same_rows.empty())
    show_wrapped("  Taxa with the same data:", some_same_rows(summary));
  show_changed_settings();
}

}  // namespace

void info_command() {
  require_data("showing informative characters");
  no_timing();
  std::vector<std::uint8_t> chosen(at(matrix.nchar), 0);
  const bool given = read_list(list_plain, 0, matrix.nchar, "character", chosen);
  expect_end();
  if (!given) std::fill(chosen.begin(), chosen.end(), std::uint8_t{1});
  const sorted_characters sorted = sort_characters(chosen);
  if (!given) show_summary(sorted);
  show_characters(sorted.informative, "informative");
  show_characters(sorted.uninformative, "uninformative");
  if (!sorted.inactive.empty()) show_characters(sorted.inactive, "inactive");
}

}  // namespace zeb
