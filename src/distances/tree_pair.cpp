#include "distances/tree_pair.h"

#include "base/errors.h"
#include "base/indices.h"
#include "language/list_text.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {

cut_tree tree_pair::cut(int number) const {
  return {cut_to_taxa(stored_tree(number), matrix.ntax, taxa), taxa.count()};
}

taxon_set tree_pair::stored_taxa(const std::vector<int>& terminals) const {
  const std::vector<int> numbers = members_of(taxa);
  taxon_set stored(taxa.size());
  for (const int t : terminals) stored.insert(numbers[at(t)]);
  return stored;
}

tree_pair pair_of(int first, int second, const taxon_set& excluded) {
  tree_pair pair{first, second,
                 (taxa_of_tree(stored_tree(first), matrix.ntax) &
                  taxa_of_tree(stored_tree(second), matrix.ntax)) -
                     excluded};
  if (pair.taxa.count() < 2) error_end_f("Trees %i and %i share less than two taxa", first, second);
  return pair;
}

tree_pair pair_of(const compared_trees_request& request) {
  const int second = request.is_square() ? request.rows.back() : request.columns.front();
  return pair_of(request.rows.front(), second, request.excluded);
}

std::string names_of_taxa(const taxon_set& taxa, std::size_t column) {
  std::vector<std::string> names;
  for (const int taxon : taxa) names.push_back(taxon_label(taxon));
  return wrapped_words(names, column);
}

}  // namespace zeb
