#include "matrix/data_in_words.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/message_text.h"
#include "matrix/costs/cost_text.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

template <class predicate>
int count_of(predicate holds) {
  return static_cast<int>(std::count_if(matrix.characters.begin(), matrix.characters.end(), holds));
}

struct group_of_characters {
  int count;
  std::string_view what;
};

std::string counts_in_words(std::initializer_list<group_of_characters> groups) {
  std::string text;
  for (const group_of_characters& group : groups) {
    if (group.count > 0) text += ", " + std::to_string(group.count).append(group.what);
  }
  return text;
}

std::string taxa_in_words() {
  std::vector<std::string> inactive;
  for (int t = 0; t < matrix.ntax; ++t) {
    if (!matrix.taxon_active[static_cast<std::size_t>(t)]) inactive.emplace_back(taxon_name(t));
  }
  std::string text = counted(matrix.ntax, "taxon", "taxa") + ", outgroup ";
  text += taxon_name(matrix.outgroup);
  if (inactive.empty()) return text;
  text += ", " + std::to_string(inactive.size()) + " inactive:";
  for (const std::string& name : inactive) text += " " + name;
  return text;
}

std::string characters_in_words() {
  const auto of_type = [](int type) {
    return count_of(
        [type](const character_record& c) { return c.type == type && !c.is_continuous; });
  };
  std::string text = counted(matrix.nchar, "character", "characters");
  text += counts_in_words(
      {{of_type(dna_data), " of DNA"},
       {of_type(protein_data), " of proteins"},
       {of_type(numeric_data), " numeric"},
       {count_of([](const character_record& c) { return c.is_continuous; }), " continuous"},
       {of_type(landmark_data), " of landmarks"},
       {count_of([](const character_record& c) { return c.additive && !c.is_continuous; }),
        " additive"},
       {count_of([](const character_record& c) { return c.is_sankoff != 0; }),
        " under step matrices"},
       {count_of([](const character_record& c) { return !c.active; }), " inactive"},
       {count_of([](const character_record& c) { return c.active && c.weight != 1; }),
        " with weights other than 1"},
       {count_of([](const character_record& c) { return c.gap_is_state; }),
        " with gaps as a state"}});
  return text;
}

}  // namespace

std::vector<std::string> data_in_words() {
  if (!matrix.present) return {};
  std::vector<std::string> lines;
  if (!matrix.file_name.empty()) lines.push_back("from " + matrix.file_name);
  if (!matrix.title.empty()) lines.push_back("title " + matrix.title);
  lines.push_back(taxa_in_words());
  lines.push_back(characters_in_words());
  for (std::string& line : costs_in_words()) lines.push_back(std::move(line));
  return lines;
}

}  // namespace zeb
