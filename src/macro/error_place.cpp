// Where a script stood when an error ended it.
#include <algorithm>
#include <string>

#include "base/errors.h"
#include "console/output.h"
#include "language/input.h"
#include "macro/flow.h"
#include "macro/macro_reader.h"
#include "macro/macro_state.h"

namespace zeb {

std::string loop_place() {
  if (macros.level < 0) return {};
  const loop_record& loop = macros.loops[macros.level];
  const char* position = outer_position();
  if (position < loop.text || position > loop.text_end) return {};
  const auto line = std::count(loop.text, position, '\n') + 1;
  return text_of("At line %i of loop %i (value: %i)", static_cast<int>(line),
                 macros.level - macros.frames.back().loop_base, static_cast<int>(loop.current));
}

void show_script_place() {
  const std::string loop = loop_place();
  if (!loop.empty()) report_line(loop);
  const input_frame& frame = top_frame();
  if (frame.stream && !frame.is_terminal && input.top > 0) {
    report_line("Error reading line", frame.line_number + 1, "of", frame.name);
  }
  if (loop.empty()) {
    show_text_place(start_of_shown_text(frame), outer_position());
  } else {
    show_text_place(macros.loops[macros.level].text, outer_position());
  }
}

}  // namespace zeb
