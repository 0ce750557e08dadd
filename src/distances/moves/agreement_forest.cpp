#include "distances/moves/agreement_forest.h"

#include <algorithm>
#include <map>

#include "base/indices.h"
#include "trees/terminal_sets.h"

namespace zeb {
namespace {

constexpr int gone = -1;  // an item whose clade shares no piece with what is below it
constexpr int not_item = -2;

// What a clade of both trees is for the ones around it: an item like a terminal, which stands for
// the terminals of the piece that reaches down to its branch.
struct item_list {
  std::vector<std::vector<int>> terminals;  // by item
  std::vector<int> of_node;                 // by node of the first tree: its item, gone, not_item
};

// The tree of the items above a node, with a further terminal, the root's, below that node.
class item_tree {
 public:
  /// `item_at`: the item of a node, `gone`, or `not_item`; `number`: of an item among those of this
  /// tree.
  item_tree(const cut_tree& tree, int top, const std::function<int(int)>& item_at, int items,
            bool with_root) {
    const int terminals = items + (with_root ? 1 : 0);
    out_.terminals = terminals;
    const auto nodes = at(2 * terminals - 1);
    out_.ancestor.assign(nodes, -1);
    out_.first.assign(nodes, -1);
    out_.second.assign(nodes, -1);
    next_ = terminals;
    const int whole = build(tree, top, item_at);
    if (with_root) link(whole, items);
  }
  const binary_tree& tree() const { return out_; }

 private:
  int link(int a, int b) {
    const int node = next_++;
    out_.first[at(node)] = a;
    out_.second[at(node)] = b;
    out_.ancestor[at(a)] = out_.ancestor[at(b)] = node;
    return node;
  }
  int build(const cut_tree& tree, int node, const std::function<int(int)>& item_at) {
    const int item = item_at(node);
    if (item != not_item) return item;
    int joined = gone;
    for (const int child : tree.children(node)) {
      const int above = build(tree, child, item_at);
      if (above == gone) continue;
      joined = joined == gone ? above : link(joined, above);
    }
    return joined;
  }

  binary_tree out_;
  int next_ = 0;
};

class clade_solver {
 public:
  clade_solver(const cut_tree& a, const cut_tree& b, const forest_effort& effort,
               random_generator& generator, const std::function<void()>& poll)
      : a_(a), b_(b), search_(effort, generator, poll) {
    std::map<terminal_set_key, int> by_key;
    const auto keys_a = terminal_set_keys(a.ancestors, a.terminals);
    const auto keys_b = terminal_set_keys(b.ancestors, b.terminals);
    for (std::size_t n = 0; n < keys_b.size(); ++n) by_key[keys_b[n]] = static_cast<int>(n);
    partner_.assign(keys_a.size(), -1);
    partner_of_b_.assign(keys_b.size(), -1);
    for (std::size_t n = 0; n < keys_a.size(); ++n) {
      const auto found = by_key.find(keys_a[n]);
      if (found == by_key.end()) continue;
      partner_[n] = found->second;
      partner_of_b_[at(found->second)] = static_cast<int>(n);
    }
    items_.of_node.assign(keys_a.size(), not_item);
    for (int t = 0; t < a.terminals; ++t) {
      items_.of_node[at(t)] = t;
      items_.terminals.push_back({t});
    }
  }

  agreement_forest run() {
    for (auto node = a_.outward.rbegin(); node != a_.outward.rend(); ++node)
      if (partner_[at(*node)] >= 0) solve(*node);
    return std::move(out_);
  }

 private:
  /// Items above a node, numbered from 0.
  void gather(int node, std::vector<int>& items) const {
    for (const int child : a_.children(node)) {
      const int item = items_.of_node[at(child)];
      if (item == not_item)
        gather(child, items);
      else if (item != gone)
        items.push_back(item);
    }
  }

  void solve(int top) {
    std::vector<int> items;
    gather(top, items);
    if (items.empty()) return take(top, items, {{0}}, 0);
    std::map<int, int> number;
    for (const int item : items) number[item] = static_cast<int>(number.size());
    const auto local = [&number](int item) { return item >= 0 ? number[item] : item; };
    const auto in_a = [&](int node) {
      return node == top ? not_item : local(items_.of_node[at(node)]);
    };
    const auto in_b = [&](int node) {
      const int same = partner_of_b_[at(node)];
      return same < 0 || same == top ? not_item : local(items_.of_node[at(same)]);
    };
    const int n = static_cast<int>(items.size());
    const int other_top = partner_[at(top)];
    const item_tree a(a_, top, in_a, n, true), b(b_, other_top, in_b, n, true);
    const found_forest forest = search_.best(a.tree(), b.tree());
    out_.at_least += forest.at_least;
    const bool is_top = top == a_.root();
    if (is_top || forest.cuts() == 0) return take(top, items, forest.pieces, n);
    // As many cuts within the clade alone, and one below it, are better for the rest of the trees.
    const item_tree alone_a(a_, top, in_a, n, false), alone_b(b_, other_top, in_b, n, false);
    std::vector<std::vector<int>> pieces;
    const auto found = search_.exists(alone_a.tree(), alone_b.tree(), forest.cuts() - 1, pieces);
    // One move less might do where this wasn't found out.
    if (!forest.is_exact() || found == forest_search::answer::given_up) --out_.at_least;
    take(top, items, found == forest_search::answer::yes ? pieces : forest.pieces, n);
  }

  /// `root`: the number of the root's terminal.
  void take(int top, const std::vector<int>& items, const std::vector<std::vector<int>>& pieces,
            int root) {
    std::vector<int> of_root;
    for (const std::vector<int>& piece : pieces) {
      std::vector<int> terminals;
      bool has_root = false;
      for (const int item : piece) {
        has_root = has_root || item == root;
        if (item == root) continue;
        const std::vector<int>& of_item = items_.terminals[at(items[at(item)])];
        terminals.insert(terminals.end(), of_item.begin(), of_item.end());
      }
      if (has_root)
        of_root = std::move(terminals);
      else
        out_.pieces.push_back(std::move(terminals));
    }
    if (top == a_.root())
      out_.pieces.insert(out_.pieces.begin(), std::move(of_root));
    else
      become(top, std::move(of_root));
  }

  void become(int node, std::vector<int> terminals) {
    items_.of_node[at(node)] = terminals.empty() ? gone : static_cast<int>(items_.terminals.size());
    if (!terminals.empty()) items_.terminals.push_back(std::move(terminals));
  }

  const cut_tree& a_;
  const cut_tree& b_;
  forest_search search_;
  std::vector<int> partner_;  // by node of the first tree: that of the other with its terminals
  std::vector<int> partner_of_b_;  // the other way
  item_list items_;
  agreement_forest out_;
};

}  // namespace

agreement_forest smallest_forest(const cut_tree& a, const cut_tree& b, const forest_effort& effort,
                                 random_generator& generator, const std::function<void()>& poll) {
  return clade_solver(a, b, effort, generator, poll).run();
}

}  // namespace zeb
