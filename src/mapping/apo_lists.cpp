#include "mapping/apo_lists.h"

#include <algorithm>
#include <map>

#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "mapping/tree_shape.h"
#include "matrix/matrix.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tags.h"
#include "trees/terminal_sets.h"

namespace zeb {
namespace {

std::string heading_of_node(int node) {
  return (node < matrix.ntax ? "Taxon " : "Node ") + node_label(node);
}

void tell_of_none(int node) {
  emit(node < matrix.ntax ? "      No autapomorphies\n" : "      No synapomorphies\n");
}

/// The nodes with branches, terminals first.
std::vector<int> nodes_to_list(const tree_shape& shape) {
  std::vector<int> nodes;
  for (int v = 0; at(v) < shape.nodes(); ++v)
    if (v != shape.root() && shape.has(v)) nodes.push_back(v);
  return nodes;
}

/// Items in lines of at most `width` characters, where one isn't longer by itself.
std::string in_columns(const std::vector<std::string>& items, std::size_t width, char separator) {
  std::string text;
  std::size_t line = 0;
  for (const std::string& item : items) {
    const bool breaks = line > 0 && line + 1 + item.size() > width;
    if (!text.empty()) text += breaks ? separator : ' ';
    line = breaks ? 0 : line;
    line += item.size() + (line > 0);
    text += item;
  }
  return text;
}

/// Changes of one kind on the branches of one group, in some of the trees that have it.
struct matched_change {
  int character;
  std::string text;
  std::vector<int> trees;
};
struct matched_group {
  std::string heading;  // the first tree that has it
  std::vector<int> trees;
  bool is_terminal = false;
  std::vector<matched_change> changes;

  void add(int tree, const apomorphy& change) {
    const std::string text = change_text(change);
    for (matched_change& known : changes) {
      if (known.character != change.character || known.text != text) continue;
      known.trees.push_back(tree);
      return;
    }
    changes.push_back({change.character, text, {tree}});
  }
};

std::string numbers(const std::vector<int>& trees) {
  std::string text = trees.size() == 1 ? "tree" : "trees";
  for (const int t : trees) text += " " + std::to_string(t);
  return text;
}

/// In the order in which the trees have them.
std::vector<matched_group> match_groups(std::span<const tree_with_changes> trees) {
  std::vector<matched_group> groups;
  std::map<terminal_set_key, std::size_t> known;
  for (const tree_with_changes& one : trees) {
    const tree_shape shape(one.tree);
    const std::vector<terminal_set_key> keys = terminal_set_keys(one.tree, matrix.ntax);
    std::vector<std::size_t> group_of(shape.nodes());
    for (const int node : nodes_to_list(shape)) {
      const auto [place, is_new] = known.emplace(keys[at(node)], groups.size());
      if (is_new) {
        const bool is_terminal = node < matrix.ntax;
        groups.push_back({heading_of_node(node), {}, is_terminal, {}});
        if (!is_terminal) groups.back().heading += text_of(" of tree %i", one.number);
      }
      group_of[at(node)] = place->second;
      groups[place->second].trees.push_back(one.number);
    }
    for (const apomorphy& change : one.changes)
      groups[group_of[at(change.node)]].add(one.number, change);
  }
  return groups;
}

}  // namespace

void draw_apomorphies(const tree_with_changes& shown, const branch_text_style& style) {
  std::vector<std::vector<std::string>> items(tree_shape(shown.tree).nodes());
  for (const apomorphy& change : shown.changes) {
    std::string item = std::to_string(change.character);
    if (style.with_states) item += ":" + change_text(change, ">");
    items[at(change.node)].push_back(item);
  }
  std::vector<std::string> texts(items.size());
  for (std::size_t v = 0; v < items.size(); ++v)
    texts[v] = in_columns(items[v], at(style.width), '\\');
  emit(shown.name, "\n");
  print_diagram(shown.tree, texts, true);
  newline();
  if (tags.tags_on) store_drawn_tags(shown.tree, shown.name, texts);
}

void list_by_node(const tree_with_changes& shown) {
  emit(shown.name, "\n");
  auto change = shown.changes.begin();
  for (const int node : nodes_to_list(tree_shape(shown.tree))) {
    emit("   ", heading_of_node(node), ":\n");
    if (change == shown.changes.end() || change->node != node) tell_of_none(node);
    for (; change != shown.changes.end() && change->node == node; ++change)
      emit("      ", character_heading(change->character), ": ", change_text(*change), "\n");
  }
  newline();
}

void list_by_character(const tree_with_changes& shown, const std::vector<int>& characters) {
  emit(shown.name, "\n");
  for (const int c : characters) {
    const std::string name = character_name(c);
    emit("   Character ", c, name == text_of("Char. %i", c) ? "" : ", " + name, ":\n");
    bool any = false;
    for (const apomorphy& change : shown.changes) {
      if (change.character != c) continue;
      any = true;
      emit("      ", heading_of_node(change.node), ": ", change_text(change), "\n");
    }
    if (!any) emit("      No synapomorphies\n");
  }
  newline();
}

void list_matched(std::span<const tree_with_changes> trees) {
  emit("Synapomorphies of ", trees.size(), " trees, by groups\n");
  for (const matched_group& group : match_groups(trees)) {
    emit("   ", group.heading);
    if (group.trees.size() < trees.size()) emit(" (group of ", numbers(group.trees), ")");
    emit(":\n");
    if (group.changes.empty()) tell_of_none(group.is_terminal ? 0 : matrix.ntax);
    for (const matched_change& change : group.changes) {
      emit("      ", character_heading(change.character), ": ", change.text);
      if (change.trees.size() < group.trees.size()) emit(" (", numbers(change.trees), ")");
      emit("\n");
    }
  }
  newline();
}

}  // namespace zeb
