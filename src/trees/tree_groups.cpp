#include "trees/tree_groups.h"

#include <utility>

#include "base/indices.h"
#include "base/message_text.h"
#include "trees/tree_store.h"

namespace zeb {

tree_group_state tree_groups;

namespace {

constexpr int word_bits = 32;

std::uint32_t bit_of(int group) { return 1U << (group % word_bits); }

std::uint32_t& word_of(std::uint32_t* row, int group) { return row[group / word_bits]; }

std::string usual_name(int group) { return text_of("Group_%i", group); }

}  // namespace

bool in_tree_group(int tree, int group) {
  return (word_of(store.group_rows[at(tree)], group) & bit_of(group)) != 0;
}

void set_tree_group_member(int tree, int group, bool member) {
  std::uint32_t& word = word_of(store.group_rows[at(tree)], group);
  word = member ? word | bit_of(group) : word & ~bit_of(group);
}

void add_to_tree_group(int tree, int group) {
  set_tree_group_member(tree, group, true);
  define_tree_group(group, {});
}

void clear_tree_group(int group) {
  for (std::uint32_t* row : store.group_rows) word_of(row, group) &= ~bit_of(group);
}

bool tree_group_defined(int group) {
  const std::size_t word = at(group / word_bits);
  return word < tree_groups.defined.size() && (tree_groups.defined[word] & bit_of(group)) != 0;
}

void define_tree_group(int group, std::string_view name) {
  if (!name.empty()) tree_groups.names[at(group)] = name;
  word_of(tree_groups.defined.data(), group) |= bit_of(group);
}

void undefine_tree_group(int group) {
  clear_tree_group(group);
  word_of(tree_groups.defined.data(), group) &= ~bit_of(group);
  tree_groups.names[at(group)] = usual_name(group);
}

void group_automatically(int first, int last, std::string_view name) {
  if (!tree_groups.automatic || tree_groups.limit < 1) return;
  const int group = tree_groups.next_automatic;
  clear_tree_group(group);
  for (int t = first; t < last; ++t) set_tree_group_member(t, group, true);
  define_tree_group(group, name);
  tree_groups.last_automatic = group;
  tree_groups.next_automatic = (group + 1) % tree_groups.limit;
}

void set_automatic_groups(bool on) { tree_groups.automatic = on; }

void set_tree_group_limit(int limit) {
  tree_groups.limit = limit;
  set_group_words((limit + word_bits - 1) / word_bits);
}

void name_tree_groups() {
  tree_groups.defined.assign(at(store.group_words), 0);
  tree_groups.names.clear();
  for (int g = 0; g < tree_groups.limit; ++g) tree_groups.names.push_back(usual_name(g));
}

void forget_tree_groups() {
  const tree_group_state former = std::exchange(tree_groups, {});
  tree_groups.limit = former.limit;
  tree_groups.automatic = former.automatic;
}

}  // namespace zeb
