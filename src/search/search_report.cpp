#include "search/search_report.h"

#include <algorithm>
#include <array>

#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "trees/notation/tree_file.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr double seconds_between = 1.0;

constexpr std::array<const char*, 10> stage_names = {"WAG", "SPR",  "TBR",   "SECT", "DRIFT",
                                                     "RAT", "FUSE", "PINON", "HYB",  "REB"};

const char* header() {
  const int s = searching.stage;
  const bool iterations = s == stage_drift || s == stage_ratchet || s == stage_rebuild;
  return iterations
             ? "Iter. Algor.     Tree        Score       Best Score   Time       Rearrangs.\n"
             : "Repl. Algor.     Tree        Score       Best Score   Time       Rearrangs.\n";
}

std::string status_line(double score) {
  const std::string replication =
      searching.replication < 0 ? "---" : std::to_string(searching.replication);
  const char* stage = stage_names[static_cast<std::size_t>(searching.stage)];
  const std::string shown = score_text(score);
  std::string line;
  if (searching.stage == stage_rebuild || searching.hide_total) {
    line = text_of("%-5s %-5s %6i           %-11s", replication.c_str(), stage,
                   searching.current_tree, shown.c_str());
  } else {
    line = text_of("%-5s %-5s %6i of %-6i %-11s", replication.c_str(), stage,
                   searching.current_tree, store.ntrees, shown.c_str());
  }
  const std::string best = score_text(searching.best_score);
  const std::string time = time_text(wall_clock() - process.command_start);
  if (searching.stage == stage_wagner && searching.wagner_percent >= 0) {
    const std::string percent = text_of("%i%%", searching.wagner_percent);
    line += text_of(" %-12s %-10s    %3s    ", best.c_str(), time.c_str(), percent.c_str());
  } else {
    line +=
        text_of(" %-12s %-10s %-13s", best.c_str(), time.c_str(), rearrangements_text().c_str());
  }
  return line;
}

/// Time, wishes and automatic saving are looked at once a second.
void poll(double now) {
  if (now - searching.last_poll < seconds_between) return;
  searching.last_poll = now;
  auto_save_if_due();
  if (!check_timeout()) check_interrupt(1);
}

void note_lowest(double score) {
  if (score < 0 || score >= unknown_score || searching.in_reduced_data) return;
  if (searching.lowest_seen < 0 || score < searching.lowest_seen) searching.lowest_seen = score;
}

}  // namespace

std::string score_text(double score) {
  if (score < 0) return "------  ";
  note_lowest(score);
  if (score >= unknown_score) return "(none)";
  const search_data* data = current_search_data;
  if (data && (data->has_continuous || data->implied_on)) return text_of("%.5f", score);
  return text_of("%lld", static_cast<long long>(score));
}

std::string rearrangements_text() {
  std::string digits = std::to_string(searching.rearrangement_count.low);
  if (searching.rearrangement_count.high > 0) {
    digits = std::to_string(searching.rearrangement_count.high) +
             std::string(9 - std::min<std::size_t>(digits.size(), 9), '0') + digits;
  }
  return with_commas(digits);
}

std::string time_text(double seconds) {
  const long s = static_cast<long>(std::max(seconds, 0.0));
  return text_of("%02ld:%02ld:%02ld", s / 3600, s / 60 % 60, s % 60);
}

bool check_timeout() {
  if (interrupted() || !time_is_out()) return false;
  process.interrupt_state = 3;
  clear_progress();
  emit("Interrupting search (time is out!)\n");
  return true;
}

void begin_reports() {
  searching.report_on = (settings.report ? 1 : 0) + settings.status_seconds +
                        settings.status_replications + settings.status_trees;
  searching.header_pending = true;
  searching.last_poll = searching.last_report = searching.last_recorded = wall_clock();
}

void report_status(double score, bool force) {
  if (searching.hide_score) score = no_score;
  const double now = wall_clock();
  if (searching.report_on == 0 || process.slave || searching.silent) {
    note_lowest(score);
    poll(now);
    return;
  }
  if (searching.header_pending) {
    emit(header());
    searching.header_pending = false;
  }
  if (settings.status_seconds > 0 && now - searching.last_recorded >= settings.status_seconds) {
    force = true;
  }
  if (!force) {
    if (now - searching.last_report < seconds_between) return;
    poll(now);
    if (interrupted()) return;
  }
  if (score >= 0 && score < unknown_score && !searching.in_reduced_data &&
      (searching.best_score < 0 || score < searching.best_score)) {
    searching.best_score = score;
  }
  searching.last_report = now;
  const std::string line = status_line(score);
  if (!force) {
    show_progress(line, 0, 0);
    return;
  }
  searching.last_recorded = now;
  clear_progress();
  emit(line, "\n");
}

void report_status_best() { report_status(no_score, false); }

}  // namespace zeb
