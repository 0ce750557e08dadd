#include "parallel/jobs/sector_results.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "matrix/matrix.h"
#include "parallel/jobs/result_groups.h"
#include "parallel/tasks/tree_loads.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// Puts the arrangement that was found in the place of the one there was. Only nodes strictly
/// within the sector change, so that sectors without a common branch can be put in one after
/// another.
void put_in(const sector_place& place, const std::vector<tree_node>& found,
            std::vector<int>& ancestors) {
  std::vector<int> inside;  // numbers of nodes that are free for it
  for (const std::int32_t terminal : place.terminals)
    for (int v = place.tree[at(terminal)]; v != place.top; v = place.tree[at(v)])
      if (!std::ranges::count(inside, v)) inside.push_back(v);
  // What was a polytomy may have more nodes now.
  for (int v = node_limit(place.tree, matrix.ntax); v < matrix.nnodes; ++v) inside.push_back(v);
  const int ntax = place.taxa;
  const int limit = node_limit(found, ntax);
  std::vector<int> number(at(limit), -1);
  for (std::size_t i = 0; i < place.terminals.size(); ++i) number[i + 1] = place.terminals[i];
  // The rest hangs on the root beside all else; a root with more descendants has them at the top.
  int top = ntax;
  int descendants_of_root = 0;
  for (int v = 1; v < limit; ++v)
    if (v != ntax && found[at(v)] == ntax) {
      ++descendants_of_root;
      if (descendants_of_root == 1) top = v;
    }
  if (descendants_of_root > 1) top = ntax;
  number[at(top)] = place.top;
  for (const int v : inside) ancestors[at(v)] = -1;
  for (int v = ntax + 1; v < limit; ++v)
    if (number[at(v)] < 0 && !inside.empty()) {
      number[at(v)] = inside.back();
      inside.pop_back();
    }
  for (int v = 1; v < limit; ++v)
    if (v != ntax && v != top) ancestors[at(number[at(v)])] = number[at(found[at(v)])];
}

std::vector<int> ancestors_of(const std::vector<tree_node>& tree) {
  std::vector<int> ancestors(tree.begin(), tree.end());
  ancestors[at(matrix.ntax)] = -1;
  return ancestors;
}

/// False, and nothing kept, where it is worse than the tree was: states at the ends of a sector
/// stand for what lies beyond them, exactly only for some kinds of characters.
bool store_if_no_worse(std::vector<int> ancestors, double before) {
  const tree_span slot = take_slot(true);
  record_from_ancestors(ancestors, slot, matrix.ntax);
  const double score = score_of_stored_tree(store.ntrees - 1);
  if (score <= before + 1e-6) return true;
  set_tree_count(store, store.ntrees - 1);
  return false;
}

bool is_usable(const sector_place& place, const std::vector<tree_node>& found) {
  return found.size() == at(2 * place.taxa - 1) && check_tree_record(found, place.taxa).empty();
}

/// The tree without groups but those of the sector and of its terminals.
std::vector<int> without_other_groups(const sector_place& place,
                                      const std::vector<int>& ancestors) {
  std::vector<std::uint8_t> stays(ancestors.size(), 0);
  stays[at(matrix.ntax)] = stays[at(place.top)] = 1;
  for (const std::int32_t terminal : place.terminals)
    for (int v = terminal; v != place.top && v >= 0; v = ancestors[at(v)]) stays[at(v)] = 1;
  std::vector<int> thinned(ancestors.size(), -1);
  for (std::size_t v = 0; v < ancestors.size(); ++v) {
    const bool terminal = v < at(matrix.ntax);
    if ((!terminal && !stays[v]) || ancestors[v] < 0) continue;
    int up = ancestors[v];
    while (!stays[at(up)]) up = ancestors[at(up)];
    thinned[v] = up;
  }
  return thinned;
}

/// The best tree with that sector, which is the only one there is something to say about.
void place_one_sector(const job_record& job, int task, const sector_result& found,
                      bool polytomous) {
  const sector_place& place = job.sectors[at(task)];
  if (!is_usable(place, found.tree)) return;
  std::vector<int> ancestors = ancestors_of(place.tree);
  put_in(place, found.tree, ancestors);
  if (!store_if_no_worse(ancestors, place.score_at_start)) return;
  int count = 1;
  if (polytomous) {
    constexpr int copies = 2;
    set_tree_count(store, store.ntrees - 1);
    for (count = 0; count < copies; ++count) {
      std::vector<int> thinned = without_other_groups(place, ancestors);
      record_from_ancestors(thinned, take_slot(true), matrix.ntax);
    }
  }
  group_trees(store.ntrees - count, store.ntrees,
              text_of("TreeSector_%i_%s", task, job.name.c_str()));
}

void combine_exclusive(const job_record& job, const std::vector<sector_result>& found_by_task) {
  std::vector<int> ancestors = ancestors_of(job.sectors[0].tree);
  int parts = 0;
  for (std::size_t i = 0; i < job.sectors.size(); ++i) {
    if (!is_usable(job.sectors[i], found_by_task[i].tree)) continue;
    put_in(job.sectors[i], found_by_task[i].tree, ancestors);
    ++parts;
  }
  if (parts == 0 || !store_if_no_worse(ancestors, job.sectors[0].score_at_start)) return;
  emit(text_of("Combined results from sectors in tree %i\n", store.ntrees - 1));
  group_trees(store.ntrees - 1, store.ntrees,
              text_of("Combination_%s_%i_sectors", job.name.c_str(), parts));
}

}  // namespace

void place_sector_results(const job_record& job, const std::vector<sector_result>& found_by_task) {
  if (job.sectors.empty() || job.sectors[0].tree.size() != at(store.nnodes)) return;
  const bool exclusive = job.kind == job_kind::exclusive_sectors;
  const bool all = exclusive && !job.partial;
  for (std::size_t i = 0; i < job.sectors.size(); ++i) {
    const polytree_wish wish = found_by_task[i].polytree;
    if (all && wish != polytree_wish::yes) continue;
    place_one_sector(job, static_cast<int>(i), found_by_task[i],
                     exclusive && wish != polytree_wish::no);
  }
  if (all) combine_exclusive(job, found_by_task);
}

}  // namespace zeb
