// `$x`: the string held in a variable, or one of the fixed strings of the program, put before the
// rest of the input.
#pragma once

namespace zeb {

/// Converts the reference after "$", which has been read, with its suffixes.
void convert_string();

}  // namespace zeb
