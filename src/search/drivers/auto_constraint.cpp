#include "search/drivers/auto_constraint.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "base/indices.h"
#include "search/moves/shared_clades.h"

namespace zeb {
namespace {

/// A search keeps sixteen tables of groups by nodes, which grow with the square of the taxa: these
/// many words of each are 256 Mbytes in all, and hold all clades of 8,000 taxa.
constexpr std::size_t most_table_words = 2'000'000;

/// Where there are too many clades the largest stay: they keep moves within parts of the tree.
void keep_largest(std::vector<shared_clade>& clades, int nodes) {
  const std::size_t most = std::max<std::size_t>(1, most_table_words / at(nodes)) * taxa_per_word;
  if (clades.size() <= most) return;
  std::ranges::stable_sort(clades, std::greater{}, &shared_clade::size);
  clades.erase(clades.begin() + static_cast<std::ptrdiff_t>(most), clades.end());
}

/// The rows of `before` with room for `groups` more.
constraint_rows with_room(const constraint_rows& before, int terminals, int groups) {
  constraint_rows rows = before;
  rows.terminals = terminals;
  rows.words = before.words + set_words(groups);
  rows.members.assign(at(terminals) * rows.words, 0);
  rows.others = rows.members;
  for (int t = 0; t < terminals && before.words > 0; ++t) {
    const std::size_t own = at(t) * rows.words;
    std::copy_n(before.members_of(t), before.words, rows.members.begin() + static_cast<long>(own));
    std::copy_n(before.others_of(t), before.words, rows.others.begin() + static_cast<long>(own));
  }
  for (std::vector<set_word>* kind : {&rows.positive, &rows.negative, &rows.of_tree})
    kind->resize(rows.words, 0);
  return rows;
}

/// Every terminal is a member of the clade or one of the others.
void add_clade(constraint_rows& rows, std::size_t group, std::span<const std::uint8_t> is_member) {
  const std::size_t w = group / taxa_per_word;
  const set_word bit = set_word{1} << (group % taxa_per_word);
  rows.positive[w] |= bit;
  for (std::size_t t = 0; t < is_member.size(); ++t)
    (is_member[t] ? rows.members : rows.others)[t * rows.words + w] |= bit;
}

constraint_rows rows_of_shared_clades(const search_data& data, const search_constraints* in_force,
                                      std::span<const std::int32_t> a,
                                      std::span<const std::int32_t> b) {
  std::vector<shared_clade> clades = shared_clades(a, b, data.n);
  keep_largest(clades, data.nodes);
  const constraint_rows before = in_force ? in_force->rows() : constraint_rows{};
  constraint_rows rows = with_room(before, data.n, static_cast<int>(clades.size()));
  std::size_t group = before.words * taxa_per_word;
  std::vector<std::uint8_t> is_member(at(data.n));
  for (const shared_clade& clade : clades) {
    std::ranges::fill(is_member, std::uint8_t{0});
    const std::vector<std::int32_t> nodes = nodes_of_clade(a, data.n, clade.target);
    std::vector<std::uint8_t> is_inside(at(data.nodes), 0);
    for (const std::int32_t v : nodes) is_inside[at(v)] = 1;
    for (int t = 0; t < data.n; ++t) is_member[at(t)] = t != 0 && is_inside[at(a[at(t)])];
    add_clade(rows, group++, is_member);
  }
  return rows;
}

}  // namespace

auto_constraint::auto_constraint(search_context& context, std::span<const std::int32_t> a,
                                 std::span<const std::int32_t> b)
    : context_(context), others_(std::move(context.constraints_in_force)) {
  context.constraints_in_force = search_constraints::of_rows(
      context.data, rows_of_shared_clades(context.data, others_.get(), a, b));
}

auto_constraint::~auto_constraint() { context_.constraints_in_force = std::move(others_); }

}  // namespace zeb
