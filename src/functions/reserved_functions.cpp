// Functions whose subject isn't built yet. Their names are kept for them, and using one is an error
// that names it.
#include "functions/subjects.h"

namespace zeb {
namespace {

// clang-format off
constexpr expression_function rows[] = {
    {"fixlik", "[T]", "likelihood of tree T with fixed branch lengths", nullptr},
    {"implik", "[T]", "implied likelihood of tree T", nullptr},
    {"lik", "[T]", "likelihood of tree T", nullptr},
    {"mklik", "[T C]", "likelihood of a character", nullptr},
    {"mplik", "[T C]", "likelihood of the most parsimonious states", nullptr},
    {"simplik", "[T]", "simple likelihood of tree T", nullptr},
    {"slerrmarg", "", "error margin of the approximate search", nullptr},
    {"smplik", "[T]", "sampled likelihood of tree T", nullptr},
};
// clang-format on

}  // namespace

const std::span<const expression_function> reserved_functions = rows;

}  // namespace zeb
