#include "search/search_report.h"

#include <algorithm>
#include <array>

#include "base/command.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "base/time_limit.h"
#include "console/log.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/settings.h"
#include "trees/notation/auto_save.h"
#include "trees/notation/tree_file.h"

namespace zeb {
namespace {

constexpr double seconds_between = 1.0;

constexpr std::array<const char*, 10> stage_names = {"WAG", "SPR",  "TBR",   "SECT", "DRIFT",
                                                     "RAT", "FUSE", "PINON", "HYB",  "REB"};

const char* header(int stage) {
  const bool iterations = stage == stage_drift || stage == stage_ratchet || stage == stage_rebuild;
  return iterations
             ? "Iter. Algor.     Tree        Score       Best Score   Time       Rearrangs.\n"
             : "Repl. Algor.     Tree        Score       Best Score   Time       Rearrangs.\n";
}

/// The search over the user's data: its best score is shown while a search inside it has others.
const search_context& search_of_user_data(const search_context& context) {
  const search_context* c = &context;
  while (c->own_data && c->outer) c = c->outer;
  return *c;
}

/// At the end, where a narrow screen cuts it off.
std::string hits_text(const search_display& shown) {
  if (shown.hits < 0) return {};
  return text_of("  Hits %i/%i, last gain %s ago", shown.hits, shown.hits_wanted,
                 time_text(wall_clock() - shown.last_gain).c_str());
}

/// Of the search itself.
status_mark mark_of(const search_context& context, double score) {
  const search_display& shown = context.shown;
  return {shown.stage,
          shown.replication,
          shown.current_tree,
          context.trees.ntrees,
          score,
          search_of_user_data(context).best_score,
          0};
}

std::string status_line(const search_context& context, const status_mark& mark) {
  const search_display& shown = context.shown;
  const std::string replication = mark.replication < 0 ? "---" : std::to_string(mark.replication);
  const char* stage = stage_names[static_cast<std::size_t>(mark.stage)];
  const std::string score_in_hand = score_text(context.data, mark.score);
  std::string line;
  if (mark.stage == stage_rebuild || shown.hide_total) {
    line = text_of("%-5s %-5s %6i           %-11s", replication.c_str(), stage, mark.current_tree,
                   score_in_hand.c_str());
  } else {
    line = text_of("%-5s %-5s %6i of %-6i %-11s", replication.c_str(), stage, mark.current_tree,
                   mark.trees, score_in_hand.c_str());
  }
  const std::string best = score_text(context.data, mark.best);
  const std::string time = time_text(command_seconds());
  if (mark.stage == stage_wagner && shown.build_percent >= 0) {
    const std::string percent = text_of("%i%%", shown.build_percent);
    line += text_of(" %-12s %-10s    %3s    ", best.c_str(), time.c_str(), percent.c_str());
  } else {
    rearrangement_counter all = context.rearrangements;
    all.add(mark.rearrangements);
    line +=
        text_of(" %-12s %-10s %-13s", best.c_str(), time.c_str(), rearrangements_text(all).c_str());
  }
  return line + hits_text(shown);
}

bool reports(const search_context& context) {
  return context.clock->report_on != 0 && !process.slave && !context.shown.silent;
}

void begin_lines(search_context& context) {
  if (!context.clock->header_pending) return;
  emit(header(context.shown.stage));
  context.clock->header_pending = false;
}

void record(search_context& context, const std::string& line) {
  context.clock->last_line = context.clock->last_recorded = wall_clock();
  clear_progress();
  emit(line, "\n");
  flush_log();
}

/// Ends the search when its time is over. True if it has just done so.
bool stop_by_time() {
  if (interrupted() || !time_is_out()) return false;
  stop_search(stop_reason::time);
  clear_progress();
  emit(end_of_time_text());
  return true;
}

/// Time, wishes and automatic saving are looked at once a second.
void poll(report_clock& clock, double now) {
  if (now - clock.last_poll < seconds_between) return;
  clock.last_poll = now;
  auto_save_if_due();
  if (!stop_by_time()) check_interrupt();
}

bool is_a_score(double score) { return score >= 0 && score < unknown_score; }

}  // namespace

void note_score(search_context& context, double score) {
  if (!is_a_score(score) || context.own_data) return;
  if (context.lowest_score < 0 || score < context.lowest_score) context.lowest_score = score;
}

std::string score_text(const search_data& data, double score) {
  if (score < 0) return "------  ";
  if (score >= unknown_score) return "(none)";
  if (data.implied_on || data.whole) return text_of("%.5f", score);
  if (data.has_continuous) return text_of("%.3f", score);
  return text_of("%lld", static_cast<long long>(score));
}

std::string rearrangements_text(const rearrangement_counter& count) {
  std::string digits = std::to_string(count.low);
  if (count.high > 0) {
    digits = std::to_string(count.high) +
             std::string(9 - std::min<std::size_t>(digits.size(), 9), '0') + digits;
  }
  return with_commas(digits);
}

void tell_rearrangements(const search_context& context, bool by_tbr) {
  emit("Total rearrangements examined: ", rearrangements_text(context.rearrangements), ".\n");
  if (context.constraints_in_force) emit("Constraints enforced during search.\n");
  if (context.data.whole) emit(approximation_in_words(context.landmark_errors));
  const int move_limit = context.rules.swap.move_limit;
  if (by_tbr && move_limit > 0) {
    emit(text_of("Note: TBR limited to moves within %i nodes of original position.\n", move_limit));
  }
}

std::string time_text(double seconds) {
  const long s = static_cast<long>(std::max(seconds, 0.0));
  return text_of("%02ld:%02ld:%02ld", s / 3600, s / 60 % 60, s % 60);
}

void begin_reports(search_context& context) {
  if (context.outer || context.shown.silent) return;
  report_clock& clock = *context.clock;
  clock.report_on = (settings.report ? 1 : 0) + settings.status_seconds +
                    settings.status_replications + settings.status_trees;
  clock.header_pending = true;
  clock.last_line = clock.last_recorded = wall_clock();
  // Where no search is to go on, this one ends at the first look.
  clock.last_poll = time_is_out() ? 0 : clock.last_line;
}

void report_status(search_context& context, double score, bool force) {
  if (context.shown.hide_score) score = no_score;
  note_score(context, score);
  report_clock& clock = *context.clock;
  const double now = wall_clock();
  // By its own clock: lines that come faster than once a second must not put it off.
  poll(clock, now);
  if (!reports(context)) return;
  begin_lines(context);
  if (settings.status_seconds > 0 && now - clock.last_recorded >= settings.status_seconds) {
    force = true;
  }
  if (!force) {
    if (now - clock.last_line < seconds_between || interrupted()) return;
  }
  if (is_a_score(score) && !context.own_data &&
      (context.best_score < 0 || score < context.best_score)) {
    context.best_score = score;
  }
  const std::string line = status_line(context, mark_of(context, score));
  if (force) return record(context, line);
  clock.last_line = now;
  show_progress(line, 0, 0);
}

status_mark mark_of_part(const search_context& part, double score) {
  status_mark mark = mark_of(part, score);
  mark.replication -= part.outer->shown.replication;
  mark.rearrangements = part.rearrangements.since(part.outer->rearrangements);
  return mark;
}

void record_status(search_context& context, const status_mark& mark) {
  note_score(context, mark.score);
  if (!reports(context)) return;
  begin_lines(context);
  status_mark shown = mark;
  shown.replication += context.shown.replication;
  for (const double best : {context.best_score, mark.score})
    if (is_a_score(best) && (shown.best < 0 || best < shown.best)) shown.best = best;
  record(context, status_line(context, shown));
}

void poll_search(search_context& context) { poll(*context.clock, wall_clock()); }

void look_for_stop() {
  auto_save_if_due();
  if (!stop_by_time()) check_interrupt();
}

void report_status_best(search_context& context) { report_status(context, no_score, false); }

}  // namespace zeb
