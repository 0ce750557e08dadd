// The bodies that are open, one within the other; the innermost is the one being read.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "macro/body_record.h"

namespace zeb {

/// How many are open, those of the files that called this one too.
int open_bodies();
/// The same, of one kind.
int open_bodies(body_kind kind);
/// Error where a body that ends in `stop` would be nested too deep with `further` more within it.
void check_loop_depth(int further);

/// The counter of a loop: the one of that number among those of the current file, 1 the outermost;
/// the innermost of that name. Null where there is no such loop.
const std::int64_t* loop_counter(int number);
const std::int64_t* loop_counter(std::string_view name);

/// Opens a body whose text has been captured: the reader goes on at its start. A body whose first
/// item doesn't come is dropped.
void enter_body(body_record body);
/// Begins the next round of the innermost body, or leaves it.
void advance_body();
/// Closes all bodies but the first `count`, from the innermost outward; the reader's position is
/// left alone. Names given to variables within a body move down into the place of its text.
void leave_bodies(int count);

/// The innermost body of that kind of the current file, after those within it are closed; null
/// without one.
body_record* reach_if_open(body_kind kind);
/// The same, with the error "valid only within" and `where` if there is none.
body_record& reach_body(body_kind kind, std::string_view where);
/// The innermost body of the current file, "valid only within loops" without one.
body_record& innermost_body();

/// "At line 3 of loop 1 (value: 7)" for the innermost body that is being read; empty outside.
std::string place_in_body(const char* position);

}  // namespace zeb
