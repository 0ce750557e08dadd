// Lists of taxa and characters, as NEXUS writes them: numbers from 1, ranges, "." for the last,
// steps, "all", names.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "formats/nexus/nexus_file.h"

namespace zeb {

/// Taxon by name (case ignored) or, for text of digits only, by number from 1; -1 none.
int find_nexus_taxon(const std::string& text);
/// Character by name or number from 1, of those of the block where one is given; -1 none.
int find_nexus_character(const std::string& text, const nexus_characters* block = nullptr);

/// A list such as "1-5 7 10-. 3-30\3 all name" up to ",", "/" or ";" (left unread): flags by
/// element. Names are of elements or of sets; "uninf" and "constant" are sets of characters.
/// Numbers of characters count within `block` where one is given.
std::vector<std::uint8_t> read_nexus_list(nexus_file& file, nexus_list kind,
                                          const nexus_characters* block = nullptr);
/// The block of characters of that title; null, for all characters, in a file that has but one.
const nexus_characters* find_nexus_block(nexus_file& file, const std::string& title);

}  // namespace zeb
