// What the commands over a pool of trees share, `tfuse` and `hybrid`: the pool, options of
// hybridisation, the room that it needs, the closing lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "language/options.h"
#include "search/drivers/hybrid.h"

namespace zeb {

inline constexpr char wrong_pool_option[] = "Wrong option for tree fusing: %i";

/// Does a list of trees begin with this character?
bool names_trees(int next);
/// Trees that the command names; all of them where it names none.
std::vector<int> read_pool();

/// "N*R/S", each of which may be missing.
void read_hybrid_numbers(hybrid_settings& settings);
/// The same as a text.
std::string hybrid_numbers(const hybrid_settings& settings);
void add_lines_of_hybrids(const hybrid_settings& settings, std::vector<std::string>& lines);

// Rows of option tables; `path` leads to the command's `hybrid_settings`.
template <auto... path>
constexpr auto autostop_option() {
  return number<path..., &hybrid_settings::autostop>("autostop", {0, 100'000}, wrong_pool_option)
      .no()
      .help("hybrids: stop after N rounds without a better tree; 0 never");
}
template <auto... path>
constexpr auto replace_option() {
  return toggle<path..., &hybrid_settings::replace>("replace").help(
      "hybrids: a better one takes the place of the tree that it was made from");
}
template <auto... path>
constexpr auto clog_option() {
  return number<path..., &hybrid_settings::clog>("clog", {0, 100'000}, wrong_pool_option)
      .no()
      .help("hybrids: once the pool has grown by N times its size keep the best; 0 no limit");
}
inline constexpr std::string_view hybrid_numbers_argument = "[N][*R][/S]";

/// Errors of a pool that hybrids leave no room for, and the warning that the buffer may be full
/// before the end.
void check_room_for_hybrids(const hybrid_settings& settings, const std::vector<int>& pool);

/// The end of a search over a pool, for which trees that break constraints were handicapped: drops
/// trees, puts those that stay into the group, and tells `done`, what was done in one line, and the
/// rest.
void close_pool_search(search_context& context, std::string_view group, const std::string& done,
                       const option_table& table);

}  // namespace zeb
