// `lmark`: settings of landmarks, and reports on them.
#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "landmarks/commands.h"
#include "landmarks/landmark_memory.h"
#include "landmarks/lmark_reports.h"
#include "landmarks/lmark_request.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

constexpr auto own = &lmark_request::settings;
constexpr auto searching = &lmark_request::searching;
using grid = landmark_settings;
using search = landmark_search_settings;

void read_margin(lmark_request& request) { read_error_margin(request.searching); }
void read_refining(lmark_request& request) { read_refinement(request.searching); }
void read_thread_count(lmark_request& request) { read_threads(request.searching); }
void read_xthreads(lmark_request& request) {
  request.searching.threads_stay = true;
  emit(text_of(
      "Starting %i threads and keeping them always up\n",
      request.searching.threads > 0 ? request.searching.threads : recommended_landmark_threads()));
}
void read_noxthreads(lmark_request& request) {
  request.searching.threads_stay = false;
  emit("Putting all threads down (invoked only when needed)\n");
}
void ask_settings(lmark_request& request) { request.work.emplace_back(show_landmark_settings); }

constexpr command_options rows = {
    number<own, &grid::cells>("cells", {2, 100}, "Number of cells must be 2-100")
        .help("points of the grid along each axis"),
    form<read_termpoints>("termpoints")
        .argument("[-]")
        .help("positions of terminals are candidates beside the grid; with \"-\" without it, and "
              "then grids are neither nested nor shaken"),
    choice<own, &grid::use_terminals>("notermpoints", 0)
        .also<own, &grid::use_grid>(1)
        .help("candidates are points of the grid only"),
    form<read_nest>("nest").argument("N [W]").help(
        "finer grids, N times, around the positions found, over a window of W cells"),
    number<own, &grid::shakes>("shake", {0, 1000}, "Number of shakes must be 0-1000")
        .help("distort the first grid so many times, and take the best"),
    toggle<own, &grid::iterate>("iterate").help(
        "move all nodes to where the tree is shortest, from where the grids put them"),
    form<read_maxiters>("maxiters")
        .argument("N [C]")
        .help("rounds of that, until one gains less than C times the span of the point"),
    real<own, &grid::precision>("maxprec", {0, 1e9}, "Precision must be 0 or more")
        .help("points that vary by less than half of N aren't optimised, nor are finer grids made; "
              "0: none"),
    form<read_refining>("refine").argument("BxR").help(
        "searches optimise up to B branches from where trees were joined, R times"),
    form<read_margin>("errmarg").argument("N").help(
        "percentage of error of quick estimates in searches; A-B/X-Y: none up to X percent "
        "of the clippings, then A until Y, then B; \"<N\", \">N\": or the error met and N "
        "standard deviations, if smaller, larger"),
    form<read_thread_count>("threads").argument("N").help(
        "threads of searches and, where N is given, of scores; *: by processors"),
    form<read_xthreads>("xthreads").help("keep the threads up"),
    form<read_noxthreads>("noxthreads").help("begin threads when they are needed"),
    toggle<own, &grid::low_memory>("lowmem").help(
        "make distances between candidates anew for each point"),
    toggle<own, &grid::shrink>("shrink").help("the frame of the grid leaves out an outlier"),
    toggle<own, &grid::skip>("skip").help("pass over candidates that can't be the best"),
    toggle<own, &grid::in_scale>("inscale").help(
        "automatic factors make all landmarks of a character equal"),
    toggle<own, &grid::sample_configurations>("confsample")
        .help("resampling draws whole configurations"),
    toggle<searching, &search::quick_wagner>("quickwag")
        .help("Wagner trees without optimising each point anew"),
    toggle<own, &grid::look_ahead>("lookahead")
        .help("for searches that look ahead, which none does so far"),
    toggle<own, &grid::show_internal_nodes>("showhtus")
        .help("coordinates of nodes beside the figures of \"map\""),
    form<read_ambig>("ambig").argument("+x-y").help(
        "of candidates of the same cost, that of largest x, then of smallest y; *: any"),
    form<read_connections>("connect").argument("C/0-1-2").help(
        "landmarks that figures join by lines"),
    form<read_dims>("dims").argument("[N]/[C]").help("show dimensions (or what has N of them)"),
    form<read_factors>("factors")
        .argument("[=F] [C/L]")
        .help("factors of landmarks; *: automatic; without \"=\" they are shown"),
    form<read_weights>("wts").argument("[=W] [C/L]").help("weights of landmarks, the same way"),
    form<read_minima>("usmin")
        .argument("[=M] [C/L]")
        .help("minima of landmarks, which homoplasy counts from; *: a bound, !: from a search for "
              "the point alone, (T): from tree T"),
    form<read_list_of_landmarks>("list").argument("[C/L]").help("show landmarks and their factors"),
    form<read_landmark_scores>("lscores").argument("[N/C/L]").help("show scores by landmark"),
    form<read_map>("map").argument("[N/C]").help(
        "show positions of all nodes; with \"& file\" as a figure"),
    form<read_multimap>("multimap")
        .argument("[N/C]")
        .help("the same with all configurations of a tree in one figure"),
    form<read_numlands>("numlands").help("show numbers of landmarks"),
    form<ask_settings>("options").help("show the settings"),
    number<own, &grid::decimals>("precision", {0, 15}, "Number of decimals must be 0-15")
        .help("decimals of coordinates"),
    form<read_rescale>("rescale").argument("[C]").help("give each taxon's points centroid size 1"),
    form<read_swapped_axes>("swap").argument("xy [C]").help("exchange two coordinates in the data"),
    toggle<own, &grid::lines>("lines").help("figures show the way from a node to its ancestor"),
    real<own, &grid::tilt>("tilt", {-360, 360}, "Tilt must be -360 to 360 degrees")
        .help("of figures in three dimensions, degrees"),
    real<own, &grid::rotation>("rotation", {-360, 360}, "Rotation must be -360 to 360 degrees")
        .help("of figures in three dimensions, degrees"),
    real<own, &grid::volume>("volume", {0, 100}, "Volume must be 0 to 100 percent")
        .help("how much larger what is near is drawn in three dimensions, percent"),
};

}  // namespace

constexpr option_table lmark_options = rows.table(
    "lmark",
    {.unknown = "Unrecognized landmark option: %s", .no_word = "Unrecognized landmark option:"});

void lmark_command() {
  if (landmark_configurations().empty()) error_end("No landmark characters in matrix");
  no_timing();
  lmark_request request{lmark.settings, landmark_searching, {}};
  if (skip_blanks_peek() == ';') ask_settings(request);
  while (skip_blanks_peek() != ';') read_option(request, lmark_options);
  expect_end();
  set_landmark_settings(request.settings);
  set_landmark_searching(request.searching);
  check_landmark_memory();
  drop_packed_data();
  for (const auto& one : request.work) one();
}

}  // namespace zeb
