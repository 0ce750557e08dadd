// `$x`: the string held in a variable, or one of the fixed strings of the program, put before the
// rest of the input.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// Converts the reference behind "$", which has been read, with its suffixes.
void convert_string();

/// A fixed string ("taxon", "dataset"...): reads its own arguments. Registered by the rooms that
/// know them; false for unknown words.
using fixed_string_resolver = bool (*)(std::string_view word, std::string* text);
void add_fixed_strings(fixed_string_resolver resolver);

}  // namespace zeb
