// The last search: what it did, what it found.
#include <algorithm>
#include <cstdint>

#include "base/errors.h"
#include "engine/kernels/kernel_choice.h"
#include "engine/search_data.h"
#include "engine/settings.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "macro/assignment.h"
#include "search/part_search.h"
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
const tracked_nodes& tracked(const char* name) {
  if (!part_search.tracked) only_in_sectors(name);
  return *part_search.tracked;
}

double list_tracked(const char* name, const char* list_name, bool in_sector) {
  const std::vector<int>& nodes = tracked(name).in_sector;
  std::vector<double> list;
  for (std::size_t v = 0; v < nodes.size(); ++v)
    if ((nodes[v] >= 0) == in_sector) list.push_back(static_cast<double>(v));
  return write_list(list_name, list);
}
double nodes_in_sector() { return list_tracked("biginsect", "Biginsect", true); }
double nodes_outside_sector() { return list_tracked("bignotsect", "Bignotsect", false); }

double node_to_sector() {
  const std::vector<int>& nodes = tracked("nodtosect").in_sector;
  const double node = bracketed_whole_values(1, 1)[0];
  if (!(node >= 0 && node < static_cast<double>(nodes.size())))
    error_end("No node", static_cast<int>(std::clamp(node, -1.0, 2147483647.0)));
  return nodes[static_cast<std::size_t>(node)];
}

double taxa_of_big_tree() {
  if (!part_search.tracked) error_end("Expression \"bigntax\" invalid in present context");
  return part_search.tracked->taxa - 1;
}

// clang-format off
constexpr expression_function rows[] = {
    {"numhits", "", "hits to best score of the last search", hits_of_last_search},
    {"getarep", "", "replication that the last search was at; -1 without replications", last_replication},
    {"accepted", "", "rearrangements that the last search accepted or stored", moves_accepted},
    {"exact_solution", "", "1 if the last search was exact and complete (ienum), else 0", has_exact_solution},
    {"grandscore", "", "lowest score that any search has seen since the data were read; -1 without one", lowest_score},
    {"rearrangs", "", "rearrangements examined by the last search", rearrangements_done},
    {"bittype", "", "bits of the words in use by searches: 32, or as many as this processor has", word_bits, function_list::general, "bigntax"},
    {"biginsect", "", "list of nodes of the big tree in the sector", nodes_in_sector},
    {"bignotsect", "", "list of nodes of the big tree outside the sector", nodes_outside_sector},
    {"nodtosect", "[N]", "node of the sector for node N of the big tree", node_to_sector},
    {"bigntax", "", "last taxon of the big tree", taxa_of_big_tree, function_list::general, "blockstart"},
};
// clang-format on

}  // namespace

const std::span<const expression_function> search_functions = rows;

}  // namespace zeb
