// Passes over whole trees and the incremental waves, in the same manner as kernel_forms.h.
//
// What a wave is and leaves, and why it may stop, is told in passes/waves.h.
#pragma once

#include "engine/kernels/kernel_forms.h"

namespace zeb {
namespace {

template <class V>
struct tree_words {
  const pass_context& t;
  std::size_t w;  // the words in work

  word* down(std::int32_t v) const { return t.down + static_cast<std::size_t>(v) * t.stride + w; }
  word* final(std::int32_t v) const { return t.final + static_cast<std::size_t>(v) * t.stride + w; }
  word* unions(std::int32_t v) const {
    return t.unions + static_cast<std::size_t>(v) * t.stride + w;
  }
  word* branch(std::int32_t v) const {
    return t.branch + static_cast<std::size_t>(v) * t.stride + w;
  }
};

/// Notes the words at `p` in the log, if there is one.
template <class V>
inline void note(const pass_context& t, word* p) {
  undo_log* log = t.undo;
  if (!log) return;
  if (log->count < log->capacity) {
    log->where[log->count] = p;
    V::store(log->old_words + static_cast<std::size_t>(log->count) * V::words, V::load(p));
    ++log->count;
  } else {
    log->count = log->capacity + 1;
  }
}

/// Stores the value where it differs from what is there; returns whether it did.
template <class V>
inline bool replace(const pass_context& t, word* p, typename V::type value) {
  if (V::same(V::load(p), value)) return false;
  note<V>(t, p);
  V::store(p, value);
  return true;
}

template <class V>
inline void widen_cluster(const pass_context& t, std::int32_t node, std::size_t w,
                          typename V::type branch) {
  if (!t.cluster_of) return;
  word* const p = t.clusters[t.cluster_of[node]].union_now + w;
  const auto old = V::load(p);
  const auto wide = V::or_(old, branch);
  if (V::same(old, wide)) return;
  note<V>(t, p);
  V::store(p, wide);
}

/// Remakes final and branch sets of `v` from its ancestor; returns whether `final` changed (never,
/// for a terminal).
template <class V, int G>
inline bool refresh(const tree_words<V>& s, std::int32_t v) {
  const pass_context& t = s.t;
  const auto a = V::load(s.final(t.anc[v]));
  const auto d = V::load(s.down(v));
  bool changed = false;
  typename V::type b;
  if (v < t.n) {
    b = terminal_branch<V, G>(a, d);
  } else {
    const auto f = final_sets<V, G>(a, d, V::load(s.unions(v)));
    changed = replace<V>(t, s.final(v), f);
    b = V::or_(f, a);
  }
  if (replace<V>(t, s.branch(v), b)) widen_cluster<V>(t, v, s.w, b);
  return changed;
}

/// Remakes preliminary sets of `v` from its descendants; returns whether anything changed.
template <class V, int G>
inline bool remake_down(const tree_words<V>& s, std::int32_t v) {
  typename V::type u, e;
  const auto d =
      down_sets<V, G>(V::load(s.down(s.t.first[v])), V::load(s.down(s.t.second[v])), u, e);
  const bool changed = replace<V>(s.t, s.down(v), d);
  return replace<V>(s.t, s.unions(v), u) || changed;
}

/// Works off `depth` nodes of the stack, and what their changes bring.
template <class V, int G>
inline void run_stack(const tree_words<V>& s, std::int32_t depth) {
  const pass_context& t = s.t;
  while (depth > 0) {
    const std::int32_t v = t.stack[--depth];
    if (refresh<V, G>(s, v)) {
      t.stack[depth++] = t.first[v];
      t.stack[depth++] = t.second[v];
    }
  }
}

/// Rootward from `a`, whose descendant `below` changed, then down the same path. On return all but
/// `below` itself is done, and the nodes left to refresh stand in the stack; returns their count.
template <class V, int G>
inline std::int32_t walk_path(const tree_words<V>& s, std::int32_t a, std::int32_t below) {
  const pass_context& t = s.t;
  std::int32_t length = 0;
  while (remake_down<V, G>(s, a)) {
    t.list[length++] = a;
    if (a == t.n) break;
    a = t.anc[a];
  }
  std::int32_t depth = 0;
  while (length-- > 0) {
    const std::int32_t v = t.list[length];
    const bool changed =
        v == t.n ? replace<V>(t, s.final(v), V::load(s.down(v))) : refresh<V, G>(s, v);
    if (changed) t.stack[depth++] = t.sister[length > 0 ? t.list[length - 1] : below];
  }
  return depth;
}

template <class V, int G>
inline void clip_wave_words(const pass_context& t, std::int32_t start, std::int32_t clip,
                            std::int32_t w) {
  const tree_words<V> s{t, static_cast<std::size_t>(w)};
  if (start != 0) {  // beside terminal 0 nothing of the main tree is left but that terminal
    std::int32_t depth = walk_path<V, G>(s, t.anc[start], start);
    t.stack[depth++] = start;
    run_stack<V, G>(s, depth);
  }
  if (clip >= t.n && replace<V>(t, s.final(clip), V::load(s.down(clip)))) {
    t.stack[0] = t.first[clip];
    t.stack[1] = t.second[clip];
    run_stack<V, G>(s, 2);
  }
}

template <class V, int G>
inline void insert_wave_words(const pass_context& t, std::int32_t node, std::int32_t w) {
  const tree_words<V> s{t, static_cast<std::size_t>(w)};
  const std::int32_t joint = t.anc[node];
  std::int32_t depth = 0;
  remake_down<V, G>(s, joint);
  if (joint == t.n) {
    replace<V>(t, s.final(joint), V::load(s.down(joint)));
  } else {
    depth = walk_path<V, G>(s, t.anc[joint], joint);
    refresh<V, G>(s, joint);
  }
  t.stack[depth++] = node;
  t.stack[depth++] = t.sister[node];
  run_stack<V, G>(s, depth);
}

template <class V, int G>
inline void clip_wave_group(const pass_context& t, std::int32_t start, std::int32_t clip,
                            const kernel_layout& layout) {
  const std::int32_t end = group_end<G>(layout);
  for (std::int32_t w = group_begin<G>(layout); w < end; w += V::words)
    clip_wave_words<V, G>(t, start, clip, w);
}
template <class V>
void clip_wave(const pass_context& t, std::int32_t start, std::int32_t clip,
               const kernel_layout& layout) {
  clip_wave_group<V, 0>(t, start, clip, layout);
  clip_wave_group<V, 1>(t, start, clip, layout);
  clip_wave_group<V, 2>(t, start, clip, layout);
  clip_wave_group<V, 3>(t, start, clip, layout);
}

template <class V, int G>
inline void insert_wave_group(const pass_context& t, std::int32_t node,
                              const kernel_layout& layout) {
  const std::int32_t end = group_end<G>(layout);
  for (std::int32_t w = group_begin<G>(layout); w < end; w += V::words)
    insert_wave_words<V, G>(t, node, w);
}
template <class V>
void insert_wave(const pass_context& t, std::int32_t node, const kernel_layout& layout) {
  insert_wave_group<V, 0>(t, node, layout);
  insert_wave_group<V, 1>(t, node, layout);
  insert_wave_group<V, 2>(t, node, layout);
  insert_wave_group<V, 3>(t, node, layout);
}

// ---- full passes ----

template <class V, class C>
std::int64_t down_pass(const pass_context& t, const std::int32_t* order, std::int32_t count,
                       const kernel_layout& layout) {
  const tree_words<V> s{t, 0};
  std::int64_t steps = 0;
  while (count-- > 0) {
    const std::int32_t v = order[count];
    steps +=
        node_down<V, C>(s.down(t.first[v]), s.down(t.second[v]), s.down(v), s.unions(v), layout);
  }
  return steps;
}

template <class V>
inline void final_of(const tree_words<V>& s, std::int32_t ancestor, std::int32_t v,
                     const kernel_layout& layout) {
  if (v < s.t.n)
    node_final_terminal<V>(s.final(ancestor), s.down(v), s.branch(v), layout);
  else
    node_final<V>(s.final(ancestor), s.down(v), s.unions(v), s.final(v), s.branch(v), layout);
}

template <class V>
void final_pass(const pass_context& t, const std::int32_t* order, std::int32_t count,
                const kernel_layout& layout) {
  const tree_words<V> s{t, 0};
  const std::int32_t top = order[0];
  for (std::int32_t w = 0; w < layout.end3; w += V::words)
    V::store(s.final(top) + w, V::load(s.down(top) + w));
  for (std::int32_t i = 0; i < count; ++i) {
    const std::int32_t a = order[i];
    final_of<V>(s, a, t.first[a], layout);
    final_of<V>(s, a, t.second[a], layout);
  }
}

}  // namespace
}  // namespace zeb
