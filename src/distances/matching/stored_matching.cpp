#include "distances/matching/stored_matching.h"

#include <algorithm>

#include "base/errors.h"
#include "base/indices.h"
#include "base/random.h"
#include "distances/cut_trees.h"

namespace zeb {

stored_match match_stored_trees(const_tree_span first, const_tree_span second, int ntax,
                                const taxon_set& excluded, const matching_settings& how,
                                const std::function<void(double)>& poll) {
  const taxon_set set_a = taxa_of_tree(first, ntax) - excluded;
  const taxon_set set_b = taxa_of_tree(second, ntax) - excluded;
  if (std::min(set_a.count(), set_b.count()) < 2)
    error_end("Can't match trees of less than two taxa");
  const std::vector<int> taxa_a = members_of(set_a), taxa_b = members_of(set_b);
  const cut_tree a(cut_to_taxa(first, ntax, set_a), set_a.count());
  const cut_tree b(cut_to_taxa(second, ntax, set_b), set_b.count());
  std::vector<int> fixed(taxa_a.size(), -1);
  for (std::size_t i = 0; i < taxa_a.size() && !how.free; ++i)
    if (set_b.contains(taxa_a[i]))
      fixed[i] = static_cast<int>(std::ranges::lower_bound(taxa_b, taxa_a[i]) - taxa_b.begin());
  random_generator generator;
  seed_generator(generator);
  const taxon_match match = match_taxa(a, b, fixed, how.replications, generator, poll);

  stored_match out;
  out.shared = match.shared;
  out.at_most = match.at_most;
  out.partner.assign(at(ntax), -1);
  taxon_set matched_a(ntax), matched_b(ntax);
  std::vector<int> name_of(at(ntax), -1);
  for (std::size_t i = 0; i < taxa_a.size(); ++i) {
    if (match.map[i] < 0) continue;
    const int partner = taxa_b[at(match.map[i])];
    out.partner[at(taxa_a[i])] = partner;
    name_of[at(partner)] = taxa_a[i];
    matched_a.insert(taxa_a[i]);
    matched_b.insert(partner);
  }
  const cut_tree matched(cut_to_taxa(first, ntax, matched_a), matched_a.count());
  out.groups = matched.nodes() - matched.root() - 1;
  std::vector<int> names;
  for (const int taxon : matched_b) names.push_back(name_of[at(taxon)]);
  out.renamed = with_taxa(cut_to_taxa(second, ntax, matched_b), names, ntax);
  return out;
}

}  // namespace zeb
