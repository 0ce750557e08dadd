#include "macro/loops.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "base/errors.h"
#include "base/interrupts.h"
#include "base/process.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "macro/macro_state.h"

namespace zeb {

namespace {

// The heap above `top` holds the text of the innermost loop and, above it, names only.
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

void leave_loop() {
  const loop_record& loop = macros.loops[macros.level];
  const bool named_within = macros.heap_top != loop.text_end + 1;
  --macros.level;
  if (named_within) {
    move_names_down(loop.saved_top);
  } else {
    macros.heap_top = loop.saved_top;
  }
}

}  // namespace

void check_loop_depth(int level) {
  if (level >= macros.max_loops)
    error_end("Maximum nesting for loops is", macros.max_loops, "loops");
}

void leave_loops_above(int level) {
  while (macros.level > level) leave_loop();
}

void advance_loop() {
  loop_record& loop = macros.loops[macros.level];
  loop.current += loop.step;
  const bool within = loop.step == 0  ? false
                      : loop.step > 0 ? loop.current <= loop.end
                                      : loop.current >= loop.end;
  if (within && loop.current >= 0) {
    if (macros.report)
      emitf("Loop %i ---> %i", macros.level - macros.frames.back().loop_base,
            static_cast<int>(loop.current));
    read_on_at(loop.text);
    // Rounds that neither print nor search would leave the user without a way to stop them.
    if (++macros.rounds % 128 == 0 && (settings.break_polling || process.background))
      check_interrupt();
    return;
  }
  read_on_at(loop.resume);
  leave_loop();
}

}  // namespace zeb
