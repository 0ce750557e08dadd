// What the commands `ratchet` and `drift` share: options, lines of the listing, run and summary.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "language/options.h"
#include "search/drivers/cycles.h"

namespace zeb {

// Rows of option tables; `cycles` is the member of the command's settings.
template <auto cycles>
constexpr auto equals_option() {
  return toggle<cycles, &cycle_settings::equals>("equals");
}
template <auto cycles>
constexpr auto giveup_option() {
  return number<cycles, &cycle_settings::giveup>("giveup", {0, 100},
                                                 "Give percentage of full swap to complete",
                                                 "Percentage can't be %i (must be 0-100)")
      .no();
}
template <auto cycles>
constexpr auto findscore_option() {
  return real<cycles, &cycle_settings::findscore>("findscore", {0, 4294967295.0},
                                                  "Give stopping score (0 = no stop)")
      .no();
}

/// The lines that both commands have in their listings. `rounds`: how the word is spelled there.
void add_lines_of_cycles(const cycle_settings& settings, std::string_view rounds,
                         std::vector<std::string>& lines);
void list_lines(std::string_view title, const std::vector<std::string>& lines);

/// Runs `search` from the first tree in memory, drops trees that aren't good enough in the end, and
/// puts those that stay into a group of the name.
cycle_result search_from_first_tree(
    search_context& context, std::string_view name,
    const std::function<cycle_result(search_context& context, const cycle_task& task)>& search);
/// The closing lines.
void tell_cycles(const search_context& context, const cycle_result& result, const char* name,
                 const option_table& table);

}  // namespace zeb
