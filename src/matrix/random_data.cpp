#include "matrix/random_data.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "base/indices.h"
#include "base/message_text.h"
#include "base/random.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "matrix/matrix_memory.h"

namespace zeb {
namespace {

void begin_made_matrix(int ntax, int nchar, const std::string& title) {
  wipe_matrix();
  make_room_for_matrix(ntax, nchar);
  begin_matrix(ntax, nchar);
  set_matrix_source(title, title);
  for (int c = 0; c < nchar; ++c) set_character_type(c, numeric_data);
}

// Nodes so that each comes after its ancestor; the root, which has none, is first.
std::vector<int> rootward_first(const std::vector<std::int32_t>& ancestors, int ntax) {
  const int nnodes = static_cast<int>(ancestors.size());
  std::vector<std::vector<int>> descendants(ancestors.size());
  for (int n = 0; n < nnodes; ++n) {
    // Entry `ntax` of a tree isn't an ancestor, and 0 marks absent nodes.
    const int ancestor = ancestors[at(n)];
    if (n != ntax && ancestor >= ntax && ancestor < nnodes) descendants[at(ancestor)].push_back(n);
  }
  std::vector<int> order = {ntax};
  for (std::size_t i = 0; i < order.size() && order.size() <= ancestors.size(); ++i) {
    const std::vector<int>& next = descendants[at(order[i])];
    order.insert(order.end(), next.begin(), next.end());
  }
  return order;
}

constexpr double draws = random_generator::largest + 1.0;

/// How often a character changes on each branch: the one that leads to a node of the order, which
/// begins with the root.
class change_drawing {
 public:
  change_drawing(const evolution_model& model, std::vector<int> order)
      : model_(model), order_(std::move(order)) {
    if (model_.model == evolution_model::changes) {
      changes_.resize(order_.size());
      return;
    }
    for (std::size_t i = 0; i < order_.size(); ++i) kept_.push_back(draws * probability_to_stay());
  }
  const std::vector<int>& order() const { return order_; }

  void begin_character() {
    if (changes_.size() < 2) return;
    std::fill(changes_.begin(), changes_.end(), 0);
    const auto branches = static_cast<int>(changes_.size()) - 1;
    for (int k = static_cast<int>(model_.amount); k > 0; --k) ++changes_[at(1 + draw() % branches)];
  }
  int on_branch(std::size_t place) const {
    return changes_.empty() ? draw() >= kept_[place] : changes_[place];
  }

 private:
  double probability_to_stay() const {
    switch (model_.model) {
      case evolution_model::uniform:
        return std::exp(-model_.amount * (draw() / draws));
      case evolution_model::exponential:
        return std::exp(model_.amount * std::log((draw() + 1.0) / draws));
      default:
        return model_.amount / 100.0;
    }
  }

  evolution_model model_;
  std::vector<int> order_;
  std::vector<double> kept_;  // draws below it leave the state as it is
  std::vector<int> changes_;  // of the present character; empty where each branch decides anew
};

/// The state after so many changes, each to one of the other states.
int changed_state(int state, int changes, int nstates) {
  for (int k = changes; k > 0 && nstates > 1; --k) {
    state = (state + 1 + draw() % (nstates - 1)) % nstates;
  }
  return state;
}

}  // namespace

void make_random_matrix(int nchar, int ntax, int nstates) {
  begin_made_matrix(ntax, nchar, text_of("'Random Data (%i states)'", nstates));
  reseed();
  for (int t = 0; t < ntax; ++t) {
    set_taxon_name(t, "TAX" + std::to_string(t));
    for (int c = 0; c < nchar; ++c) set_cell(t, c, 1U << (draw() % nstates));
  }
  finish_matrix();
}

std::string title_of(const evolution_model& model) {
  switch (model.model) {
    case evolution_model::uniform:
      return text_of("Data, uniform branch lengths (max.=%.2f)", model.amount);
    case evolution_model::exponential:
      return text_of("Data, exponential branch lengths (mean=%.2f)", model.amount);
    case evolution_model::changes:
      return text_of("Data, %.0f changes per character", model.amount);
    case evolution_model::stasis:
      break;
  }
  return text_of("Data, p(stasis)=%.2f", model.amount);
}

void make_matrix_from_tree(const std::vector<std::int32_t>& ancestors, const evolution_model& model,
                           int nchar, int nstates) {
  const int ntax = matrix.ntax;
  std::vector<std::string> names;
  for (int t = 0; t < ntax; ++t) names.emplace_back(taxon_name(t));
  begin_made_matrix(ntax, nchar, "'" + title_of(model) + "'");
  reseed();
  for (int t = 0; t < ntax; ++t) set_taxon_name(t, names[at(t)]);
  change_drawing changes(model, rootward_first(ancestors, ntax));
  std::vector<int> state(ancestors.size());
  for (int c = 0; c < nchar; ++c) {
    changes.begin_character();
    for (std::size_t i = 0; i < changes.order().size(); ++i) {
      const int n = changes.order()[i];
      state[at(n)] =
          i == 0 ? draw() % nstates
                 : changed_state(state[at(ancestors[at(n)])], changes.on_branch(i), nstates);
      if (n < ntax) set_cell(n, c, 1U << state[at(n)]);
    }
  }
  finish_matrix();
}

}  // namespace zeb
