// Functions whose subject isn't built yet. Their names are kept for them, and using one is an error
// that names it.
#include "functions/subjects.h"

namespace zeb {
namespace {

// clang-format off
constexpr expression_function rows[] = {
    {"cutswap", "[T N1 N2]", "cutoff of swapping", nullptr},
    {"dcomp", "[type]", "last result of dcomp", nullptr},
    {"discoeff", "[T1 T2]", "distortion coefficient of the trees", nullptr, function_list::general, "deslist"},
    {"fixlik", "[T]", "likelihood of tree T with fixed branch lengths", nullptr},
    {"implik", "[T]", "implied likelihood of tree T", nullptr},
    {"lik", "[T]", "likelihood of tree T", nullptr},
    {"matchtax", "[T1 T2]", "list of matching taxa", nullptr},
    {"mklik", "[T C]", "likelihood of a character", nullptr},
    {"mplik", "[T C]", "likelihood of the most parsimonious states", nullptr},
    {"simplik", "[T]", "simple likelihood of tree T", nullptr},
    {"slerrmarg", "", "error margin of the approximate search", nullptr},
    {"smplik", "[T]", "sampled likelihood of tree T", nullptr},
    {"sprdiff", "[T1 T2]", "number of SPR moves between the trees", nullptr},
    {"sprsim", "[T1 T2]", "similarity by SPR moves", nullptr},
    {"rfdistp", "[T1 T2]", "Robinson-Foulds distance of the trees", nullptr, function_list::unlisted},
};
// clang-format on

}  // namespace

const std::span<const expression_function> reserved_functions = rows;

}  // namespace zeb
