// What a running search says, and where it listens: the progress line, scores and counts as text,
// the time-out, the user's wish to stop.
#pragma once

#include <cstdint>
#include <string>

#include "search/search_context.h"

namespace zeb {

/// A score of these data as all search output shows it: "------  " for none, "(none)" for one not
/// yet known.
std::string score_text(const search_data& data, double score);
/// With commas.
std::string rearrangements_text(const rearrangement_counter& count);
/// The closing lines on what a search did, and under which limits. `by_tbr`: it swapped by TBR.
void tell_rearrangements(const search_context& context, bool by_tbr);
/// Seconds as "h:mm:ss".
std::string time_text(double seconds);

/// A progress line with the score in hand (-1.0 for none), at most once a second unless `force`
/// is set: then the line is recorded in the output too. Looks at the time-out and for a wish to
/// stop, which set `interrupts.reason`; long loops call it between clips.
void report_status(search_context& context, double score, bool force);
/// What a line shows of a part of a search, in relation to the search around it.
struct status_mark {
  int stage = 0;
  int replication = 0;  // more than the search around it shows
  int current_tree = 0;
  int trees = 0;
  double score = no_score;
  double best = no_score;
  std::uint64_t rearrangements = 0;  // of the part
};
status_mark mark_of_part(const search_context& part, double score);
/// Records a line of a part of this search: now, or when what it found is taken.
void record_status(search_context& context, const status_mark& mark);
/// The same without a new score.
void report_status_best(search_context& context);
/// Looks at the time-out and for a wish to stop, and saves trees if that is due, at most once a
/// second.
void poll_search(search_context& context);
/// The same between searches, or while workers do them.
void look_for_stop();
/// The search begins to report, as the settings want it: the header comes before its next line. A
/// search inside another goes on with the lines of that one.
void begin_reports(search_context& context);
/// Takes a score of the search into the lowest score of the user's data.
void note_score(search_context& context, double score);

}  // namespace zeb
