// The driver of wide characters: walks the tree in work and has each kind make its sets. All of
// this is called only where `has_wide` is set. See wide_kinds.h.
#pragma once

#include <cstdint>

#include "engine/search_data.h"

namespace zeb {

/// Takes the memory of the sets, for characters whose kinds, weights and least steps are known, and
/// sets the flags that follow from the kinds.
void allocate_wide_sets(search_data& data);
/// Makes the sets of the terminals.
void encode_wide_cells(search_data& data);
/// Gives two terminals each other's sets.
void exchange_wide_terminals(search_data& data, int a, int b);

/// Down-pass over the first `count` nodes of data.node_list (the first one is the root of what is
/// walked; ancestors come before descendants). Returns what the steps cost; under implied weights
/// they are counted in place of that.
double wide_down_pass(search_data& data, int count);
/// Final pass over the same nodes and the terminals that hang on them.
void wide_final_pass(search_data& data, int count);

/// The waves of wide sets; see waves.h.
void wide_clip_wave(search_data& data, int start, int clip);
void wide_insert_wave(search_data& data, int node);
/// Makes `down` of a node of a turned path, whose `final` sets are wrong until the next wave.
void remake_turned_wide(search_data& data, int node);

/// Takes the memory of clusters from the low stack.
void allocate_wide_clusters(search_data& data, int most);
void empty_wide_cluster(search_data& data, int cluster);
/// Takes the branch above a node into a cluster, which isn't noted in the undo log.
void widen_wide_cluster(search_data& data, int cluster, int node);

/// Does a wide character keep the branch above an internal node under a quick collapsing rule?
bool wide_branch_stays(const search_data& data, int node, int rule);

}  // namespace zeb
