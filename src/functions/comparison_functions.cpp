// What the last comparison of data sets counted.
#include <array>
#include <string_view>

#include "base/errors.h"
#include "compare/last_comparison.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "language/input.h"
#include "language/lexer.h"

namespace zeb {
namespace {

/// A type; after "+" the one count, after "-" the other. Where there is one only, the second is
/// null.
struct comparison_type {
  std::string_view name;
  int comparison_counts::*count;
  int comparison_counts::*removed = nullptr;
};
constexpr std::array<comparison_type, 15> types = {{
    {"taxa", &comparison_counts::taxa_added, &comparison_counts::taxa_deleted},
    {"chars", &comparison_counts::characters_added, &comparison_counts::characters_deleted},
    {"missing", &comparison_counts::missing_resolved, &comparison_counts::missing_added},
    {"states", &comparison_counts::states},
    {"weights", &comparison_counts::weights},
    {"add", &comparison_counts::additivity},
    {"sank", &comparison_counts::costs},
    {"data", &comparison_counts::cells},
    {"seq", &comparison_counts::sequences},
    {"ancstate", &comparison_counts::ancestral_states},
    {"landmarks", &comparison_counts::landmarks},
    {"landmiss", &comparison_counts::landmarks_missing_second,
     &comparison_counts::landmarks_missing_first},
    {"crit", &comparison_counts::critical_cells},
    {"scoradd", &comparison_counts::scorings_added},
    {"scordel", &comparison_counts::scorings_deleted},
}};

double last_comparison_count() {
  if (!last_comparison.present) error_end("No data sets have been compared yet (see \"dcomp\")");
  open_brackets();
  read_word();
  const std::string_view word = token();
  for (const comparison_type& type : types) {
    if (type.name != word) continue;
    const int sign = type.removed && accept_char('+')   ? '+'
                     : type.removed && accept_char('-') ? '-'
                                                        : 0;
    close_brackets();
    const int count = last_comparison.counts.*type.count;
    const int removed = type.removed ? last_comparison.counts.*type.removed : 0;
    return sign == '+' ? count : sign == '-' ? removed : count + removed;
  }
  error_end("\"dcomp\" has no type", word);
}

// clang-format off
constexpr expression_function rows[] = {
    {"dcomp", "[type]", "count of the last dcomp; types: taxa, chars, missing, landmiss (+ or - for the two ways), states, weights, add, sank, data, seq, ancstate, landmarks, crit, scoradd, scordel", last_comparison_count},
};
// clang-format on

}  // namespace

const std::span<const expression_function> comparison_functions = rows;

}  // namespace zeb
