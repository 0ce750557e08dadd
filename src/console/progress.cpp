#include "console/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
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

bool is_visible() {
  return !process.background && !process.batch && (output.output_mask & no_console) == 0 &&
         screen.cursor_column == 0 && isatty(STDERR_FILENO) != 0;
}

void draw(std::string_view label, double done, double total) {
  const double now = wall_clock();
  if (now - progress.last_shown < seconds_between || !is_visible()) return;
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

bool show_progress_table(std::span<const std::string> rows) {
  const char* const terminal = std::getenv("TERM");  // NOLINT(concurrency-mt-unsafe)
  const bool moves = terminal && *terminal && std::string_view(terminal) != "dumb";
  if (!moves || static_cast<int>(rows.size()) > screen.rows - 2) return false;
  if (settings.report && settings.progress_bars && is_visible()) show_progress_rows(rows);
  return true;
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
