#include "engine/passes/conversions.h"

#include <algorithm>
#include <vector>

#include "base/indices.h"
#include "matrix/matrix.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

/// Hangs `children` below `node`, two at a time, taking new nodes from `next` for what is more.
void hang(std::span<std::int32_t> anc, int node, std::span<const int> children, int& next) {
  for (std::size_t i = 0; i + 2 < children.size(); ++i) {
    anc[at(children[i])] = node;
    anc[at(next)] = node;
    node = next++;
  }
  for (const int child : children.last(2)) anc[at(child)] = node;
}

}  // namespace

conversion_room::conversion_room(const search_data& data)
    : ancestors(at(data.all_taxa - data.n + data.nodes)), numbers(ancestors.size()) {}

bool to_internal(const search_data& data, std::span<const std::int32_t> buffer_tree,
                 std::span<std::int32_t> anc, bool resolve) {
  const int ntax = data.all_taxa;
  std::vector<tree_node> tree(buffer_tree.begin(), buffer_tree.end());
  std::vector<std::uint8_t> inactive(at(ntax), 0);
  bool prune = false;
  for (int i = 0; i < ntax; ++i) {
    const int taxon = data.pack_to_taxon[at(i)];
    const bool absent = is_absent(tree, taxon);
    if (i < data.n && absent) return false;
    if (i >= data.n && !absent) inactive[at(taxon)] = prune = true;
  }
  if (prune) delete_taxa(tree, ntax, inactive);
  const int outgroup = data.pack_to_taxon[0];
  reroot_tree(tree, ntax, outgroup);
  const descendant_lists below = descendants_of(tree, ntax);

  // Numbers of the nodes: terminals by the map, internal nodes as they are met.
  std::vector<int> number(tree.size(), -1);
  for (int i = 0; i < data.n; ++i) number[at(data.pack_to_taxon[at(i)])] = i;
  number[at(ntax)] = data.n;
  int next = data.n + 1;
  std::vector<int> children;
  for (const int v : internal_nodes_root_first(below, ntax)) {
    children.clear();
    for (const int d : below.children(v)) {
      if (d >= ntax) number[at(d)] = next++;
      // The outgroup stays alone on its side of the root.
      if (d == outgroup)
        children.insert(children.begin(), number[at(d)]);
      else
        children.push_back(number[at(d)]);
    }
    if (children.size() > 2 && !resolve) return false;
    if (children.size() < 2) return false;
    hang(anc, number[at(v)], children, next);
  }
  anc[at(data.n)] = data.nodes;
  return true;
}

void to_buffer(const search_data& data, std::span<const std::int32_t> anc,
               std::span<std::int32_t> buffer_tree) {
  conversion_room room(data);
  to_buffer(data, anc, buffer_tree, room);
}

void to_buffer(const search_data& data, std::span<const std::int32_t> anc,
               std::span<std::int32_t> buffer_tree, conversion_room& room) {
  const int ntax = data.all_taxa;
  const auto number = [&](int v) {
    return v < data.n ? data.pack_to_taxon[at(v)] : ntax + (v - data.n);
  };
  std::fill(room.ancestors.begin(), room.ancestors.end(), -1);
  for (int v = 0; v < data.nodes; ++v)
    if (v != data.n) room.ancestors[at(number(v))] = number(anc[at(v)]);
  std::fill(buffer_tree.begin(), buffer_tree.end(), 0);
  normalise_ancestors(room.ancestors, buffer_tree, ntax, &room.numbers);
}

}  // namespace zeb
