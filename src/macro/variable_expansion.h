// `'x'`, `'x[2-5]'` and `'/8.3 x'`: a variable's value as text, put before the rest of the input.
#pragma once

namespace zeb {

/// Expands the reference after the opening `quote`, which has been read, up to its closing one.
void expand_variable(char quote);

}  // namespace zeb
