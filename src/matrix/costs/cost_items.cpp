#include "matrix/costs/cost_items.h"

#include <algorithm>
#include <bit>
#include <map>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "language/input.h"
#include "language/lexer.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/symbols.h"

namespace zeb {
namespace {

constexpr int largest_common_cost = 10'000;

std::uint32_t states_of_symbol(int symbol) {
  if (symbol < 0 || symbol > 255) return 0;
  return make_symbols(entry_type(), 4, true)[at(symbol)];
}

[[noreturn]] void found_symbol() {
  error_end("Error: found symbol", static_cast<char>(skip_blanks_peek()),
            "when reading transformation costs");
}

std::uint32_t read_side() {
  if (accept_char('?')) return cost_item::every;
  const std::uint32_t states = read_states();
  if (states == 0) found_symbol();
  return states;
}

int read_cost(int least, int most) {
  int cost = 0;
  if (!read_optional_int(&cost)) error_end("Syntax error in definition of transformation costs");
  if (cost < least || cost > most) error_end_f("Transformation costs must be %i-%i", least, most);
  return cost;
}

cost_item read_entry() {
  cost_item item;
  if (accept_char('*')) {
    item.changes = cost_item::scope::everything;
    item.cost = read_cost(1, largest_common_cost);
    return item;
  }
  if (accept_char('<')) {
    item.changes = cost_item::scope::larger;
    item.cost = read_cost(1, forbidden_cost);
    return item;
  }
  item.from = read_side();
  item.both_ways = accept_char('/');
  if (!item.both_ways && !accept_char('>'))
    error_end("Syntax error in definition of transformation costs");
  item.to = read_side();
  item.cost = read_cost(0, forbidden_cost);
  return item;
}

/// What changes from and to states cost that nobody has named.
std::int32_t cost_of_unnamed(const cost_table& costs, std::uint32_t named) {
  const std::size_t unnamed = at(std::countr_one(named));
  return unnamed == 32 ? 1 : costs.costs[unnamed][unnamed == 31 ? 0 : 31];
}

/// States with some change that costs something else.
std::uint32_t states_unlike(const cost_table& costs, std::int32_t common) {
  std::uint32_t states = 0;
  for (std::size_t i = 0; i < 32; ++i)
    for (std::size_t j = 0; j < 32; ++j)
      if (i != j && costs.costs[i][j] != common)
        states |= std::uint32_t{1} << i | std::uint32_t{1} << j;
  return states;
}

}  // namespace

data_type entry_type() { return static_cast<data_type>(matrix.state_entry_type); }

int read_state() {
  const std::uint32_t states = states_of_symbol(skip_blanks_peek());
  if (!std::has_single_bit(states)) return -1;
  next_nonblank();
  const int state = std::countr_zero(states);
  const int most = 8 * matrix.cell_bytes;
  if (state >= most) error_end_f("Only states 0-%i allowed", most - 1);
  return state;
}

std::uint32_t read_states() {
  std::uint32_t states = 0;
  const bool several = accept_char('[');
  do {
    const int state = read_state();
    if (state < 0) break;
    states |= std::uint32_t{1} << state;
  } while (several);
  if (several && !accept_char(']')) found_symbol();
  return states;
}

std::vector<cost_item> read_cost_items() {
  std::vector<cost_item> items;
  while (skip_blanks_peek() != ';') items.push_back(read_entry());
  if (items.empty()) error_end("Scope must be followed by costs");
  return items;
}

void apply_cost_items(const std::vector<cost_item>& items, std::uint32_t present,
                      cost_table& costs) {
  for (const cost_item& item : items) {
    if (item.from != cost_item::every) costs.states |= item.from;
    if (item.to != cost_item::every) costs.states |= item.to;
  }
  present |= costs.states;
  costs.cut = 0;
  for (const cost_item& item : items) {
    if (item.changes == cost_item::scope::everything) {
      costs.costs = costs_all_alike(item.cost).costs;
      continue;
    }
    if (item.changes == cost_item::scope::larger) {
      cut_costs(costs, item.cost);
      costs.cut = item.cost;  // also where they were cut before they were saved
      continue;
    }
    for (std::uint32_t from = item.from & present; from; from &= from - 1)
      for (std::uint32_t to = item.to & present; to; to &= to - 1) {
        const std::size_t i = at(std::countr_zero(from));
        const std::size_t j = at(std::countr_zero(to));
        if (i == j) continue;
        costs.costs[i][j] = item.cost;
        if (item.both_ways) costs.costs[j][i] = item.cost;
      }
  }
}

void cut_costs(cost_table& costs, std::int32_t largest) {
  for (auto& row : costs.costs)
    for (std::int32_t& cost : row) {
      if (cost > largest) costs.cut = largest;
      cost = std::min(cost, largest);
    }
}

std::string states_text(data_type symbols, std::uint32_t states) {
  std::string text;
  for (std::uint32_t rest = states; rest; rest &= rest - 1)
    text += symbol_of_state(symbols, std::countr_zero(rest));
  return std::has_single_bit(states) ? text : "[" + text + "]";
}

std::string cost_items_text(const cost_table& costs, std::uint32_t in_cells, data_type symbols,
                            bool older) {
  const std::int32_t common = cost_of_unnamed(costs, costs.states | in_cells);
  const std::uint32_t present = costs.states | (in_cells & states_unlike(costs, common));
  std::string text = common == 1 ? "" : " * " + std::to_string(common);
  if (std::has_single_bit(present))
    text += " " + states_text(symbols, present) + "/" + states_text(symbols, present) + " 0";
  for (std::uint32_t from = present; from; from &= from - 1) {
    const int i = std::countr_zero(from);
    std::map<std::pair<char, int>, std::uint32_t> ends;  // sign and cost: states
    for (std::uint32_t to = present; to; to &= to - 1) {
      const int j = std::countr_zero(to);
      const std::int32_t there = costs.costs[at(i)][at(j)];
      const bool same = !older && there == costs.costs[at(j)][at(i)];
      if (i == j || (same && j < i)) continue;
      ends[{same ? '/' : '>', there}] |= std::uint32_t{1} << j;
    }
    if (!text.empty() && !ends.empty()) text += "\n   ";
    for (const auto& [how, states] : ends)
      text += text_of(" %s%c%s %i", states_text(symbols, std::uint32_t{1} << i).c_str(), how.first,
                      states_text(symbols, states).c_str(), how.second);
  }
  if (costs.cut > 0) text += " <" + std::to_string(costs.cut);
  return text.empty() ? " * 1" : text;
}

}  // namespace zeb
