#include "formats/nexus/named_sets.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "formats/nexus/element_lists.h"
#include "formats/nexus/set_heads.h"
#include "matrix/settings/named_groups.h"

namespace zeb {

namespace {

// Sets whose names are the same as names of groups are told apart by numbers.
std::string distinct_group_name(nexus_file& file, const std::string& set) {
  const std::size_t longest = at(matrix.name_length) - 1;
  if (set.size() > longest && !file.told_long_set) {
    file.told_long_set = true;
    warning("Names of sets over", longest, "letters will be truncated");
  }
  const std::string fit = group_name_of(set);
  std::string name = fit;
  for (int number = 2;; ++number) {
    const auto [owner, is_new] = file.set_of_group.emplace(name, lower_case(set));
    if (is_new || owner->second == lower_case(set)) return name;
    const std::string end = "_" + std::to_string(number);
    name = fit.substr(0, longest - end.size()) + end;
  }
}

void make_group(nexus_file& file, const std::string& set, nexus_list kind,
                const std::vector<std::uint8_t>& flags) {
  const std::string name = distinct_group_name(file, set);
  const int group =
      kind == nexus_list::taxa ? make_taxon_group(name, flags) : make_character_group(name, flags);
  std::vector<std::string>& told = group < 0                  ? file.sets_without_group
                                   : kind == nexus_list::taxa ? file.taxon_groups
                                                              : file.character_groups;
  if (std::find(told.begin(), told.end(), name) == told.end()) told.push_back(name);
}

std::vector<std::uint8_t> read_set(nexus_file& file, const set_head& head, nexus_list kind) {
  return head.vector ? read_flag_vector(file, head, kind) : read_nexus_list(file, kind, head.block);
}

// '1', '2', '3', 'n'; other words are kept as '?', which is none of these.
std::uint8_t position_of(const std::string& word) {
  return static_cast<std::uint8_t>(word.size() == 1 ? lower_case(word)[0] : '?');
}

std::string joined(const std::vector<std::string>& names) {
  return joined_list(std::vector<std::string_view>(names.begin(), names.end()));
}

}  // namespace

void read_named_set(nexus_file& file, nexus_list kind) {
  const set_head head = read_set_head(file);
  const std::vector<std::uint8_t> flags = read_set(file, head, kind);
  file.in.expect(';', "after a set");
  file.sets_of(kind)[lower_case(head.name)] = flags;
  make_group(file, head.name, kind, flags);
}

// "codonposset * name = N: 1-3, 1: 4-.\3, 2: 5-.\3, 3: 6-.\3;"
void read_codon_positions(nexus_file& file) {
  const set_head head = read_set_head(file);
  if (file.codons_in_force && !head.in_force) return file.in.skip_rest();
  file.codons_in_force = file.codons_in_force || head.in_force;
  file.codon_positions.resize(at(matrix.nchar), 0);
  const element_range range = range_of(head, nexus_list::characters);
  std::fill(file.codon_positions.begin() + range.first, file.codon_positions.begin() + range.end,
            std::uint8_t{0});
  if (head.vector) {
    read_value_vector(file, head, [&file](int character, const std::string& position) {
      file.codon_positions[at(character)] = position_of(position);
    });
  }
  while (!head.vector && !file.in.accept(';')) {
    if (file.in.accept(',')) continue;
    const std::uint8_t position = position_of(file.in.token().text);
    file.in.expect(':', "after a position in codons");
    const std::vector<std::uint8_t> flags =
        read_nexus_list(file, nexus_list::characters, head.block);
    for (std::size_t c = 0; c < flags.size(); ++c)
      if (flags[c]) file.codon_positions[c] = position;
  }
  constexpr std::pair<char, const char*> groups[] = {
      {'1', "codon_1"}, {'2', "codon_2"}, {'3', "codon_3"}, {'n', "noncoding"}};
  for (const auto& [kind, name] : groups) {
    std::vector<std::uint8_t> flags;
    for (const std::uint8_t position : file.codon_positions) {
      flags.push_back(position == static_cast<std::uint8_t>(kind));
    }
    if (std::find(flags.begin(), flags.end(), 1) != flags.end())
      make_group(file, name, nexus_list::characters, flags);
  }
}

void tell_groups(nexus_file& file) {
  if (!file.character_groups.empty())
    report_line("Groups of characters from sets:", joined(file.character_groups));
  if (!file.taxon_groups.empty())
    report_line("Groups of taxa from sets:", joined(file.taxon_groups));
  if (!file.sets_without_group.empty()) {
    warning(
        text_of("There can be only %i groups; these sets became none:", matrix_state::group_count),
        joined(file.sets_without_group));
  }
  file.character_groups.clear();
  file.taxon_groups.clear();
  file.sets_without_group.clear();
}

}  // namespace zeb
