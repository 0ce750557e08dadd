// The last search: what it did, what it found.
#include <cstdint>

#include "base/errors.h"
#include "engine/kernels/kernel_choice.h"
#include "engine/search_data.h"
#include "engine/settings.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "search/search_results.h"

namespace zeb {
namespace {

double hits_of_last_search() { return last_search.hits; }
double last_replication() { return last_search.replication; }
double moves_accepted() { return static_cast<double>(last_search.moves_done); }
double has_exact_solution() { return last_search.exact_solution ? 1 : 0; }
double lowest_score() { return last_search.lowest_score; }

double rearrangements_done() { return last_search.rearrangements.total(); }

double word_bits() { return (engine.long_words) ? widest_kernels() : 32; }

[[noreturn]] void only_in_sectors(const char* name) {
  error_end_f("Expression \"%s\" recognized only from first-level tracked sectorial searches",
              name);
}
double nodes_in_sector() { only_in_sectors("biginsect"); }
double nodes_outside_sector() { only_in_sectors("bignotsect"); }
double node_to_sector() { only_in_sectors("nodtosect"); }
double taxa_of_big_tree() { error_end("Expression \"bigntax\" invalid in present context"); }

// clang-format off
constexpr expression_function rows[] = {
    {"numhits", "", "hits to best score of the last search", hits_of_last_search},
    {"getarep", "", "replication that the last search was at; -1 without replications", last_replication},
    {"accepted", "", "rearrangements that the last search accepted or stored", moves_accepted},
    {"exact_solution", "", "1 if the last search was exact and complete (ienum), else 0", has_exact_solution},
    {"grandscore", "", "lowest score that any search has seen since the data were read; -1 without one", lowest_score},
    {"rearrangs", "", "rearrangements examined by the last search", rearrangements_done},
    {"bittype", "", "bits of the words in use by searches: 32, or as many as this processor has", word_bits, function_list::general, "bigntax"},
    {"biginsect", "", "list of nodes of the big tree in the sector", nodes_in_sector, function_list::general, {}, true},
    {"bignotsect", "", "list of nodes of the big tree outside the sector", nodes_outside_sector, function_list::general, {}, true},
    {"nodtosect", "[N]", "node of the sector for node N of the big tree", node_to_sector, function_list::general, {}, true},
    {"bigntax", "", "last taxon of the big tree", taxa_of_big_tree, function_list::general, "blockstart", true},
};
// clang-format on

}  // namespace

const std::span<const expression_function> search_functions = rows;

}  // namespace zeb
