#include "engine/passes/waves.h"

#include <cstring>

#include "base/indices.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"
#include "engine/passes/undo.h"
#include "engine/wide/wide_sets.h"

namespace zeb {
namespace {

/// Preliminary sets of a node of a turned path; its final sets are set to nothing, which no final
/// pass ever gives, so that the next wave takes them as changed.
void remake_turned(search_data& data, int v) {
  const node_sets& s = data.sets[at(v)];
  note_words(data, s.down, data.nwords);
  note_words(data, s.unions, data.nwords);
  note_words(data, s.final, data.nwords);
  data.kernels.remake_down(data.sets[at(data.tree.first[at(v)])].down,
                           data.sets[at(data.tree.second[at(v)])].down, s.down, s.unions,
                           data.layout);
  std::memset(s.final, 0, at(data.nwords) * sizeof(word));
  if (data.has_wide) remake_turned_wide(data, v);
}

}  // namespace

void repair_after_clip(search_data& data, int start, int clip) {
  if (clip < 0) {
    repair_after_insert(data, data.tree.sister[at(start)]);
    return;
  }
  data.kernels.clip_wave(context_of(data), start, clip, data.layout);
  if (data.has_wide) wide_clip_wave(data, start, clip);
}

void repair_after_insert(search_data& data, int node) {
  data.kernels.insert_wave(context_of(data), node, data.layout);
  if (data.has_wide) wide_insert_wave(data, node);
}

void reroot_subtree(search_data& data, int node, int clip) {
  int length = 0;
  for (int v = data.tree.anc[at(node)]; v != clip; v = data.tree.anc[at(v)])
    data.node_list[at(length++)] = v;
  if (length == 0) return;
  reroot_links(data.tree, node, clip);
  while (length-- > 0) remake_turned(data, data.node_list[at(length)]);
  remake_turned(data, clip);
}

}  // namespace zeb
