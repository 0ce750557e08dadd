#include "search/moves/wagner_clusters.h"

#include <algorithm>

#include "base/indices.h"
#include "search/moves/clusters.h"

namespace zeb {
namespace {

/// Clusters hang on the data as long as it lives, and waves widen their unions.
class cluster_scope {
 public:
  cluster_scope(search_data& data, int cluster_size)
      : data_(data), cut_(allocate_clusters(data, cluster_size)) {
    data.in_swap = true;
  }
  ~cluster_scope() {
    data_.in_swap = false;
    release_clusters(data_);
  }
  cluster_scope(const cluster_scope&) = delete;
  cluster_scope& operator=(const cluster_scope&) = delete;
  cluster_cut& cut() { return cut_; }

 private:
  search_data& data_;
  cluster_cut cut_;
};

/// Tries the clusters, in order or from the end.
void try_clusters(wagner_build& build, int taxon, bool backward, std::span<std::int32_t> list) {
  const search_data& data = build.data;
  const int count = data.cluster_count;
  for (int c = 0; c < count; ++c) list[at(c)] = backward ? count - 1 - c : c;
  const word* words = build.down(taxon);
  for (int i = 0; build.best > 0; ++i) {
    double cost = 0;
    i = build.scan(words, data.union_base, list, i, count, build.best, &cost);
    if (i >= count) return;
    const int c = list[at(i)];
    if (!build.others_allow(taxon, {join_end::cluster, c}, build.best, &cost)) continue;
    const cluster_record& cluster = data.clusters[at(c)];
    std::copy_n(cluster.main_nodes, cluster.n_main, build.candidates.begin());
    build.try_candidates(taxon, cluster.n_main, build.best);
  }
}

}  // namespace

/// Nodes that came since the last cut join the cluster of the branch they were put on, so that its
/// union stays a superset; they are in no list and are tried one by one. The clusters are cut
/// afresh before that takes long.
void add_by_clusters(wagner_build& build, int position) {
  search_data& data = build.data;
  const int cluster_size = build.context.rules.swap.cluster_size;
  cluster_scope scope(data, cluster_size);
  const std::span<std::int32_t> list = alloc_low<std::int32_t>(data.clusters.size());
  const std::span<std::int32_t> extra = alloc_low<std::int32_t>(at(data.nodes));
  const int cut_every = 4 * cluster_size;
  int extras = 0;
  cut_clusters(data, scope.cut());
  for (int p = position; p < data.n; ++p) {
    if (build.stop_at(p)) return;
    if (extras >= 2 * cut_every) {
      cut_clusters(data, scope.cut());
      extras = 0;
    }
    const int taxon = build.order[at(p)];
    build.start_place(taxon);
    try_clusters(build, taxon, (build.context.random.draw() & 1) != 0, list);
    if (build.best > 0) {
      std::copy_n(extra.begin(), extras, build.candidates.begin());
      build.try_candidates(taxon, extras, build.best);
    }
    const int joint = data.tree.anc[at(data.n)];
    data.cluster_of[at(taxon)] = data.cluster_of[at(joint)] =
        data.cluster_of[at(build.best_branch)];
    extra[at(extras++)] = taxon;
    extra[at(extras++)] = joint;
    build.attach_taxon(taxon);
  }
}

}  // namespace zeb
