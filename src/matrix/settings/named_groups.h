// Groups of characters and taxa made of the named sets of files.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

/// What a file's name of a set becomes as the name of a group: letters, digits and "_.+-", a letter
/// or "_" in front, at most as long as names can be.
std::string group_name_of(std::string_view name);
/// The flagged elements become the group of that name, or the first one that isn't defined. Returns
/// its number; -1 where all groups are taken.
int make_character_group(const std::string& name, std::span<const std::uint8_t> flags);
int make_taxon_group(const std::string& name, std::span<const std::uint8_t> flags);

/// A group apart from the data that it is of.
struct group_copy {
  int number = 0;
  std::string name;
  std::vector<std::uint8_t> members;  // a byte for each element
};
std::vector<group_copy> copy_taxon_groups();
std::vector<group_copy> copy_character_groups();
void put_back_taxon_group(const group_copy& group);
void put_back_character_group(const group_copy& group);

}  // namespace zeb
