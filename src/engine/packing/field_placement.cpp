#include "engine/packing/field_placement.h"

#include <algorithm>
#include <numeric>

#include "base/indices.h"

namespace zeb {
namespace {

int words_for(int fields, int group) {
  return (fields + fields_per_word[at(group)] - 1) / fields_per_word[at(group)];
}

// ---- words of one weight each ----

/// Fields of one weight in one group. Only the last word may be partly used.
struct weight_class {
  int weight;
  int fields;
};
using class_list = std::vector<weight_class>;

int room_in_last_word(const weight_class& c, int group) {
  const int size = fields_per_word[at(group)];
  return (size - c.fields % size) % size;
}

weight_class* find_class(class_list& list, int weight) {
  const auto found = std::find_if(list.begin(), list.end(),
                                  [weight](const weight_class& c) { return c.weight == weight; });
  return found == list.end() ? nullptr : &*found;
}

std::array<class_list, 3> list_classes(const packing_plan& plan) {
  std::array<class_list, 3> lists;
  for (const pack_entry& e : plan.entries) {
    if (e.group > 2) continue;
    class_list& list = lists[at(e.group)];
    if (weight_class* c = find_class(list, e.weight))
      c->fields += e.fields * e.repeat;
    else
      list.push_back({e.weight, e.fields * e.repeat});
  }
  return lists;
}

/// A character of weight w is the same as k copies of weight w/k: leftover characters fill the
/// last word of such a lighter class.
void spread_leftover(packing_plan& plan, class_list& list, weight_class& source, int group) {
  const int size = fields_per_word[at(group)];
  for (int k = 2; k <= source.weight && source.fields % size != 0; ++k) {
    if (source.weight % k != 0) continue;
    weight_class* target = find_class(list, source.weight / k);
    if (!target) continue;
    for (pack_entry& e : plan.entries) {
      if (source.fields % size == 0) break;
      if (e.group != group || e.weight != source.weight || e.repeat != 1) continue;
      if (e.fields * k > room_in_last_word(*target, group)) continue;
      if (e.fields > source.fields % size) continue;
      e.repeat = k;
      e.weight = target->weight;
      source.fields -= e.fields;
      target->fields += e.fields * k;
    }
  }
}

/// What is left over goes to wider fields where the same weight has room for all of it.
void widen_leftover(packing_plan& plan, class_list& wider, weight_class& source, int group) {
  const int size = fields_per_word[at(group)];
  weight_class* target = find_class(wider, source.weight);
  if (!target || room_in_last_word(*target, group + 1) < source.fields % size) return;
  for (auto e = plan.entries.rbegin(); e != plan.entries.rend(); ++e) {
    if (source.fields % size == 0) return;
    const int fields = e->fields * e->repeat;
    if (e->group != group || e->weight != source.weight || fields > source.fields % size) continue;
    e->group = group + 1;
    source.fields -= fields;
    target->fields += fields;
  }
}

/// Tries to give every word a weight of its own. Returns false where that would waste more than a
/// third of the words; the entries are then as they were.
bool try_word_weights(packing_plan& plan) {
  const std::vector<pack_entry> before = plan.entries;
  std::array<class_list, 3> lists = list_classes(plan);
  int ideal = 0;
  for (int g = 0; g < 3; ++g) {
    int fields = 0;
    for (const weight_class& c : lists[at(g)]) fields += c.fields;
    ideal += words_for(fields, g);
  }
  for (int g = 0; g < 3; ++g) {
    for (weight_class& source : lists[at(g)]) {
      if (source.fields % fields_per_word[at(g)] == 0) continue;
      spread_leftover(plan, lists[at(g)], source, g);
      if (g < 2 && source.fields % fields_per_word[at(g)] != 0)
        widen_leftover(plan, lists[at(g + 1)], source, g);
    }
  }
  int actual = 0;
  for (int g = 0; g < 3; ++g)
    for (const weight_class& c : lists[at(g)]) actual += words_for(c.fields, g);
  if (actual == 0 || ideal * 100 / actual >= 66) return true;
  plan.entries = before;
  return false;
}

/// Places the entries weight by weight, each weight from a new word on.
void place_by_weight(packing_plan& plan) {
  const std::array<class_list, 3> lists = list_classes(plan);
  for (int g = 0; g < 3; ++g) {
    int& place = plan.field_count[at(g)];
    const int size = fields_per_word[at(g)];
    for (const weight_class& c : lists[at(g)]) {
      for (pack_entry& e : plan.entries) {
        if (e.group != g || e.weight != c.weight) continue;
        e.first_field = place;
        place += e.fields * e.repeat;
      }
      place = words_for(place, g) * size;
      plan.word_weight.resize(plan.word_weight.size() + at(words_for(c.fields, g)), c.weight);
    }
    // Groups are padded to whole blocks.
    const int block_fields = size * words_per_block;
    const int padded = (place + block_fields - 1) / block_fields * block_fields;
    plan.word_weight.resize(plan.word_weight.size() + at((padded - place) / size), 0);
    place = padded;
  }
}

// ---- one pass in entry order ----

/// Moves what a group has beyond whole blocks of words to wider fields, if the last block there has
/// room for all of it: a block less to read in every kernel call.
void fill_block(packing_plan& plan, std::array<int, packing_groups>& count, int from, int to) {
  const int from_block = fields_per_word[at(from)] * words_per_block;
  const int to_block = fields_per_word[at(to)] * words_per_block;
  int left = count[at(from)] % from_block;
  if (left == 0 || count[at(to)] == 0) return;
  if ((to_block - count[at(to)] % to_block) % to_block < left) return;
  for (auto e = plan.entries.rbegin(); e != plan.entries.rend() && left > 0; ++e) {
    if (e->group != from || e->fields > left) continue;
    if (plan.implied_on && e->fields > 1) continue;
    e->group = to;
    left -= e->fields;
    count[at(from)] -= e->fields;
    count[at(to)] += e->fields;
  }
}

/// Implied weights: does what a field of it costs depend on what else fails?
bool shares_costs(const pack_entry& e) { return e.fields > 1 || e.set >= 0; }

void place_in_order(packing_plan& plan) {
  std::array<int, packing_groups> count{};
  for (const pack_entry& e : plan.entries) count[at(e.group)] += e.fields;
  fill_block(plan, count, 0, 1);
  fill_block(plan, count, 1, 2);
  fill_block(plan, count, 0, 2);
  // The most variable characters first: what fails at all fails early then. Under implied weights
  // the kernels watch for characters of several fields or of sets, and do so in the first words
  // only.
  std::vector<std::size_t> order(plan.entries.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    const pack_entry& x = plan.entries[a];
    const pack_entry& y = plan.entries[b];
    if (plan.implied_on && shares_costs(x) != shares_costs(y)) return shares_costs(x);
    return x.max_steps - x.min_steps > y.max_steps - y.min_steps;
  });
  for (const std::size_t i : order) {
    pack_entry& e = plan.entries[i];
    e.first_field = plan.field_count[at(e.group)];
    plan.field_count[at(e.group)] += e.fields;
  }
}

}  // namespace

void place_fields(packing_plan& plan, bool word_weights) {
  const auto weight_differs = [&](const pack_entry& e) {
    return e.weight != plan.entries.front().weight;
  };
  const bool one_weight = std::none_of(plan.entries.begin(), plan.entries.end(), weight_differs);
  plan.uniform_mode = !plan.implied_on &&
                      (plan.entries.empty() || (one_weight && plan.entries.front().weight == 1));
  // A common weight other than 1 has nothing to gain from words of one weight.
  const bool by_word = word_weights && !plan.implied_on && !one_weight && !plan.entries.empty() &&
                       try_word_weights(plan);
  plan.per_char_mode = !plan.uniform_mode && !by_word;
  plan.field_count = {};
  if (!by_word) {
    place_in_order(plan);
    return;
  }
  place_by_weight(plan);
  for (pack_entry& e : plan.entries) {
    if (e.group <= 2) continue;
    e.first_field = plan.field_count[at(e.group)];
    plan.field_count[at(e.group)] += e.fields;
    plan.word_weight.push_back(e.weight);  // a field of group 3 is a word
  }
}

}  // namespace zeb
