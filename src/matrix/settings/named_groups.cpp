#include "matrix/settings/named_groups.h"

#include <cctype>
#include <utility>

#include "base/indices.h"
#include "language/lexer.h"
#include "matrix/matrix.h"

namespace zeb {

namespace {

void store_group(int group, const std::string& name, std::span<const std::uint8_t> flags,
                 std::uint32_t& defined, std::vector<std::string>& names,
                 std::span<std::uint32_t> members) {
  const std::uint32_t bit = 1U << group;
  defined |= bit;
  names[at(group)] = name;
  for (std::size_t e = 0; e < members.size(); ++e)
    members[e] = flags[e] ? members[e] | bit : members[e] & ~bit;
}

std::vector<group_copy> copy_groups(std::uint32_t defined, const std::vector<std::string>& names,
                                    std::span<const std::uint32_t> members) {
  std::vector<group_copy> groups;
  for (int g = 0; g < matrix_state::group_count; ++g) {
    if (!(defined >> g & 1U)) continue;
    group_copy group{g, names[at(g)], {}};
    for (const std::uint32_t word : members) group.members.push_back(word >> g & 1U);
    groups.push_back(std::move(group));
  }
  return groups;
}

int make_group(const std::string& name, std::span<const std::uint8_t> flags, std::uint32_t& defined,
               std::vector<std::string>& names, std::span<std::uint32_t> members) {
  int group = -1;
  for (int g = matrix_state::group_count - 1; g >= 0; --g) {
    const bool is_defined = (defined >> g & 1U) != 0;
    if (is_defined && names[at(g)] == name) {
      group = g;
      break;
    }
    if (!is_defined) group = g;
  }
  if (group >= 0) store_group(group, name, flags, defined, names, members);
  return group;
}

}  // namespace

std::string group_name_of(std::string_view name) {
  std::string result;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    const bool fits = byte < 128 && (name_chars[byte] || std::isdigit(byte));
    result += fits ? c : '_';
  }
  if (result.empty() || !(std::isalpha(static_cast<unsigned char>(result[0])) || result[0] == '_'))
    result.insert(result.begin(), '_');
  return result.substr(0, at(lexer.name_limit) - 1);
}

int make_character_group(const std::string& name, std::span<const std::uint8_t> flags) {
  return make_group(name, flags, matrix.defined_character_groups, matrix.character_group_names,
                    matrix.character_groups);
}

int make_taxon_group(const std::string& name, std::span<const std::uint8_t> flags) {
  return make_group(name, flags, matrix.defined_taxon_groups, matrix.taxon_group_names,
                    matrix.taxon_groups);
}

std::vector<group_copy> copy_taxon_groups() {
  return copy_groups(matrix.defined_taxon_groups, matrix.taxon_group_names, matrix.taxon_groups);
}

std::vector<group_copy> copy_character_groups() {
  return copy_groups(matrix.defined_character_groups, matrix.character_group_names,
                     matrix.character_groups);
}

void put_back_taxon_group(const group_copy& group) {
  store_group(group.number, group.name, group.members, matrix.defined_taxon_groups,
              matrix.taxon_group_names, matrix.taxon_groups);
}

void put_back_character_group(const group_copy& group) {
  store_group(group.number, group.name, group.members, matrix.defined_character_groups,
              matrix.character_group_names, matrix.character_groups);
}

}  // namespace zeb
