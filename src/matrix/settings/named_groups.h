// Groups of characters and taxa made of the named sets of files.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zeb {

/// What a file's name of a set becomes as the name of a group: letters, digits and "_.+-", a letter
/// or "_" in front, at most as long as names can be.
std::string group_name_of(std::string_view name);
/// The flagged elements become the group of that name, or the first one that isn't defined. Returns
/// its number; -1 where all groups are taken.
int make_character_group(const std::string& name, std::span<const std::uint8_t> flags);
int make_taxon_group(const std::string& name, std::span<const std::uint8_t> flags);

}  // namespace zeb
