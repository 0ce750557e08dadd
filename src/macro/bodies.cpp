#include "macro/bodies.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "base/command.h"
#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "macro/macro_state.h"

namespace zeb {

namespace {

body_record& body_at(int index) { return macros.bodies[static_cast<std::size_t>(index)]; }

// Bodies of the current file are those from here on.
int first_of_file() { return macros.frames.back().bodies_at_entry; }

bool ends_in_stop(body_kind kind) {
  return kind == body_kind::loop || kind == body_kind::moves || kind == body_kind::files;
}

// The heap above `top` holds the text of the innermost body and, above it, names only.
void move_names_down(char* top) {
  std::vector<int> moved;
  for (int i = 0; i < macros.named_count; ++i) {
    if (macros.names[macros.named[i]] >= top) moved.push_back(macros.named[i]);
  }
  std::sort(moved.begin(), moved.end(),
            [](int a, int b) { return macros.names[a] < macros.names[b]; });
  for (const int number : moved) {
    const std::size_t size = std::strlen(macros.names[number]) + 1;
    std::memmove(top, macros.names[number], size);
    macros.names[number] = top;
    top += size;
  }
  macros.heap_top = top;
}

void leave_body() {
  body_record body = std::move(macros.bodies.back());
  macros.bodies.pop_back();
  if (macros.heap_top != body.text_end + 1) {
    move_names_down(body.saved_top);
  } else {
    macros.heap_top = body.saved_top;
  }
}

// True where the loop has another round.
bool count_on(body_record& loop, int number) {
  loop.current += loop.step;
  const bool within = loop.step == 0  ? false
                      : loop.step > 0 ? loop.current <= loop.end
                                      : loop.current >= loop.end;
  if (!within || loop.current < 0) return false;
  if (macros.report) emitf("Loop %i ---> %i", number, static_cast<int>(loop.current));
  return true;
}

// Counted loops of the current file up to the body at `index`.
int loops_up_to(int index) {
  return static_cast<int>(
      std::count_if(macros.bodies.begin() + first_of_file(), macros.bodies.begin() + index + 1,
                    [](const body_record& body) { return body.kind == body_kind::loop; }));
}

bool has_another_round(body_record& body) {
  if (body.kind == body_kind::loop) return count_on(body, loops_up_to(open_bodies() - 1));
  return !body.items->ended() && body.items->next();
}

}  // namespace

int open_bodies() { return static_cast<int>(macros.bodies.size()); }

int open_bodies(body_kind kind) {
  return static_cast<int>(
      std::count_if(macros.bodies.begin(), macros.bodies.end(),
                    [kind](const body_record& body) { return body.kind == kind; }));
}

void check_loop_depth(int further) {
  const auto open = std::count_if(macros.bodies.begin(), macros.bodies.end(),
                                  [](const body_record& body) { return ends_in_stop(body.kind); });
  if (open + 1 + further > macros.max_loops)
    error_end("Maximum nesting for loops is", macros.max_loops, "loops");
}

const std::int64_t* loop_counter(int number) {
  for (int i = first_of_file(); i < open_bodies(); ++i) {
    if (body_at(i).kind == body_kind::loop && --number == 0) return &body_at(i).current;
  }
  return nullptr;
}

const std::int64_t* loop_counter(std::string_view name) {
  for (int i = open_bodies() - 1; i >= 0; --i) {
    if (body_at(i).name && name == body_at(i).name) return &body_at(i).current;
  }
  return nullptr;
}

void enter_body(body_record body) {
  macros.bodies.push_back(std::move(body));
  body_record& entered = macros.bodies.back();
  if (!entered.items || entered.items->next()) return read_on_at(entered.text);
  entered.items->over();
  leave_body();
}

void advance_body() {
  body_record& body = macros.bodies.back();
  // Rounds that neither print nor search would leave the user without a way to stop them.
  if (++macros.rounds % 128 == 0 && (settings.break_polling || process.background))
    check_interrupt();
  if (has_another_round(body)) {
    read_on_at(body.text);
    return;
  }
  if (body.items) body.items->over();
  read_on_at(body.resume);
  leave_body();
}

void leave_bodies(int count) {
  while (open_bodies() > count) {
    if (macros.bodies.back().items) macros.bodies.back().items->broken_off();
    leave_body();
  }
}

body_record* reach_if_open(body_kind kind) {
  for (int i = open_bodies() - 1; i >= first_of_file(); --i) {
    if (body_at(i).kind != kind) continue;
    leave_bodies(i + 1);
    return &body_at(i);
  }
  return nullptr;
}

body_record& reach_body(body_kind kind, std::string_view where) {
  body_record* const body = reach_if_open(kind);
  if (!body) error_end(command.command_name, "valid only within", where);
  return *body;
}

body_record& innermost_body() {
  if (open_bodies() <= first_of_file()) error_end(command.command_name, "valid only within loops");
  return macros.bodies.back();
}

std::string place_in_body(const char* position) {
  if (macros.bodies.empty()) return {};
  const body_record& body = macros.bodies.back();
  if (position < body.text || position > body.text_end) return {};
  const auto line = static_cast<int>(std::count(body.text, position, '\n')) + 1;
  if (body.items) return text_of("At line %i of %s", line, body.items->place().c_str());
  return text_of("At line %i of loop %i (value: %i)", line, loops_up_to(open_bodies() - 1),
                 static_cast<int>(body.current));
}

}  // namespace zeb
