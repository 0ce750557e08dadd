#include "macro/loop_levels.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "base/process.h"
#include "language/input.h"
#include "macro/macro_reader.h"
#include "macro/macro_state.h"
#include "macro/script_files.h"

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

}  // namespace

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

void leave_loops_above(int level) {
  while (macros.level > level) leave_loop();
}

bool reset_macro_flow() {
  if (!settings.macros) return false;
  macros.assign_target = -1;
  reset_macro_reader();
  close_script_files();
  const bool behind_loop = macros.level > macros.frames.back().loop_base;
  for (std::size_t f = 0; f < macros.frames.size(); ++f) {
    macro_frame& frame = macros.frames[f];
    frame.pending_text.clear();
    const bool top = f + 1 == macros.frames.size();
    const int innermost = top ? macros.level : macros.frames[f + 1].loop_base;
    if (innermost > frame.loop_base) {
      char*& position = top ? input.read_position : input.frames[f + 1]->saved_position;
      position = const_cast<char*>(macros.loops[frame.loop_base + 1].resume);
    }
  }
  leave_loops_above(-1);
  for (macro_frame& frame : macros.frames) {
    frame.loop_base = -1;
    frame.heap_top = std::min(frame.heap_top, macros.heap_top);
  }
  return behind_loop;
}

}  // namespace zeb
