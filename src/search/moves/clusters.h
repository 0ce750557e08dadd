// Node clusters: the tree below the root cut into connected pieces of about `cluster_size` nodes.
// What fails against the union of a cluster's `branch` sets fails against each of its nodes.
#pragma once

#include <cstdint>
#include <span>

#include "engine/search_data.h"

namespace zeb {

/// The cut of the tree in work, with lists of nodes that a clip changes only where it touches them.
struct cluster_cut {
  int count = 0;
  std::span<std::int32_t> nodes_in;  // nodes of all clusters, one after the other, in preorder
  std::span<std::int32_t> start;     // by cluster: its first entry in nodes_in; one more at the end
  std::span<std::int32_t> main_store;  // room for main_nodes of touched clusters, as nodes_in
  std::span<std::int32_t> clip_store;  // room for clip_nodes, likewise
  std::span<std::int32_t> below;       // by node: terminals at or below it
  std::span<std::int32_t> open_nodes;  // scratch, by node: see cut_clusters
  int close_at = 10;                   // nodes at which a piece is closed
};

/// Allocates the cut, the records and the unions in the arena for clusters of about `cluster_size`
/// nodes (at least 3), and hangs them on `data`.
cluster_cut allocate_clusters(search_data& data, int cluster_size);
/// Lets go of them (the memory is the arena's).
void release_clusters(search_data& data);

/// Terminals at or below each node of data.tree.
void count_terminals_below(const search_data& data, std::span<std::int32_t> below);
/// Cuts the tree anew and makes all unions; `branch` sets must be valid. Fills cut.below. Clusters
/// are numbered in preorder of their topmost nodes.
void cut_clusters(search_data& data, cluster_cut& cut);
/// Makes all unions afresh without a new cut.
void unite_clusters(search_data& data, const cluster_cut& cut);

}  // namespace zeb
