// Costs of changes as users type them: "0>1 2  [01]/2 3  ?>4 1  <5", and as they are saved.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "matrix/matrix.h"

namespace zeb {

/// One entry: from each state of a set to each of another; or something for all costs.
struct cost_item {
  enum class scope : std::uint8_t {
    sets,
    everything,  // "* cost": whatever the states
    larger,      // "< cost": costs above it become it
  };
  static constexpr std::uint32_t every = 0xffffffffU;  // "?"
  std::uint32_t from = every;
  std::uint32_t to = every;
  bool both_ways = true;
  scope changes = scope::sets;
  std::int32_t cost = 1;
};

/// The data whose symbols commands take for states, by `nstates /`.
data_type entry_type();

/// Reads entries up to the ";" (unread). States are read as `nstates /` says. Errors: what can't be
/// a state or a cost, states that the cells have no room for.
std::vector<cost_item> read_cost_items();
/// A state as commands read it; -1 where another symbol comes next (unread).
int read_state();
/// Several states: "0", "[012]", "[0 1 2]"; 0 where no state comes next.
std::uint32_t read_states();

/// Changes a table by the entries, in order. "?" is every state that the entries name or `present`
/// holds.
void apply_cost_items(const std::vector<cost_item>& items, std::uint32_t present,
                      cost_table& costs);
/// Costs above `largest` become that, and the table tells so.
void cut_costs(cost_table& costs, std::int32_t largest);

/// Entries from which a table can be read back, in lines; in the older form one direction at a
/// time, a line for each state. `in_cells`: states besides those of the table, which are named
/// where their costs aren't those of all states that nobody named. `symbols`: the type of data
/// whose symbols stand for the states.
std::string cost_items_text(const cost_table& costs, std::uint32_t in_cells, data_type symbols,
                            bool older);
/// "0" or "[012]".
std::string states_text(data_type symbols, std::uint32_t states);

}  // namespace zeb
