// Operands of expressions as text: those that needn't be known, and strings that are compared.
#pragma once

namespace zeb {

/// Skips blanks, unexpanded, and the comments among them.
void skip_comments();

/// Passes over the operand that comes next, without expanding or evaluating anything in it.
void skip_operand();

/// "$name == other", "$name != other": true, and 1 or 0 for the comparison, where such comes next.
/// Numbers are compared as numbers. What isn't a comparison of strings is left to be read as a
/// number.
bool read_string_comparison(double* value);

}  // namespace zeb
