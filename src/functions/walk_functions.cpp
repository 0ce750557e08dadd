// Where the walks over trees, reconstructions and files are.
#include "functions/subjects.h"
#include "macro/macro_state.h"

namespace zeb {
namespace {

double percent_swapped() { return walked.percent_swapped; }
double tree_is_complete() { return walked.tree_complete ? 1 : 0; }
double taxon_added() { return walked.taxon_added; }
double steps_of_reconstruction() { return walked.steps; }
double file_is_directory() { return walked.is_directory ? 1 : 0; }

// clang-format off
constexpr expression_function rows[] = {
    {"bbfull", "", "within bandb, 1 if the tree holds all taxa", tree_is_complete},
    {"bbtax", "", "within bandb, the taxon added last", taxon_added},
    {"curisdir", "", "within forfiles, 1 if the current file is a directory", file_is_directory},
    {"percswap", "", "within sprit, tbrit and bandb, the percentage done", percent_swapped},
    {"recsteps", "", "within iterrecs, steps of the current reconstruction", steps_of_reconstruction},
};
// clang-format on

}  // namespace

const std::span<const expression_function> walk_functions = rows;

}  // namespace zeb
