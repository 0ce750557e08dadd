#include "console/progress.h"

#include <unistd.h>

#include <algorithm>
#include <string>

#include "base/message_text.h"
#include "base/process.h"
#include "base/text_columns.h"
#include "console/console.h"
#include "console/output.h"

namespace zeb {
namespace {

constexpr double seconds_between = 0.2;

struct progress_state {
  std::size_t shown_columns = 0;  // 0: nothing is on the screen
  double last_shown = 0;          // wall clock, seconds
  bool of_script = false;         // stays when the command ends
};
progress_state progress;

void draw(std::string_view label, double done, double total) {
  if (process.background || (output.output_mask & no_console) || output.cursor_column != 0) return;
  const double now = wall_clock();
  if (now - progress.last_shown < seconds_between) return;
  if (!isatty(STDERR_FILENO)) return;
  std::string text(label);
  if (total > 0) text += text_of(" %.0f%%", 100 * std::clamp(done / total, 0.0, 1.0));
  const auto width = static_cast<std::size_t>(std::max(output.screen_columns - 1, 1));
  const std::string shown(text_in_columns(text, 0, width));
  const auto columns = static_cast<std::size_t>(text_columns(shown));
  const std::size_t rest = progress.shown_columns > columns ? progress.shown_columns - columns : 0;
  write_terminal("\r" + shown + std::string(rest, ' '));
  progress.shown_columns = columns;
  progress.last_shown = now;
}

}  // namespace

void show_progress(std::string_view label, double done, double total) {
  if (!settings.report || !settings.progress_bars) return;
  draw(label, done, total);
  progress.of_script = false;
}

void show_progress_line(std::string_view label, double done, double total) {
  draw(label, done, total);
  progress.of_script = true;
}

void hide_progress() {
  if (progress.shown_columns == 0) return;
  write_terminal("\r" + std::string(progress.shown_columns, ' ') + "\r");
  progress.shown_columns = 0;
}

void end_progress_of_command() {
  if (!progress.of_script) clear_progress();
}

void clear_progress() {
  hide_progress();
  progress = {};
}

}  // namespace zeb
