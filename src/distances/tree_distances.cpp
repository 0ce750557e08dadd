#include "distances/tree_distances.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <string>

#include "base/errors.h"
#include "base/indices.h"
#include "distances/agreement_subtree.h"
#include "distances/cut_trees.h"
#include "distances/paced_progress.h"
#include "distances/quartets.h"
#include "distances/shared_splits.h"
#include "matrix/matrix.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr double most_pairs = 25e6;

struct measure_row {
  std::string_view name;
  int fewest_taxa;
};
constexpr std::array measures = {
    measure_row{"Robinson-Foulds distances", 2},
    measure_row{"Triplet distances", 3},
    measure_row{"Quartet distances", 4},
    measure_row{"Taxa beyond agreement", 2},
};
const measure_row& row_of(distance_measure measure) {
  return measures[static_cast<std::size_t>(measure)];
}

double share(double value, double most, bool wanted) {
  if (!wanted) return value;
  return most > 0 ? value / most : 0;
}

double distance_of(const cut_tree& a, const cut_tree& b, const compared_trees_request& request,
                   distance_measure measure) {
  switch (measure) {
    case distance_measure::triplets:
    case distance_measure::quartets: {
      const resolution_counts counts =
          measure == distance_measure::triplets ? compare_triplets(a, b) : compare_quartets(a, b);
      return share(static_cast<double>(counts.distance()), static_cast<double>(counts.all),
                   request.normalised);
    }
    case distance_measure::agreement: {
      const auto kept = request.unrooted ? unrooted_agreement_subtree(a, b, [](double) {})
                                         : agreement_subtree(a, b);
      return share(a.terminals - static_cast<int>(kept.size()), a.terminals, request.normalised);
    }
    default: {
      const auto in_a = split_keys(a.ancestors, a.terminals, request.unrooted);
      const auto in_b = split_keys(b.ancestors, b.terminals, request.unrooted);
      const auto all = static_cast<int>(in_a.size() + in_b.size());
      return share(all - 2 * keys_in_both(in_a, in_b), all, request.normalised);
    }
  }
}

// The trees of a request, cut alike where that is possible.
class comparison {
 public:
  comparison(const compared_trees_request& request, distance_measure measure)
      : request_(request), measure_(measure), progress_(std::string(name_of(measure))) {
    numbers_ = request.rows;
    numbers_.insert(numbers_.end(), request.columns.begin(), request.columns.end());
    std::vector<const_tree_span> trees;
    for (const int number : numbers_) {
      trees.push_back(stored_tree(number));
      taxa_.push_back(taxa_of_tree(trees.back(), matrix.ntax) - request.excluded);
    }
    const taxon_set shared = shared_taxa(trees, matrix.ntax) - request.excluded;
    out_.same_taxa = request.common || std::ranges::all_of(taxa_, [&](const taxon_set& taxa) {
                       return taxa == shared;
                     });
    if (out_.same_taxa) cut_all(shared);
  }

  distance_matrix run() {
    out_.values.assign(rows() * columns(), no_fraction);
    if (out_.same_taxa && measure_ == distance_measure::groups)
      count_shared_groups();
    else
      compare_pairs();
    return std::move(out_);
  }

 private:
  std::size_t rows() const { return request_.rows.size(); }
  std::size_t columns() const { return request_.column_trees().size(); }
  // Place of a column among all the trees.
  std::size_t column_tree(std::size_t column) const {
    return request_.is_square() ? column : rows() + column;
  }
  double& value(std::size_t row, std::size_t column) {
    return out_.values[row * columns() + column];
  }

  void cut_all(const taxon_set& shared) {
    const int fewest = fewest_taxa_for(measure_);
    if (shared.count() < fewest) error_end_f("The trees share less than %i taxa", fewest);
    for (const int number : numbers_)
      cut_.emplace_back(cut_to_taxa(stored_tree(number), matrix.ntax, shared), shared.count());
  }

  void count_shared_groups() {
    std::vector<const_tree_span> trees;
    for (const cut_tree& tree : cut_) trees.emplace_back(tree.ancestors);
    const shared_split_counts counts(trees, cut_.front().terminals, request_.unrooted,
                                     [&](double done) { progress_.poll(done, 1); });
    for (std::size_t r = 0; r < rows(); ++r)
      for (std::size_t c = 0; c < columns(); ++c) {
        const std::size_t other = column_tree(c);
        value(r, c) = share(counts.distance(r, other),
                            counts.groups_of(r) + counts.groups_of(other), request_.normalised);
      }
  }

  void compare_pairs() {
    const double pairs = static_cast<double>(rows()) * static_cast<double>(columns());
    double done = 0;
    for (std::size_t r = 0; r < rows(); ++r)
      for (std::size_t c = 0; c < columns(); ++c) {
        progress_.poll(done++, pairs);
        value(r, c) = request_.is_square() && c < r ? value(c, r) : compare_pair(r, column_tree(c));
      }
  }

  double compare_pair(std::size_t a, std::size_t b) {
    if (a == b) return 0;
    if (out_.same_taxa) return distance_of(cut_[a], cut_[b], request_, measure_);
    const taxon_set shared = taxa_[a] & taxa_[b];
    const int n = shared.count();
    if (n < fewest_taxa_for(measure_)) return no_fraction;
    const auto cut = [&](std::size_t t) {
      return cut_tree(cut_to_taxa(stored_tree(numbers_[t]), matrix.ntax, shared), n);
    };
    return distance_of(cut(a), cut(b), request_, measure_);
  }

  const compared_trees_request& request_;
  distance_measure measure_;
  paced_progress progress_;
  std::vector<int> numbers_;     // rows, then columns that aren't rows
  std::vector<taxon_set> taxa_;  // by place in `numbers_`
  std::vector<cut_tree> cut_;    // the same; empty where pairs are cut by themselves
  distance_matrix out_;
};

}  // namespace

int fewest_taxa_for(distance_measure measure) { return row_of(measure).fewest_taxa; }

std::string_view name_of(distance_measure measure) { return row_of(measure).name; }

distance_matrix distances_of_trees(const compared_trees_request& request,
                                   distance_measure measure) {
  const double pairs =
      static_cast<double>(request.rows.size()) * static_cast<double>(request.column_trees().size());
  if (pairs > most_pairs) error_end_f("Can't compare more than %.0f pairs of trees", most_pairs);
  if (measure == distance_measure::quartets && matrix.ntax > most_terminals_of_quartets)
    error_end_f("Can't count quartets of more than %i taxa", most_terminals_of_quartets);
  return comparison(request, measure).run();
}

}  // namespace zeb
