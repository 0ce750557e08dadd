#include "search/drivers/part_outcome.h"

#include <span>
#include <utility>

#include "search/store/stored_trees.h"

namespace zeb {

std::vector<found_tree> found_trees(search_context& context) {
  std::vector<found_tree> trees;
  for (int t = 0; t < context.trees.ntrees; ++t) {
    const std::span<const std::int32_t> form = slot_tree(context, t);
    trees.push_back({{form.begin(), form.end()}, record_of(context, t).score});
  }
  return trees;
}

void add_work(search_context& context, const work_done& done) {
  context.rearrangements.add(done.rearrangements);
  context.moves_done += done.moves;
}

void put(const part_state& state, packet_writer& to) {
  to.put(state.stage);
  to.put_real(state.score);
  to.put_long(state.done.rearrangements);
  to.put_long(static_cast<std::uint64_t>(state.done.moves));
}

void put(const std::vector<found_tree>& trees, packet_writer& to) {
  to.put(static_cast<std::int32_t>(trees.size()));
  for (const found_tree& tree : trees) {
    to.put_list(tree.form);
    to.put_real(tree.score);
  }
}

part_state state_from(packet_reader& from) {
  part_state state;
  state.stage = from.whole();
  state.score = from.real();
  state.done.rearrangements = from.long_whole();
  state.done.moves = static_cast<std::int64_t>(from.long_whole());
  return state;
}

std::vector<found_tree> trees_from(packet_reader& from) {
  std::vector<found_tree> trees;
  for (int count = from.whole(); count > 0; --count) {
    std::vector<std::int32_t> form = from.list();
    trees.push_back({std::move(form), from.real()});
  }
  return trees;
}

}  // namespace zeb
