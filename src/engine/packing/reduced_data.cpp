#include "engine/packing/reduced_data.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "engine/fit/implied_weighting.h"
#include "engine/kernels/kernel_binding.h"
#include "engine/packing/copied_fields.h"
#include "engine/packing/set_memory.h"
#include "engine/passes/passes.h"
#include "engine/wide/wide_sets.h"

namespace zeb {
namespace {

constexpr std::size_t cache_line = 64;

/// The nodes from the ingroup's to `top`.
std::vector<std::int32_t> path_to(const search_data& data, int top) {
  std::vector<std::int32_t> path;
  for (int v = top; v != data.n; v = data.tree.anc[at(v)]) path.push_back(v);
  std::reverse(path.begin(), path.end());
  return path;
}

word* room_for(std::size_t words) {
  return calloc_low<word>(words + words_per_block, cache_line).data();
}

/// Preliminary sets of all that lies outside of the clade where the path ends.
const word* packed_outside(const search_data& data, std::span<const std::int32_t> path) {
  word* now = room_for(at(data.nwords));
  word* next = room_for(at(data.nwords));
  word* const unions = room_for(at(data.nwords));
  std::copy_n(data.sets[0].down, data.nwords, now);
  for (const std::int32_t v : path.subspan(1)) {
    data.kernels.remake_down(now, data.sets[at(data.tree.sister[at(v)])].down, next, unions,
                             data.layout);
    std::swap(now, next);
  }
  return now;
}

const word* wide_sets_of(const search_data& data, int v) {
  return data.wide.down + at(v) * data.wide.down_words;
}

const word* wide_outside(const search_data& data, std::span<const std::int32_t> path) {
  word* now = room_for(data.wide.down_words);
  word* next = room_for(data.wide.down_words);
  std::copy_n(wide_sets_of(data, 0), data.wide.down_words, now);
  std::vector<std::int64_t> steps(data.wide.steps.size());
  for (const std::int32_t v : path.subspan(1)) {
    for (const wide_part& part : data.wide.parts)
      part.kind->down(part.characters, now, wide_sets_of(data, data.tree.sister[at(v)]), next,
                      steps.data());
    std::swap(now, next);
  }
  return now;
}

/// The packed words of the reduced data's terminals, in the outer data.
std::vector<const word*> terminal_words(const search_data& outer, const tree_sector& sector,
                                        const word* outside) {
  std::vector<const word*> words = {outside};
  for (const std::int32_t v : sector.terminals) words.push_back(outer.sets[at(v)].down);
  return words;
}

/// Which characters matter in the part, and what becomes of the others.
class sector_characters {
 public:
  sector_characters(const search_data& outer, std::span<const word* const> terminals);
  /// By entry of the outer data: 1 where the steps depend on the arrangement.
  const std::vector<std::uint8_t>& kept() const { return kept_; }

 private:
  /// A state that all terminals but one have costs one step at most; where none has more, the steps
  /// are the same in any arrangement.
  bool field_matters(const pack_entry& e, int field) const {
    const auto g = at(e.group);
    const int place = e.first_field + field;
    const int in_word = fields_per_word[g];
    const word w = lacking_twice_[at(outer_.group_start[g] + place / in_word)];
    const word mask = field_mask[g];
    return (w >> (place % in_word * field_bits[g]) & mask) == mask;
  }

  const search_data& outer_;
  std::vector<word> lacking_twice_;  // states that two terminals at least lack
  std::vector<std::uint8_t> kept_;
};

sector_characters::sector_characters(const search_data& outer,
                                     std::span<const word* const> terminals)
    : outer_(outer), lacking_twice_(at(outer.nwords), 0) {
  std::vector<word> lacking(at(outer.nwords), 0);
  for (const word* const sets : terminals) {
    for (std::size_t w = 0; w < lacking.size(); ++w) {
      lacking_twice_[w] |= lacking[w] & ~sets[w];
      lacking[w] |= ~sets[w];
    }
  }
  for (const pack_entry& e : outer.entries) {
    bool matters = false;
    for (int f = 0; f < e.fields * e.repeat && !matters; ++f) matters = field_matters(e, f);
    kept_.push_back(matters);
  }
}

void number_terminals(search_data& data, int terminals) {
  data.n = data.all_taxa = terminals;
  data.nodes = 2 * terminals - 1;
  data.pack_to_taxon = alloc_low<std::int32_t>(at(terminals));
  data.taxon_to_pack = alloc_low<std::int32_t>(at(terminals));
  for (int t = 0; t < terminals; ++t) data.pack_to_taxon[at(t)] = data.taxon_to_pack[at(t)] = t;
}

/// The sets of what is outside, as of a clade, would be wrong for rooted characters.
void root_at_part(search_data& inner, const search_data& outer, int top) {
  const std::size_t above = at(outer.tree.anc[at(top)]);
  for (const wide_part& part : inner.wide.parts)
    for (wide_character& c : part.characters)
      if (part.kind->is_rooted(c))
        c.model = part.kind->model_of_part(c, outer.wide.final + above * outer.wide.final_words,
                                           wide_sets_of(outer, top), inner.wide.down);
}

void copy_wide_characters(search_data& inner, const search_data& outer, const tree_sector& sector,
                          const word* outside) {
  copy_wide_parts(inner, outer);
  const std::size_t words = inner.wide.down_words;
  ALWAYS_CHECK(words == outer.wide.down_words, "wide sets of a sector");
  std::copy_n(outside, words, inner.wide.down);
  if (outer.has_asymmetric) root_at_part(inner, outer, sector.top);
  for (std::size_t t = 0; t < sector.terminals.size(); ++t)
    std::copy_n(wide_sets_of(outer, sector.terminals[t]), words, inner.wide.down + (t + 1) * words);
}

/// Characters that are left out stay what they are on the tree in work.
void add_fits_left_out(search_data& inner, const search_data& outer,
                       const std::vector<std::uint8_t>& kept) {
  inner.base_fit = outer.base_fit;
  inner.base_set_sums = alloc_low<double>(outer.base_set_sums.size());
  std::copy(outer.base_set_sums.begin(), outer.base_set_sums.end(), inner.base_set_sums.begin());
  for (std::size_t i = 0; i < kept.size(); ++i) {
    if (kept[i]) continue;
    const fit_counter& c = outer.counters[i];
    const double value = c.weight * c.fit[c.steps];
    (c.set < 0 ? inner.base_fit : inner.base_set_sums[at(c.set)]) += value;
  }
}

/// Counters begin with the steps that their characters have outside: those on the whole tree less
/// those of the sector as it stands, which have just been counted.
void count_from_outside(search_data& inner, const search_data& outer,
                        const std::vector<std::uint8_t>& kept) {
  std::size_t next = 0;
  for (std::size_t i = 0; i < kept.size(); ++i) {
    if (!kept[i]) continue;
    fit_counter& c = inner.counters[next++];
    const std::int32_t outside = outer.counters[i].steps - c.steps;
    c.fit = outer.counters[i].fit + outside;
    c.concave_from = std::max(0, outer.counters[i].concave_from - outside);
  }
  for (std::size_t p = 0; p < inner.wide.parts.size(); ++p)
    for (std::size_t i = 0; i < inner.wide.parts[p].characters.size(); ++i) {
      wide_character& c = inner.wide.parts[p].characters[i];
      const std::int64_t outside = outer.wide.parts[p].characters[i].steps - c.steps;
      c.min_steps -= static_cast<std::int32_t>(outside);
    }
}

}  // namespace

/// As if no character was left out.
int largest_sector(const search_data& data, int slots, int slack) {
  const std::size_t packed = at(std::max(data.nwords, words_per_block));
  const std::size_t wide = data.wide.down_words + data.wide.final_words + data.wide.branch_words;
  // Sets, what the undo log may take of them, and the unions of the swapper's clusters.
  const std::size_t of_sets = (4 * packed + wide) * sizeof(word) * 9 / 4 + 2 * packed;
  const std::size_t of_node = of_sets + at(slots) * sizeof(std::int32_t) + 800;
  const std::size_t fixed = 400 * packed + sizeof(fit_counter) * data.entries.size() + 200'000;
  const std::size_t free = arena_free();
  if (free <= fixed) return 0;
  const std::size_t usable = (free - fixed) / at(100 + slack) * 100;
  return static_cast<int>(std::min<std::size_t>(usable / of_node / 2, at(data.n)));
}

void prepare_reduced_data(search_data& inner, const search_data& outer, const tree_sector& sector,
                          double score) {
  ALWAYS_CHECK(sector.terminals.size() >= 3, "sector of a tree");
  const std::vector<std::int32_t> path = path_to(outer, sector.top);
  const std::vector<const word*> terminals =
      terminal_words(outer, sector, packed_outside(outer, path));
  const sector_characters characters(outer, terminals);
  inner = {};
  number_terminals(inner, static_cast<int>(terminals.size()));
  inner.long_words = outer.long_words;
  inner.uniform_mode = outer.uniform_mode;
  inner.per_char_mode = !outer.uniform_mode;
  inner.implied_on = outer.implied_on;
  inner.has_continuous = outer.has_continuous;
  place_entries(inner, outer, characters.kept());
  allocate_search_data(inner);
  copy_packed_characters(inner, outer, characters.kept(), terminals);
  if (outer.has_wide) copy_wide_characters(inner, outer, sector, wide_outside(outer, path));
  allocate_undo(inner);
  if (inner.implied_on) {
    add_fits_left_out(inner, outer, characters.kept());
    share_fit_tables(inner, outer, numbers_of(characters.kept()));
  }
  bind_kernels(inner, outer.kernels.width_bits);
  if (outer.whole) inner.whole = outer.whole->of_sector(outer, sector, inner);
  const std::vector<std::int32_t> tree = tree_of_sector(outer.tree.anc, outer.n, sector);
  const double own_score = tree_length(inner, tree);
  if (inner.implied_on) {
    count_from_outside(inner, outer, characters.kept());
    weigh_counters(inner);
    if (inner.whole) inner.base_fit += score - tree_length(inner, tree);
  } else {
    inner.wide.base_cost = score - own_score;
  }
}

std::vector<std::int32_t> tree_of_sector(std::span<const std::int32_t> outer_tree, int n,
                                         const tree_sector& sector) {
  const int inner_n = static_cast<int>(sector.terminals.size()) + 1;
  std::vector<std::int32_t> tree(at(2 * inner_n - 1), -1);
  std::vector<std::int32_t> number(outer_tree.size(), -1);
  int next = inner_n + 1;
  tree[0] = inner_n;
  tree[at(inner_n)] = 2 * inner_n - 1;
  const auto number_of = [&](int v) -> std::int32_t& {
    if (number[at(v)] < 0) number[at(v)] = next++;
    return number[at(v)];
  };
  tree[at(number_of(sector.top))] = inner_n;
  for (std::size_t t = 0; t < sector.terminals.size(); ++t) {
    int v = sector.terminals[t];
    std::int32_t own = static_cast<std::int32_t>(t) + 1;
    while (v != sector.top && tree[at(own)] < 0) {
      v = outer_tree[at(v)];
      ALWAYS_CHECK(v > n && next <= 2 * inner_n - 1, "terminals of a sector");
      tree[at(own)] = number_of(v);
      own = number_of(v);
    }
  }
  return tree;
}

std::vector<std::int32_t> outer_nodes_of_sector(std::span<const std::int32_t> outer_tree,
                                                const tree_sector& sector,
                                                std::span<const std::int32_t> inner_tree) {
  const int inner_n = static_cast<int>(sector.terminals.size()) + 1;
  std::vector<std::int32_t> outer_of(inner_tree.size(), -1);
  for (std::size_t t = 0; t < sector.terminals.size(); ++t) {
    int v = sector.terminals[t];
    outer_of[t + 1] = v;
    for (std::int32_t own = inner_tree[t + 1]; own != inner_n && outer_of[at(own)] < 0;
         own = inner_tree[at(own)])
      outer_of[at(own)] = v = outer_tree[at(v)];
  }
  return outer_of;
}

void arrange_sector(std::span<std::int32_t> outer_tree, int n, const tree_sector& sector,
                    std::span<const std::int32_t> inner_tree) {
  const int inner_n = static_cast<int>(sector.terminals.size()) + 1;
  std::vector<std::int32_t> outer_of =
      outer_nodes_of_sector(outer_tree, sector, tree_of_sector(outer_tree, n, sector));
  // The top keeps its place on the outer tree.
  const int old_top =
      static_cast<int>(std::find(outer_of.begin(), outer_of.end(), sector.top) - outer_of.begin());
  int new_top = inner_n + 1;
  for (int v = inner_n + 1; v < static_cast<int>(inner_tree.size()); ++v)
    if (inner_tree[at(v)] == inner_n) new_top = v;
  std::swap(outer_of[at(old_top)], outer_of[at(new_top)]);
  for (std::size_t t = 0; t < sector.terminals.size(); ++t)
    outer_tree[at(sector.terminals[t])] = outer_of[at(inner_tree[t + 1])];
  for (int v = inner_n + 1; v < static_cast<int>(inner_tree.size()); ++v)
    if (v != new_top) outer_tree[at(outer_of[at(v)])] = outer_of[at(inner_tree[at(v)])];
}

}  // namespace zeb
