#include "supports/resampling/resample_request.h"

#include <algorithm>
#include <cctype>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/command_strings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "supports/commands.h"
#include "supports/resampling/landmark_sampling.h"
#include "supports/search_text.h"
#include "trees/tree_store.h"

namespace zeb {

resample_settings resampling;

namespace {

constexpr char wrong_symbol[] = "Unexpected symbol found on resampling options: %c";
constexpr auto settings_of = &resample_request::settings;
constexpr option_range from_0 = {0, option_range{}.highest};

template <sampling_scheme scheme>
constexpr auto scheme_option(std::string_view keyword) {
  return choice<settings_of, &resample_settings::scheme>(keyword, static_cast<double>(scheme));
}

void begin_sibyl(resample_request& request) {
  if (landmarks_are_active())
    error_end("Sorry, cannot run \"sibyl\" option with landmark characters");
  if (request.words > 1) error_end("\"Sibyl\" option must be the first option to \"resample\"");
  if (store.ntrees == 0) error_end("\"Sibyl\" option requires pre-existing trees");
  request.sibyl = true;
}
void refuse_errcount(resample_request&) {
  error_end("\"Errcount\" option can be used with \"sibyl\" only");
}

constexpr auto replications_option =
    number<settings_of, &resample_settings::replications>(
        "replications", {1, 10'000'000}, "Must specify a number of repls. greater than zero")
        .help("pseudoreplicates to do");
constexpr auto allow_option = toggle<settings_of, &resample_settings::allow>("allow").help(
    "almost all commands may stand in the search, not only those that search and choose trees");

constexpr command_options rows = {
    scheme_option<sampling_scheme::symmetric>("sym").help(
        "symmetric resampling: weights go up or down, with the same probability"),
    scheme_option<sampling_scheme::jackknife>("jak").help("jackknife: characters are deleted"),
    scheme_option<sampling_scheme::bootstrap>("boot").help(
        "bootstrap: as many characters are drawn as there are, with replacement"),
    scheme_option<sampling_scheme::poisson>("poisson").help(
        "bootstrap that draws each character by itself, from a Poisson distribution"),
    replications_option,
    number<&resample_request::percent>("probability", from_0, "Must specify probability")
        .help("per cent of changes up, and of changes down (33 by default); of deletions for the "
              "jackknife (36)"),
    number<settings_of, &resample_settings::cut>("cut", {0, 100},
                                                 "Must specify a cutoff, 0 <= cut <= 100")
        .help("show groups whose support is above N"),
    toggle<&resample_request::gc>("gc").help("summarise by frequency differences"),
    toggle<&resample_request::frequency>("frequency").help("summarise by frequencies"),
    toggle<&resample_request::slope>("slope").help(
        "summarise by how fast the groups of a tree go as more characters change"),
    toggle<settings_of, &resample_settings::savetrees>("savetrees")
        .help("keep the consensus of each replicate as a tree, in group \"resampled_trees\""),
    toggle<settings_of, &resample_settings::zero_weights>("zerowt").help(
        "weights that go down become 0; else all are doubled, and those halved"),
    number<settings_of, &resample_settings::softboot>("softboot", {0, 100},
                                                      "Bootstrap softening must be 0-100")
        .help("milder bootstrap, from more draws"),
    number<&resample_request::from>("from", from_0, "Must specify number of reference tree")
        .help("show the supports of the groups of tree N, for this run"),
    form<refuse_errcount>("errcount").help("(with \"sibyl\" only)"),
    allow_option,
    form<begin_sibyl>("sibyl").help("as the first option: what reduced data foretell"),
    toggle<settings_of, &resample_settings::savesummary>("summarytree")
        .help("keep the trees shown as the last trees, with their supports as labels"),
    toggle<settings_of, &resample_settings::table>("table").help(
        "supports as a table, too, by node of the tree shown"),
};

constexpr command_options sibyl_rows = {
    replications_option,
    number<settings_of, &resample_settings::sibyl_percent>("probability", {1, 99},
                                                           "Must specify probability, 1-99")
        .help("per cent of the characters that are deleted"),
    number<&resample_request::errcount>("errcount", from_0, "Must specify number of reference tree")
        .help("count groups that tree N lacks, and those of tree N that aren't found"),
    allow_option,
};

constexpr option_table sibyl_options =
    sibyl_rows.table("resample", {.unknown = "Unidentified string in sibyl options: %s"});

resample_request request_of(const resample_settings& settings) {
  resample_request request;
  request.settings = settings;
  request.gc = settings.gc;
  request.frequency = settings.frequency;
  request.slope = settings.slope;
  return request;
}

/// Naming a summary drops those that aren't named.
std::string summaries_in_words(const resample_settings& settings) {
  const resample_settings standard;
  if (settings.gc == standard.gc && settings.frequency == standard.frequency &&
      settings.slope == standard.slope)
    return {};
  std::string text;
  if (settings.gc) text += " gc";
  if (settings.frequency) text += " frequency";
  if (settings.slope) text += " slope";
  return text.empty() ? " nogc" : text;
}

/// A probability is that of the scheme in force, so that of another one takes a command of its own.
std::string changed_settings_of_resample() {
  const resample_settings standard;
  const bool symmetric = resampling.scheme == sampling_scheme::symmetric;
  const bool jackknife = resampling.scheme == sampling_scheme::jackknife;
  const bool other_chance = resampling.symmetric_percent != standard.symmetric_percent;
  const bool other_deletion = resampling.deleted_percent != standard.deleted_percent;
  std::string text;
  if (other_chance && !symmetric)
    text += text_of(" sym probability %i; resample:", resampling.symmetric_percent);
  if (other_deletion && !jackknife)
    text += text_of(" jak probability %i; resample:", resampling.deleted_percent);
  if (other_deletion && symmetric) text += " sym";
  resample_request told = request_of(resampling);
  told.gc = standard.gc;
  told.frequency = standard.frequency;
  told.slope = standard.slope;
  const std::string options = changed_options(told, resample_options);
  if (!options.empty()) text += " " + options;
  if (other_chance && symmetric) text += text_of(" probability %i", resampling.symmetric_percent);
  if (other_deletion && jackknife) text += text_of(" probability %i", resampling.deleted_percent);
  text += summaries_in_words(resampling);
  if (!resampling.search.empty()) text += " [" + resampling.search + "]";
  return text.empty() ? text : text.substr(1);
}

void read_excluded(resample_request& request) {
  next_nonblank();
  request.excluded.assign(at(matrix.ntax), 0);
  read_list(list_bracket_ends, 0, matrix.ntax, "taxon", request.excluded);
}

void read_parts(resample_request& request) {
  for (int c = skip_blanks_peek(); c != ';'; c = skip_blanks_peek()) {
    if (c == '/') {
      read_excluded(request);
    } else if (c == '[') {
      request.settings.search =
          read_bracketed_search("Expected ']' after the search of the replicates");
    } else if (std::isalpha(c)) {
      ++request.words;
      read_option(request, request.sibyl ? sibyl_options : resample_options);
    } else {
      error_end_f(wrong_symbol, c);
    }
  }
}

/// Naming a summary is to choose it, and it alone unless others are named as well.
void choose_summaries(resample_request& request) {
  resample_settings& chosen = request.settings;
  const bool any = request.gc == 1 || request.frequency == 1 || request.slope == 1;
  const auto choose = [any](bool& shown, int named) {
    if (any || named != not_named) shown = named == 1;
  };
  choose(chosen.gc, request.gc);
  choose(chosen.frequency, request.frequency);
  choose(chosen.slope, request.slope);
}

void take_probability(resample_request& request) {
  resample_settings& chosen = request.settings;
  if (request.percent < 0) return;
  switch (chosen.scheme) {
    case sampling_scheme::symmetric:
      if (request.percent > 50)
        error_end("Probability of change for symmetric resampling can't be more than 50");
      chosen.symmetric_percent = request.percent;
      break;
    case sampling_scheme::jackknife:
      if (request.percent > 99) error_end("Deletion probability must be 0-99");
      chosen.deleted_percent = request.percent;
      break;
    default:
      emit("Note: probability specified for \"boot\" or \"poisson\" options will be ignored\n");
  }
}

void check_options(const resample_request& request) {
  const resample_settings& chosen = request.settings;
  const bool bootstraps =
      chosen.scheme == sampling_scheme::bootstrap || chosen.scheme == sampling_scheme::poisson;
  if (!chosen.zero_weights && chosen.scheme != sampling_scheme::symmetric)
    error_end("\"Nozerowt\" option can be used with \"sym\" only");
  if (chosen.slope && bootstraps)
    error_end("Slope summary cannot be used with boostrapping (either Poisson or standard)");
  if (!chosen.gc && !chosen.frequency && !chosen.slope && !chosen.savetrees)
    error_end("Must specify either a summary type (freq, slope, gc) or \"savetrees\"");
}

/// What the run needs of memory and trees.
void check_run(const resample_request& request) {
  const resample_settings& chosen = request.settings;
  if (chosen.slope && landmarks_are_active())
    error_end("Cannot do frequency slopes for landmark data");
  if (chosen.slope && request.from < 0)
    error_end("To calculate frequency slopes, must define a reference tree");
  const int summaries = chosen.gc + chosen.frequency + chosen.slope;
  const int saved =
      (chosen.savetrees ? chosen.replications : 0) + (chosen.savesummary ? summaries : 0);
  if (saved > 0 && store.ntrees + saved > store.maxtrees)
    error_end_f("To save %i trees (and summaries), set maxtrees to %i or more", saved,
                store.ntrees + saved);
  if (chosen.slope && chosen.replications + 1 > store.maxtrees)
    error_end_f("To do slopes for %i trees (and summaries), set maxtrees to %i or more",
                chosen.replications, chosen.replications + 1);
}

/// Inactive taxa are in no replicate either.
void leave_out_inactive(resample_request& request) {
  request.excluded.resize(at(matrix.ntax), 0);
  int remain = 0;
  for (int t = 0; t < matrix.ntax; ++t) {
    if (!matrix.taxon_active[at(t)]) request.excluded[at(t)] = 1;
    remain += request.excluded[at(t)] == 0;
  }
  if (remain < 3)
    error_end_f("Cannot exclude so many taxa from consensus calculation (only %i remain)", remain);
}

}  // namespace

constexpr option_table resample_options =
    rows.table("resample",
               {.unknown = "Unidentified string in resampling options: %s",
                .wrong_sign = wrong_symbol},
               &sibyl_options)
        .with_changes(changed_settings_of_resample);

resample_request read_resample_request() {
  resample_request request = request_of(resampling);
  request.gc = request.frequency = request.slope = not_named;
  if (accept_char(':')) {
    request.run = false;
  } else {
    accept_char('=');
  }
  request.list = !request.run && skip_blanks_peek() == ';';
  require_data("resampling");
  read_parts(request);
  check_end();
  choose_summaries(request);
  if (!request.sibyl) {
    take_probability(request);
    check_options(request);
  }
  for (const int tree : {request.from, request.errcount})
    if (tree >= 0) check_tree_number(tree);
  if (request.run) {
    if (!request.sibyl) check_run(request);
    warn_of_whole_configurations();
    leave_out_inactive(request);
  }
  expect_end();
  return request;
}

sampling sampling_of(const resample_settings& settings) {
  return {.scheme = settings.scheme,
          .percent = settings.scheme == sampling_scheme::jackknife ? settings.deleted_percent
                                                                   : settings.symmetric_percent,
          .zero_weights = settings.zero_weights,
          .softening = settings.softboot};
}

}  // namespace zeb
