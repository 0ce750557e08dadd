// What a running search says, and where it listens: the progress line, scores and counts as text,
// the time-out, the user's wish to stop.
#pragma once

#include <string>

#include "search/search_state.h"

namespace zeb {

/// A score as all search output shows it: "------  " for none, "(none)" for one not yet known.
std::string score_text(double score);
/// Rearrangements examined, with commas.
std::string rearrangements_text();
/// Seconds as "h:mm:ss".
std::string time_text(double seconds);

/// A progress line with the score in hand (-1.0 for none), at most once a second unless `force`
/// is set: then the line is recorded in the output too. Looks at the time-out and for a wish to
/// stop, which set `process.interrupt_state`; long loops call it between clips.
void report_status(double score, bool force);
/// The same without a new score.
void report_status_best();
/// Sets `report_on` from the settings and makes the next report begin with the header.
void begin_reports();

/// Ends the search when its time is over. True if it has just done so.
bool check_timeout();

}  // namespace zeb
