#include "mapping/reconstructions.h"

#include <algorithm>
#include <map>

#include "base/indices.h"
#include "mapping/state_optimisation.h"
#include "mapping/value_ranges.h"

namespace zeb {

class value_choices {
 public:
  virtual ~value_choices() = default;
  virtual std::int64_t steps() const = 0;
  /// Ascending; empty where no terminal says anything.
  virtual std::vector<int> at_root() const = 0;
  virtual std::vector<int> below(int node, int above) const = 0;
  /// Of a terminal.
  virtual int nearest(int taxon, int above) const = 0;
};

namespace {

std::vector<std::uint8_t> allowed_values(const state_model& model, const tree_shape& shape,
                                         std::span<const std::uint32_t> allowed) {
  if (allowed.empty()) return {};
  const std::size_t n = model.size();
  std::vector<std::uint8_t> marks(shape.nodes() * n, 1);
  for (const int node : shape.inner) {
    std::uint32_t known = 0;
    for (std::size_t i = 0; i < n; ++i) known |= std::uint32_t{1} << model.value(i);
    const std::uint32_t wanted = allowed[at(node)] & known;
    if (wanted == 0) continue;
    for (std::size_t i = 0; i < n; ++i)
      marks[at(node) * n + i] = (wanted >> model.value(i) & 1U) != 0;
  }
  return marks;
}

class state_choices final : public value_choices {
 public:
  state_choices(const tree_shape& shape, int character, std::span<const std::uint32_t> allowed)
      : root_(shape.root()),
        model_(character),
        optimiser_(model_, shape, polytomy_kind::hard, allowed_values(model_, shape, allowed)) {
    for (std::size_t i = 0; i < model_.size(); ++i) number_[at(model_.value(i))] = i;
  }
  std::int64_t steps() const override { return optimiser_.steps(); }
  std::vector<int> at_root() const override {
    std::vector<int> states;
    for (std::size_t i = 0; i < model_.size(); ++i)
      if (optimiser_.in_final(root_, i)) states.push_back(model_.value(i));
    return states;
  }
  std::vector<int> below(int node, int above) const override {
    std::vector<int> states;
    for (std::size_t i = 0; i < model_.size(); ++i)
      if (optimiser_.follows(node, number_[at(above)], i)) states.push_back(model_.value(i));
    return states;
  }
  int nearest(int taxon, int above) const override {
    if (optimiser_.follows(taxon, number_[at(above)], number_[at(above)])) return above;
    return below(taxon, above).front();
  }

 private:
  int root_;
  state_model model_;
  state_optimiser optimiser_;
  std::size_t number_[32] = {};  // by state of the matrix
};

class range_choices final : public value_choices {
 public:
  range_choices(const tree_shape& shape, int character, int increment)
      : root_(shape.root()), increment_(increment), ranges_(character, shape) {}
  std::int64_t steps() const override { return ranges_.steps(); }
  std::vector<int> at_root() const override {
    return ranges_.any() ? values_in(ranges_.final(root_)) : std::vector<int>();
  }
  std::vector<int> below(int node, int above) const override {
    return values_in(ranges_.following(node, above));
  }
  int nearest(int taxon, int above) const override {
    const value_range cell = ranges_.down(taxon);
    return std::clamp(above, cell.low, cell.high);
  }

 private:
  std::vector<int> values_in(const value_range& range) const {
    std::vector<int> values = {range.low};
    for (int v = range.low + increment_; increment_ > 0 && v < range.high; v += increment_)
      values.push_back(v);
    if (range.high > range.low) values.push_back(range.high);
    return values;
  }

  int root_;
  int increment_;
  value_ranges ranges_;
};

}  // namespace

reconstruction_list::reconstruction_list(const tree_shape& shape, int character,
                                         const reconstruction_rules& rules)
    : shape_(shape),
      possible_(shape.nodes()),
      values_(shape.nodes(), -1),
      open_(shape.inner.size()),
      chosen_(shape.inner.size(), 0) {
  if (matrix.characters[at(character)].is_continuous)
    choices_ = std::make_unique<range_choices>(shape, character, rules.increment);
  else
    choices_ = std::make_unique<state_choices>(shape, character, rules.allowed);
  find_possible_values();
  count_them();
}

reconstruction_list::~reconstruction_list() = default;

std::int64_t reconstruction_list::steps() const { return choices_->steps(); }

void reconstruction_list::find_possible_values() {
  possible_[at(shape_.root())] = choices_->at_root();
  for (const int node : shape_.inner) {
    if (node == shape_.root()) continue;
    std::vector<int>& values = possible_[at(node)];
    for (const int above : possible_[at(shape_.ancestor(node))]) {
      const std::vector<int> more = choices_->below(node, above);
      values.insert(values.end(), more.begin(), more.end());
    }
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
  }
}

// Once a node has a value, its descendants' choices don't touch each other: the numbers of ways
// multiply, and add up over a node's values.
void reconstruction_list::count_them() {
  if (possible_[at(shape_.root())].empty()) return;
  std::vector<std::map<int, double>> ways(shape_.nodes());
  for (auto node = shape_.inner.rbegin(); node != shape_.inner.rend(); ++node)
    for (const int value : possible_[at(*node)]) {
      double product = 1;
      for (const int d : shape_.lists.children(*node)) {
        if (d < matrix.ntax) continue;
        double sum = 0;
        for (const int below : choices_->below(d, value)) sum += ways[at(d)][below];
        product *= sum;
      }
      ways[at(*node)][value] = product;
    }
  count_ = 0;
  for (const auto& [value, number] : ways[at(shape_.root())]) count_ += number;
}

/// Choices of the internal node at that place of the order, given what its ancestor has.
void reconstruction_list::choose(std::size_t place) {
  const int node = shape_.inner[place];
  open_[place] = node == shape_.root() ? choices_->at_root()
                                       : choices_->below(node, values_[at(shape_.ancestor(node))]);
  chosen_[place] = 0;
  values_[at(node)] = open_[place].front();
}

bool reconstruction_list::next() {
  std::size_t place = 0;
  if (begun_) {
    place = open_.size();
    while (place > 0 && chosen_[place - 1] + 1 >= open_[place - 1].size()) --place;
    if (place == 0) return false;
    const std::size_t moved = place - 1;
    values_[at(shape_.inner[moved])] = open_[moved][++chosen_[moved]];
  }
  begun_ = true;
  if (possible_[at(shape_.root())].empty()) {
    open_.clear();
    return true;
  }
  for (; place < open_.size(); ++place) choose(place);
  for (int t = 0; t < matrix.ntax; ++t)
    if (shape_.has(t)) values_[at(t)] = choices_->nearest(t, values_[at(shape_.ancestor(t))]);
  return true;
}

}  // namespace zeb
