// What the files of the list parser share.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "language/lists.h"

namespace zeb {

/// The kinds and what other rooms plugged in at start-up.
struct list_registry {
  std::vector<list_kind> kinds;
  descendant_marker mark_descendants = nullptr;
  fixed_list_source fixed_list = nullptr;
  /// Taxa by their whole name, for trees of thousands of names. What it says is checked against the
  /// name before it is believed, so that it needn't know when names change.
  std::unordered_map<std::string, int> taxon_index;
};
extern list_registry lists;

/// Elements in [first, end) for which the word is the beginning of the name, case ignored. Names in
/// a matrix have "_" for "+", "-" and "/": where the word as it stands matches nothing, its signs
/// are taken for "_". With approximate matching on, the user is asked before nothing is found.
std::vector<int> elements_named(const list_kind& kind, int first, int end, std::string_view word);
/// Elements whose name contains the text, case ignored.
std::vector<int> elements_containing(const list_kind& kind, int first, int end,
                                     std::string_view text);
/// Marks what "@T N" stands for, from behind the "@".
void read_descendants(std::span<std::uint8_t> marks);
/// Characters up to a blank or one of "&/;<=>\]", into a string.
std::string read_list_text();
/// The next character as it stands, left unread (blanks aren't skipped).
int peek_char();

}  // namespace zeb
