#include "engine/collapsing/search_marks.h"

#include "base/indices.h"
#include "engine/wide/wide_sets.h"

namespace zeb {
namespace {

/// Top bit of each field of a group.
constexpr std::uint32_t top_bits(int group) {
  constexpr std::uint32_t tops[] = {0xaaaaaaaaU, 0x88888888U, 0x80808080U, 0x80000000U};
  return tops[group];
}

/// Is some field of the group empty in both?
template <int group>
bool some_field_apart(const search_data& data, const word* a, const word* b) {
  constexpr std::uint32_t top = top_bits(group);
  for (int w = data.group_start[at(group)]; w < data.group_start[at(group) + 1]; ++w) {
    const word x = a[w] & b[w];
    if (~(((x & ~top) + ~top) | x) & top) return true;
  }
  return false;
}

bool branch_stays(const search_data& data, int v, int level) {
  const node_sets& own = data.sets[at(v)];
  const word* const above = data.sets[at(data.tree.anc[at(v)])].final;
  if (level >= 3)
    return some_field_apart<0>(data, above, own.final) ||
           some_field_apart<1>(data, above, own.final) ||
           some_field_apart<2>(data, above, own.final) ||
           some_field_apart<3>(data, above, own.final);
  for (int w = 0; w < data.nwords; ++w)
    if (level == 1 ? (above[w] & ~own.down[w]) != 0 : above[w] != own.final[w]) return true;
  return false;
}

}  // namespace

void search_marks(const search_data& data, int level, std::span<std::uint8_t> marks) {
  for (std::uint8_t& m : marks) m = 1;
  if (level == 0) return;
  const int rule = level < 3 ? level : 3;
  for (int v = data.n + 1; v < data.nodes; ++v)
    marks[at(v)] =
        branch_stays(data, v, level) || (data.has_wide && wide_branch_stays(data, v, rule));
  if (data.whole) data.whole->mark_staying(data, level, marks);
}

}  // namespace zeb
