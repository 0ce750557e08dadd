// What the commands `ratchet` and `drift` share: options, lines of the listing, run and summary.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "language/options.h"
#include "search/drivers/cycles.h"

namespace zeb {

inline constexpr std::string_view wrong_fusefreq =
    "Give frequency for auto-fusing (3-100, no fusing = 0 )";

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
constexpr auto autoconst_option(std::string_view missing) {
  return number<cycles, &cycle_settings::autoconst>("autoconst", {}, missing)
      .no()
      .help(
          "repair under constraints, the clades that a perturbation kept, in all cycles but every "
          "Nth and the last");
}
template <auto cycles>
constexpr auto fusefreq_option() {
  return number<cycles, &cycle_settings::fusefreq>("fusefreq", {0, 100}, wrong_fusefreq)
      .template then<cycles, &cycle_settings::fuse_rounds>(
          'x', {1, 100}, "Give number of rounds for auto-fusing (1-100)")
      .argument("N[xR]")
      .no();
}
template <auto cycles>
constexpr auto dumpfuse_option() {
  return toggle<cycles, &cycle_settings::dumpfuse>("dumpfuse")
      .help("after fusing, drop the trees that aren't good enough");
}
template <auto cycles>
constexpr auto findscore_option() {
  return real<cycles, &cycle_settings::findscore>("findscore", {0, 4294967295.0},
                                                  "Give stopping score (0 = no stop)")
      .no();
}

/// Rules between these options.
void check_cycles(const cycle_settings& wanted);

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
                 const option_table& table, const cycle_settings& wanted);

}  // namespace zeb
