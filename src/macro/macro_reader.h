// The character reader of the macro language: a filter on the plain reader that expands variables,
// strings, loop counters and run-file arguments.
#pragma once

namespace zeb {

/// Next character of the text with everything expanded. Stands in the place of `read_char` while
/// the language is on; that pointer is the one seam by which the readers of numbers and references,
/// on which this file is built, read expanded text themselves.
int macro_read_char();

}  // namespace zeb
