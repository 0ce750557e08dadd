// What NEXUS sets have in common: the head, "* name (vector, characters = title) =", and values
// given one by one.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "formats/nexus/nexus_file.h"

namespace zeb {

/// The head of "typeset * name (format) = ...".
struct set_head {
  std::string name;
  bool in_force = false;                    // "*": other sets are only defined
  bool vector = false;                      // one value a character, instead of lists
  const nexus_characters* block = nullptr;  // "(characters = title)"; null: all
};

/// Up to the "=", which is consumed.
set_head read_set_head(nexus_file& file);

struct element_range {
  int first;
  int end;
};
/// The elements that a set of this head is of.
element_range range_of(const set_head& head, nexus_list kind);

/// "1 0 0 1" or "1001": an element that has 1 is in the set.
std::vector<std::uint8_t> read_flag_vector(nexus_file& file, const set_head& head, nexus_list kind);
/// "1 2 1;": a value for each character.
void read_value_vector(nexus_file& file, const set_head& head,
                       const std::function<void(int character, const std::string& value)>& use);

}  // namespace zeb
