#include "engine/passes/links.h"

#include "base/indices.h"

namespace zeb {
namespace {

/// `node` takes the place of `old` below `a`.
void replace_descendant(tree_arrays& tree, int a, int old, int node) {
  if (tree.first[at(a)] == old)
    tree.first[at(a)] = node;
  else
    tree.second[at(a)] = node;
  tree.anc[at(node)] = a;
}

void make_sisters(tree_arrays& tree, int a, int b) {
  tree.sister[at(a)] = b;
  tree.sister[at(b)] = a;
}

}  // namespace

void rebuild_links(search_data& data) {
  tree_arrays& tree = data.tree;
  for (int v = data.n; v < data.nodes; ++v) tree.first[at(v)] = tree.second[at(v)] = -1;
  for (int v = 0; v < data.nodes; ++v) {
    if (v == data.n) continue;
    const int a = tree.anc[at(v)];
    if (tree.first[at(a)] < 0) {
      tree.first[at(a)] = v;
    } else {
      tree.second[at(a)] = v;
      make_sisters(tree, tree.first[at(a)], v);
    }
  }
}

void attach(tree_arrays& tree, int node, int joint, int target) {
  const int a = tree.anc[at(target)];
  const int sister = tree.sister[at(target)];
  replace_descendant(tree, a, target, joint);
  make_sisters(tree, joint, sister);
  tree.first[at(joint)] = target;
  tree.second[at(joint)] = node;
  tree.anc[at(target)] = tree.anc[at(node)] = joint;
  make_sisters(tree, target, node);
}

int detach(tree_arrays& tree, int node) {
  const int joint = tree.anc[at(node)];
  const int sister = tree.sister[at(node)];
  replace_descendant(tree, tree.anc[at(joint)], joint, sister);
  make_sisters(tree, sister, tree.sister[at(joint)]);
  return joint;
}

void reroot_links(tree_arrays& tree, int node, int clip) {
  int p = tree.anc[at(node)];
  if (p == clip) return;
  int top = p;  // the descendant of `clip` on the path
  while (tree.anc[at(top)] != clip) top = tree.anc[at(top)];
  const int other_side = tree.sister[at(top)];
  int v = node;
  int new_ancestor = clip;
  int sister = tree.sister[at(v)];
  int next = tree.anc[at(p)];
  int next_sister = tree.sister[at(p)];
  while (p != clip) {
    // Read before the links of `next` are turned.
    const int after = tree.anc[at(next)];
    const int after_sister = tree.sister[at(next)];
    const int below = next == clip ? other_side : next;
    replace_descendant(tree, p, v, below);
    make_sisters(tree, sister, below);
    tree.anc[at(p)] = new_ancestor;
    new_ancestor = p;
    v = p;
    p = next;
    next = after;
    sister = next_sister;
    next_sister = after_sister;
  }
  const int neighbour = tree.anc[at(node)];
  tree.first[at(clip)] = node;
  tree.second[at(clip)] = neighbour;
  tree.anc[at(node)] = clip;
  make_sisters(tree, node, neighbour);
}

}  // namespace zeb
