#include "console/settings.h"

#include <utility>

namespace zeb {

console_settings settings;

void set_break_polling(bool on) { settings.break_polling = on; }
void set_break_text(std::string text) { settings.break_text = std::move(text); }
void set_auto_view(bool on) { settings.auto_view = on; }

void set_status_intervals(int seconds, int replications, int trees) {
  settings.status_seconds = seconds;
  settings.status_replications = replications;
  settings.status_trees = trees;
}

void settle_for_background() {
  settings.report = false;
  settings.break_polling = false;
  settings.beep = false;
}

}  // namespace zeb
