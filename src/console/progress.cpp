#include "console/progress.h"

#include <unistd.h>

#include <algorithm>
#include <string>

#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/screen.h"
#include "console/settings.h"

namespace zeb {
namespace {

constexpr double seconds_between = 0.2;

struct progress_state {
  double last_shown = 0;   // wall clock, seconds
  bool of_script = false;  // stays when the command ends
};
progress_state progress;

void draw(std::string_view label, double done, double total) {
  if (process.background || process.batch || (output.output_mask & no_console) ||
      screen.cursor_column != 0)
    return;
  const double now = wall_clock();
  if (now - progress.last_shown < seconds_between) return;
  if (!isatty(STDERR_FILENO)) return;
  std::string text(label);
  if (total > 0) text += text_of(" %.0f%%", 100 * std::clamp(done / total, 0.0, 1.0));
  show_progress_text(text);
  progress.last_shown = now;
}

}  // namespace

void show_progress(std::string_view label, double done, double total) {
  if (!settings.report || !settings.progress_bars) return;
  draw(label, done, total);
  progress.of_script = false;
}

void show_script_progress(std::string_view label, double done, double total) {
  draw(label, done, total);
  progress.of_script = true;
}

void clear_command_progress() {
  if (!progress.of_script) clear_progress();
}

void clear_progress() {
  hide_progress();
  progress = {};
}

}  // namespace zeb
