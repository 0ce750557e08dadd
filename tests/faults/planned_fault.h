// What goes wrong in the program for tests, as the environment says:
//
//   ZEB_FAULT=<kind>:<number>:<manner>   the call of this number of the kind goes wrong
//   ZEB_FAULT_MARK=<file>                made when it happens
//
// Kinds of calls of the system: open, read, write, sync, close, rename, remove, truncate, or any of
// these. Manners: fail, short (of a write a part is written first), kill.
// Kinds of allocations: new (of the system), arena. Manners: fail (that one), full (of the system
// only: from then on there is no more memory than is in use, until the counting begins anew).
//
// The opening of a file on whose name ends in "begin.faults" begins the counting, of one that ends
// in "end.faults" ends it.
#pragma once

#include <string_view>

/// Begins or ends the counting where the name says so: false for other names.
bool is_fault_signal(std::string_view name);
/// Does this call of the system go wrong? If so, `errno` is set.
bool fault_comes(std::string_view kind);
/// Is it a short write, which the next one follows by failing?
bool is_short_write();
bool write_fails_now();
