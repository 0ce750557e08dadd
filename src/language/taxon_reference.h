// One taxon by number or name, as parenthetical trees refer to it.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace zeb {

/// Reference to one taxon, as in parenthetical trees: number, name (an exact match is preferred to
/// the first prefix), ":text". Returns its number; -1 where the reference stands for several, which
/// are then marked in `marks` (one byte per taxon, cleared first): "abc...", "{group}", "@T N".
int read_taxon(std::span<std::uint8_t> marks);

/// The same for a word already read, which is a number, a name or "abc...".
int taxon_of_word(const std::string& word, std::span<std::uint8_t> marks);

}  // namespace zeb
