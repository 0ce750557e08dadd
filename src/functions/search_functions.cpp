// The last search: what it did, what it found.
#include <cstdint>

#include "base/errors.h"
#include "engine/kernels/kernel_tables.h"
#include "engine/search_data.h"
#include "functions/arguments.h"
#include "functions/function_table.h"
#include "search/search_state.h"

namespace zeb {
namespace {

double hits_of_last_search() { return searching.hits_value; }
double last_replication() { return searching.replication; }
double moves_accepted() { return static_cast<double>(searching.moves_done); }
double lowest_score() { return searching.lowest_seen; }

double rearrangements_done() {
  const rearrangement_counter& count = searching.rearrangement_count;
  return static_cast<double>(count.high) * 1e9 + static_cast<double>(count.low);
}

double word_bits() { return (engine.long_words & 2) ? widest_kernels() : 32; }

[[noreturn]] void only_in_sectors(const char* name) {
  error_end_f("Expression \"%s\" recognized only from first-level tracked sectorial searches",
              name);
}
double nodes_in_sector() { only_in_sectors("biginsect"); }
double nodes_outside_sector() { only_in_sectors("bignotsect"); }
double node_to_sector() { only_in_sectors("nodtosect"); }
double taxa_of_big_tree() { error_end("Expression \"bigntax\" invalid in present context"); }

// Ten values of an estimate of search effort, which isn't there yet.
double search_effort() {
  const std::vector<double> which = bracketed_values(1, 1);
  if (!(which[0] >= 0 && which[0] <= 9)) error_end("\"lastsibyl\" can take 10 values (0-9)");
  error_end("Expression \"lastsibyl\" is not available yet");
}

constexpr function_row rows[] = {
    {"numhits", hits_of_last_search},   {"getarep", last_replication},
    {"accepted", moves_accepted},       {"grandscore", lowest_score},
    {"rearrangs", rearrangements_done}, {"bittype", word_bits},
    {"biginsect", nodes_in_sector},     {"bignotsect", nodes_outside_sector},
    {"nodtosect", node_to_sector},      {"bigntax", taxa_of_big_tree},
    {"lastsibyl", search_effort},
};

}  // namespace

std::span<const function_row> search_functions() { return rows; }

}  // namespace zeb
