// Reads a matrix in the program's own format from the input.
#pragma once

namespace zeb {

/// Reads title, dimensions, rows and the closing ";", and makes the matrix current. Errors end the
/// command and leave no data.
void read_matrix();

/// Warns that the present data will be replaced by those of `source`. A user who declines ends the
/// command.
void warn_of_replacement(const char* source);

/// Cuts a matrix being read to the taxa and characters that were found, with a warning for each of
/// the two that are fewer than was said; `reset` goes into it: "re-set to". Before `finish_matrix`.
void cut_to_what_was_read(int ntax, int nchar, const char* reset);

/// The line on a matrix that was read, with `report` on; and its types if they are mixed.
void tell_what_was_read();

}  // namespace zeb
