#include "search/sectors/sectors.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "engine/passes/passes.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/sectors/sector_choice.h"

namespace zeb {

sector_settings sectors;

namespace {

constexpr int fewest_taxa = 8;

/// The sectors of one tree.
class sector_round {
 public:
  sector_round(search_context& context, std::span<std::int32_t> tree,
               const sector_settings& options)
      : context_(context), options_(options), tree_(tree), score_(tree_length(context.data, tree)) {
    note(score_);
  }
  double run();

 private:
  void search_random();
  /// Sectors of one size. False: the search is over.
  bool search_size(int size, int selections);
  void search_exclusive();
  void search_constrained();
  std::vector<tree_sector> forks() const;
  void search_around();
  /// True if the tree changed.
  bool search(const tree_sector& sector);
  void swap_whole_tree();
  /// True if the whole tree was swapped.
  bool swap_if_due(int size);
  void note(double score);
  int taxa() const { return context_.data.n; }
  bool is_over() const {
    return interrupted() ||
           (options_.findscore > 0 &&
            is_within_bound(score_, options_.findscore, kind_of_scores(context_.data)));
  }

  search_context& context_;
  const sector_settings& options_;
  std::span<std::int32_t> tree_;
  double score_;
  int changes_ = 0;  // since the whole tree was swapped
};

void sector_round::note(double score) {
  if (context_.best_score < 0 ||
      is_better_score(score, context_.best_score, kind_of_scores(context_.data)))
    context_.best_score = score;
  note_score(context_, score);
}

// Tried to leave out sectors whose clades had been searched in the same form without a gain, also
// in other replications: scores reached in the same time were no better.
bool sector_round::search(const tree_sector& sector) {
  const bool changed = search_sector(context_, tree_, sector, options_.each, &score_);
  if (changed) {
    ++changes_;
    note(score_);
  }
  report_status(context_, score_, false);
  return changed;
}

void sector_round::swap_whole_tree() {
  if (interrupted()) return;
  context_.shown.stage = stage_tbr;
  score_ = tbr_swap(context_, tree_, {});
  context_.shown.stage = stage_sector;
  changes_ = 0;
  note(score_);
}

bool sector_round::swap_if_due(int size) {
  const int often = size > options_.each.godrift ? options_.dglobal : options_.global;
  if (often == 0 || changes_ < often) return false;
  swap_whole_tree();
  return true;
}

bool sector_round::search_size(int size, int selections) {
  std::vector<std::uint8_t> taken(tree_.size(), 0);
  int failures = 0;
  for (int i = 0; i < selections && !is_over(); ++i) {
    const tree_sector sector = random_sector(tree_, taxa(), size, context_.random, taken);
    if (search(sector)) {
      swap_if_due(size);
    } else if (++failures == options_.moveon) {
      break;
    }
  }
  return !is_over();
}

void sector_round::search_random() {
  const int half = std::min(taxa() / 2, largest_sector(context_.data, options_.each));
  int size = std::min(options_.minsize, half);
  if (size < 4) return;
  const int largest = std::max(size, std::min(options_.maxsize, half));
  for (int step = 0;; ++step) {
    const int listed = std::min(step, options_.selection_count - 1);
    const std::int64_t by_factor =
        std::int64_t{taxa()} * 100 / (std::int64_t{size} * std::max(1, options_.selfactor));
    const int selections = options_.selection_count > 0 ? options_.selections[at(listed)]
                                                        : static_cast<int>(by_factor);
    if (!search_size(size, selections)) break;
    int next = static_cast<int>(size + std::int64_t{size} * options_.increase / 100);
    if (next > largest && size * 75 / 100 <= largest) next = largest;
    if (next <= size || next > half) break;
    size = next;
  }
  if (changes_ > 0 && (options_.global > 0 || options_.dglobal > 0)) swap_whole_tree();
}

/// The numbers of divisions of the rounds go evenly from the first to the last.
void sector_round::search_exclusive() {
  const int rounds = options_.xss_rounds;
  const int most = std::max(2, (2 * taxa() - 1) / 10);
  for (int round = 0; round < rounds && !is_over(); ++round) {
    const int span = options_.divisions_last - options_.divisions;
    const int count = options_.divisions + (rounds > 1 ? span * round / (rounds - 1) : 0);
    for (const tree_sector& sector :
         exclusive_sectors(tree_, taxa(), std::min(count, most), options_.xeven, context_.random)) {
      if (is_over()) return;
      const bool has_base = tree_[at(sector.top)] == taxa();
      if (sector.terminals.size() > 3 || (has_base && options_.chkroot)) search(sector);
    }
    if ((round + 1) % std::max(1, options_.xss_global) == 0 || round + 1 == rounds)
      swap_whole_tree();
  }
}

std::vector<tree_sector> sector_round::forks() const {
  std::vector<std::uint8_t> is_group(tree_.size(), 0);
  if (context_.constraints_in_force)
    context_.constraints_in_force->protect(context_.data, is_group);
  return sectors_of_groups(tree_, taxa(), is_group, std::max(3, options_.minfork),
                           options_.maxfork);
}

/// A sector that changes leaves the other forks as they are; a swap of the whole tree may not.
void sector_round::search_constrained() {
  for (int round = 0; round < options_.css_rounds; ++round) {
    std::vector<tree_sector> sectors = forks();
    for (std::size_t i = 0; i < sectors.size(); ++i) {
      if (is_over()) return;
      const int fork = static_cast<int>(sectors[i].terminals.size());
      if (search(sectors[i]) && swap_if_due(fork)) sectors = forks();
    }
  }
  if (changes_ > 0 && (options_.global > 0 || options_.dglobal > 0)) swap_whole_tree();
}

void sector_round::search_around() {
  search(sector_around(tree_, taxa(), options_.center, options_.diameter));
}

double sector_round::run() {
  if (taxa() < fewest_taxa) return score_;
  context_.shown.stage = stage_sector;
  switch (options_.selection) {
    case sector_settings::exclusive:
      search_exclusive();
      break;
    case sector_settings::constrained:
      search_constrained();
      break;
    case sector_settings::around:
      search_around();
      break;
    default:
      search_random();
  }
  return score_;
}

}  // namespace

double search_sectors(search_context& context, std::span<std::int32_t> tree,
                      const sector_settings& options) {
  return sector_round(context, tree, options).run();
}

void tell_limit_of_sectors(const search_context& context, const sector_settings& options) {
  const int largest = largest_sector(context.data, options.each);
  int wanted = options.maxsize;
  if (options.selection == sector_settings::exclusive)
    wanted = context.data.n / std::max(1, std::min(options.divisions, options.divisions_last));
  if (std::min(wanted, context.data.n / 2) <= largest) return;
  emit(text_of("Note: memory allows sectors of up to %i terminals only (see \"mxram\").\n",
               largest));
}

}  // namespace zeb
