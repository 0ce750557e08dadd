#include "search/moves/clade_exchange.h"

#include <algorithm>
#include <array>
#include <functional>

#include "base/errors.h"
#include "base/indices.h"
#include "engine/joining.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"
#include "engine/passes/undo.h"
#include "engine/passes/waves.h"

namespace zeb {
namespace {

struct alignas(64) word_block {
  std::array<word, words_per_block> words;
};

/// Two trees of which one takes clades over.
class clade_exchange {
 public:
  clade_exchange(search_context& context, std::span<std::int32_t> target,
                 std::span<const std::int32_t> source, const exchange_rules& rules, double score);
  int run();
  double score() const { return score_; }

 private:
  void keep_clades_of_source();
  void read_target();
  std::vector<double> clade_lengths() const;
  double score_with(std::size_t i);
  double score_by_joining(std::size_t i);
  double score_of_whole_tree(const shared_clade& clade);
  std::vector<std::int32_t> holders() const;
  std::vector<std::size_t> best_set();
  bool is_gain(double score) const;
  bool sums_up() const {
    return blocks_ > 0 && !data_.implied_on && !data_.has_wide && !data_.whole &&
           !context_.constraints_in_force;
  }
  const word* kept_words(std::size_t i) const { return kept_[i * blocks_].words.data(); }
  score_kind kind() const { return kind_of_scores(data_); }

  search_context& context_;
  search_data& data_;
  std::span<std::int32_t> target_;
  std::span<const std::int32_t> source_;
  const exchange_rules& rules_;
  double score_;  // of the target
  std::vector<shared_clade> clades_;
  std::vector<double> target_lengths_;  // by node
  std::vector<double> source_lengths_;  // by entry of `clades_`
  const std::size_t blocks_;            // of a set of words
  std::vector<word_block> kept_;        // preliminary sets of the source's clades
  std::vector<std::int32_t> whole_;     // scratch: a tree
};

clade_exchange::clade_exchange(search_context& context, std::span<std::int32_t> target,
                               std::span<const std::int32_t> source, const exchange_rules& rules,
                               double score)
    : context_(context),
      data_(context.data),
      target_(target),
      source_(source),
      rules_(rules),
      score_(score),
      clades_(shared_clades(target, source, data_.n)),
      blocks_(at(data_.nwords) / words_per_block) {
  std::erase_if(clades_, [&](const shared_clade& c) { return c.forks < rules.minfork; });
  if (clades_.empty() || !sums_up()) return;
  keep_clades_of_source();
  read_target();
}

/// Of the tree in work: steps within the clade of each node.
std::vector<double> clade_exchange::clade_lengths() const {
  std::vector<double> lengths(at(data_.nodes), 0);
  std::vector<std::int32_t> order = {data_.tree.sister[0]};
  for (std::size_t i = 0; i < order.size(); ++i) {
    const std::size_t v = at(order[i]);
    if (order[i] < data_.n) continue;
    order.push_back(data_.tree.first[v]);
    order.push_back(data_.tree.second[v]);
  }
  for (auto i = order.rbegin(); i != order.rend(); ++i) {
    if (*i < data_.n) continue;
    const int a = data_.tree.first[at(*i)];
    const int b = data_.tree.second[at(*i)];
    lengths[at(*i)] = lengths[at(a)] + lengths[at(b)] +
                      join_cost(data_, {join_end::root, a}, {join_end::root, b}, no_bound);
  }
  return lengths;
}

void clade_exchange::keep_clades_of_source() {
  tree_length(data_, source_);
  const std::vector<double> lengths = clade_lengths();
  kept_.resize(clades_.size() * blocks_);
  for (std::size_t i = 0; i < clades_.size(); ++i) {
    source_lengths_.push_back(lengths[at(clades_[i].source)]);
    const word* const down = data_.sets[at(clades_[i].source)].down;
    for (std::size_t b = 0; b < blocks_; ++b)
      std::copy_n(down + b * words_per_block, words_per_block,
                  kept_[i * blocks_ + b].words.begin());
  }
}

void clade_exchange::read_target() {
  const double length = tree_length(data_, target_);
  ALWAYS_CHECK(is_same_score(length, score_, kind()), "score of an exchange of clades");
  target_lengths_ = clade_lengths();
}

double clade_exchange::score_by_joining(std::size_t i) {
  const int clade = clades_[i].target;
  const int sister = data_.tree.sister[at(clade)];
  begin_undo(data_);
  const int joint = detach(data_.tree, clade);
  repair_after_clip(data_, sister, clade);
  const word* const there = data_.branch_base + at(sister) * data_.set_stride;
  const auto joined = [&](const word* words) {
    return data_.kernels.cost_pair(words, there, data_.layout, static_cast<std::int32_t>(1e9));
  };
  const double old_cost = joined(data_.sets[at(clade)].down) + target_lengths_[at(clade)];
  const double new_cost = joined(kept_words(i)) + source_lengths_[i];
  attach(data_.tree, clade, joint, sister);
  if (!undo_sets(data_)) full_pass(data_);
  end_undo(data_);
  return score_ - old_cost + new_cost;
}

double clade_exchange::score_of_whole_tree(const shared_clade& clade) {
  whole_.assign(target_.begin(), target_.end());
  copy_clade(whole_, clade.target, source_, clade.source, data_.n);
  const double score = tree_length(data_, whole_);
  const auto& constraints = context_.constraints_in_force;
  return constraints && !constraints->obeyed(data_) ? unknown_score : score;
}

double clade_exchange::score_with(std::size_t i) {
  context_.rearrangements.add(1);
  return sums_up() ? score_by_joining(i) : score_of_whole_tree(clades_[i]);
}

bool clade_exchange::is_gain(double score) const {
  return rules_.equals ? is_within_bound(score, score_, kind())
                       : is_better_score(score, score_, kind());
}

/// The smallest clade that holds each, by entry; -1: none.
std::vector<std::int32_t> clade_exchange::holders() const {
  constexpr std::int32_t not_known = -2;
  std::vector<std::int32_t> holder(clades_.size());
  std::vector<std::int32_t> nearest(target_.size(), not_known);  // by node: itself, or above it
  nearest[at(data_.n)] = -1;
  for (std::size_t i = 0; i < clades_.size(); ++i)
    nearest[at(clades_[i].target)] = static_cast<std::int32_t>(i);
  for (std::size_t i = 0; i < clades_.size(); ++i) {
    const std::int32_t start = target_[at(clades_[i].target)];
    std::int32_t v = start;
    while (nearest[at(v)] == not_known) v = target_[at(v)];
    holder[i] = nearest[at(v)];
    for (v = start; nearest[at(v)] == not_known; v = target_[at(v)]) nearest[at(v)] = holder[i];
  }
  return holder;
}

/// Exchanges that gain most together, from the greatest gain to the least: of each clade either the
/// whole, or what is best for those within it. Gains of clades apart from each other add up, but
/// for what they do to the states between them.
std::vector<std::size_t> clade_exchange::best_set() {
  std::vector<double> gains(clades_.size());
  for (std::size_t i = 0; i < clades_.size(); ++i) gains[i] = score_ - score_with(i);
  const std::vector<std::int32_t> holder = holders();
  std::vector<double> within(clades_.size(), 0);  // best gain of those within
  std::vector<std::uint8_t> is_whole(clades_.size(), 0);
  for (std::size_t i = 0; i < clades_.size(); ++i) {
    const double apart = gains[i] - within[i];
    is_whole[i] = rules_.equals ? apart >= -tolerance_of(kind()) : apart > tolerance_of(kind());
    const double best = is_whole[i] ? gains[i] : within[i];
    if (holder[i] >= 0) within[at(holder[i])] += std::max(best, 0.0);
  }
  std::vector<std::size_t> chosen;
  std::vector<std::uint8_t> is_settled(clades_.size(), 0);  // with a clade that holds it
  for (std::size_t i = clades_.size(); i-- > 0;) {
    is_settled[i] = is_whole[i] || (holder[i] >= 0 && is_settled[at(holder[i])]);
    if (is_whole[i] && !(holder[i] >= 0 && is_settled[at(holder[i])])) chosen.push_back(i);
  }
  std::ranges::stable_sort(chosen, std::ranges::greater{}, [&](std::size_t i) { return gains[i]; });
  if (rules_.choose && chosen.size() > 1) chosen.resize(1);
  return chosen;
}

int clade_exchange::run() {
  int taken = 0;
  for (const std::size_t i : best_set()) {
    const double score = score_with(i);
    if (!is_gain(score)) continue;
    ++taken;
    score_ = score;
    copy_clade(target_, clades_[i].target, source_, clades_[i].source, data_.n);
    if (sums_up()) read_target();
  }
  return taken;
}

}  // namespace

int exchange_clades(search_context& context, std::span<std::int32_t> target,
                    std::span<const std::int32_t> source, const exchange_rules& rules,
                    double* score) {
  clade_exchange exchange(context, target, source, rules, *score);
  const int taken = exchange.run();
  *score = exchange.score();
  return taken;
}

}  // namespace zeb
