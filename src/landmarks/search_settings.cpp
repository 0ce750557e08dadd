#include "landmarks/search_settings.h"

#include <algorithm>
#include <thread>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "language/lexer.h"

namespace zeb {

landmark_search_settings landmark_searching;

namespace {

struct notes_given {
  bool threads = false;  // how many are used
};
notes_given notes;

double read_percent(const char* error) {
  double value = -1;
  if (!read_value(&value, nullptr) || value < 0 || value > 100) error_end(error);
  return value;
}

void read_margins(error_margin& margin) {
  margin.stages = 0;
  do {
    if (margin.stages == error_margin::most_stages) error_end("Can't specify more than 5 stages!");
    const double given = read_percent("Percentage error margin must be 0-100") / 100;
    if (margin.stages > 0 && given <= margin.margins[at(margin.stages - 1)])
      error_end("Stages of error margin must be increasing");
    margin.margins[at(margin.stages++)] = given;
  } while (accept_char('-'));
}

/// Stages whose beginning isn't given share what is left of the swap.
void spread_the_rest(error_margin& margin, int given) {
  const double last = given > 0 ? margin.from_percent[at(given - 1)] : 0;
  const int first_part = given > 0 ? 1 : 0;
  const int parts = margin.stages - given + first_part;
  for (int i = given; i < margin.stages; ++i)
    margin.from_percent[at(i)] = last + (100 - last) * (i - given + first_part) / parts;
}

void read_stages(error_margin& margin) {
  int given = 0;
  if (accept_char('/')) {
    do {
      if (given == margin.stages)
        error_end("Cannot specify more swap percentages than error margins");
      const double percent = read_percent("Swap percentage must be 0-100");
      if (given > 0 && percent <= margin.from_percent[at(given - 1)])
        error_end("Swap percentages must be increasing");
      margin.from_percent[at(given++)] = percent;
    } while (accept_char('-'));
  }
  spread_the_rest(margin, given);
}

void read_use_of_errors(error_margin& margin) {
  const bool smaller = accept_char('<');
  if (!smaller && !accept_char('>')) return;
  margin.by_errors = smaller ? error_margin::observed::smaller : error_margin::observed::larger;
  if (!read_value(&margin.deviations, nullptr) || margin.deviations < 0)
    error_end("Give number of standard deviations above the mean error");
}

}  // namespace

double error_margin::at_percent(double percent) const {
  double margin = 0;
  for (int i = 0; i < stages && percent >= from_percent[at(i)]; ++i) margin = margins[at(i)];
  return margin;
}

void set_landmark_searching(const landmark_search_settings& wanted) { landmark_searching = wanted; }

int recommended_landmark_threads() {
  const int processors = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
  return processors > 3 ? std::min(10, processors * 3 / 4) : processors;
}

int landmark_threads() {
  if (process.slave) return 1;
  return landmark_searching.threads > 0 ? landmark_searching.threads
                                        : recommended_landmark_threads();
}

void tell_landmark_threads() {
  if (notes.threads || process.slave || landmark_searching.threads > 0) return;
  notes.threads = true;
  emit(text_of(
      "Note: setting number of threads to %i (i.e. the recommended number\n"
      "for %i CPUs). This can be changed with \"lmark threads N\".\n",
      recommended_landmark_threads(), static_cast<int>(std::thread::hardware_concurrency())));
}

void read_error_margin(landmark_search_settings& settings) {
  error_margin wanted;
  read_margins(wanted);
  read_stages(wanted);
  read_use_of_errors(wanted);
  settings.margin = wanted;
}

void read_refinement(landmark_search_settings& settings) {
  const char* const form = "Give depth and rounds of fermat recalculations, as BxR";
  int depth = -1;
  int rounds = -1;
  if (!read_optional_int(&depth) || depth < 0 || !(accept_char('x') || accept_char('X')) ||
      !read_optional_int(&rounds) || rounds < 0)
    error_end(form);
  settings.refine_depth = depth;
  settings.refine_rounds = rounds;
  if (depth == 0 || rounds == 0) emit("Not doing fermat incremental recalculations\n");
}

void read_threads(landmark_search_settings& settings) {
  if (accept_char('*')) {
    settings.threads = 0;
    return;
  }
  int wanted = 0;
  if (!read_optional_int(&wanted) || wanted < 1) error_end("Give number of threads");
  if (wanted > most_landmark_threads)
    error_end_f("Sorry, cannot begin more than %i threads", most_landmark_threads);
  settings.threads = wanted;
}

std::string error_margin_in_words(const error_margin& margin) {
  const bool whole = margin.from_percent[0] == 0;
  std::string text =
      text_of("Error margin for landmark searches: %.2f", whole ? 100 * margin.margins[0] : 0.0);
  for (int i = whole ? 1 : 0; i < margin.stages; ++i)
    text += text_of(",\n      - %.2f from %i", 100 * margin.margins[at(i)],
                    static_cast<int>(margin.from_percent[at(i)]));
  if (margin.by_errors != error_margin::observed::ignored)
    text += text_of(",\n      or observed error + %g s.d. if %s", margin.deviations,
                    margin.by_errors == error_margin::observed::smaller ? "smaller" : "larger");
  return text;
}

}  // namespace zeb
