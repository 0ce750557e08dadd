#include "matrix/costs/cost_text.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <map>
#include <numeric>
#include <sstream>

#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/list_text.h"
#include "matrix/costs/character_costs.h"
#include "matrix/costs/cost_items.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/symbols.h"

namespace zeb {
namespace {

/// Characters by the text of their costs, in the order of the first ones.
struct same_costs {
  std::string items;
  std::vector<int> characters;
};

std::vector<same_costs> groups_of_costs(const std::vector<int>& numbers) {
  std::vector<same_costs> groups;
  for (int c = 0; c < matrix.nchar; ++c) {
    const shared_costs set = costs_set_for(c);
    if (numbers[at(c)] < 0 || !(set || matrix.characters[at(c)].is_sankoff)) continue;
    const std::string items = cost_items_text(set ? *set : costs_all_alike(1), states_in_cells(c),
                                              numeric_data, matrix.older_cost_format);
    auto group = std::find_if(groups.begin(), groups.end(),
                              [&](const same_costs& g) { return g.items == items; });
    if (group == groups.end()) group = groups.insert(group, {items, {}});
    group->characters.push_back(numbers[at(c)]);
  }
  return groups;
}

/// `command(value, characters)` for each value that some characters have; below 0: none.
std::string lines_by_value(
    const std::vector<int>& numbers, const std::function<std::int64_t(int)>& value_of,
    const std::function<std::string(std::int64_t, const std::string&)>& command) {
  std::map<std::int64_t, std::vector<int>> found;
  for (int c = 0; c < matrix.nchar; ++c)
    if (const std::int64_t v = value_of(c); v >= 0 && numbers[at(c)] >= 0)
      found[v].push_back(numbers[at(c)]);
  std::string text;
  for (const auto& [v, characters] : found) text += command(v, numbers_text(characters)) + ";\n";
  return text;
}

/// Commands that set costs are written with the symbols of numbers, which every state has.
std::string with_numeric_entry(const std::string& commands) {
  if (commands.empty() || matrix.state_entry_type == numeric_data) return commands;
  return "nstates / num;\n" + commands + "nstates / " +
         (matrix.state_entry_type == dna_data ? "dna" : "prot") + ";\n";
}

}  // namespace

std::string numbers_text(const std::vector<int>& numbers) {
  if (numbers.empty()) return "";
  const auto holds = [&](int c) {
    return std::find(numbers.begin(), numbers.end(), c) != numbers.end();
  };
  return wrapped_words(list_items(*std::max_element(numbers.begin(), numbers.end()) + 1, holds),
                       10);
}

void emit_lines(const std::string& text) {
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t end = std::min(text.find('\n', from), text.size() - 1);
    emit(text.substr(from, end + 1 - from));
    from = end + 1;
  }
}

std::string costs_as_table(int character) {
  const shared_costs set = costs_set_for(character);
  const cost_table costs = set ? *set : costs_all_alike(1);
  const std::uint32_t present = costs.states | states_in_cells(character);
  std::string text = character_label(character) + ": Costs";
  if (costs.cut > 0) text += text_of(" (larger costs modified to be %i)", costs.cut);
  text += "\n";
  const auto type = static_cast<data_type>(matrix.characters[at(character)].type);
  for (int i = 0; i < 32; ++i) {
    std::string line;
    for (int j = 0; j < 32; ++j) {
      if (i == j || !(present >> i & 1U) || !(present >> j & 1U)) continue;
      const int there = costs.costs[at(i)][at(j)];
      const bool same = there == costs.costs[at(j)][at(i)];
      if (same && j < i) continue;
      line += text_of("  %c%c%c %-3i ", symbol_of_state(type, i), same ? '/' : '>',
                      symbol_of_state(type, j), there);
      if (line.size() > 68) {
        text += line + "\n";
        line.clear();
      }
    }
    if (!line.empty()) text += line + "\n";
  }
  return text;
}

std::string costs_as_commands(const std::vector<int>& numbers) {
  using value = std::int64_t;
  const auto record = [](int c) -> const character_record& { return matrix.characters[at(c)]; };
  std::string text;
  for (const same_costs& group : groups_of_costs(numbers))
    text += "costs" + numbers_text(group.characters) + " =" + group.items + ";\n";
  text += lines_by_value(
      numbers, [&](int c) { return value{costs_set_for(c) && !record(c).is_sankoff ? 0 : -1}; },
      [](value, const std::string& list) { return "ccode )" + list; });
  text += lines_by_value(
      numbers, [&](int c) { return record(c).root_states ? value{record(c).root_states} : -1; },
      [](value states, const std::string& list) {
        const std::string symbols = states_text(numeric_data, static_cast<std::uint32_t>(states));
        return "ancstates" + list + (symbols.size() > 1 ? " " + symbols : " [" + symbols + "]");
      });
  text += lines_by_value(
      numbers, [&](int c) { return value{record(c).user_min_steps}; },
      [](value steps, const std::string& list) {
        return "usminmax" + list + " = " + std::to_string(steps);
      });
  text += lines_by_value(
      numbers, [&](int c) { return value{record(c).user_max_state}; },
      [](value state, const std::string& list) {
        return "usminmax > " + std::to_string(state) + list;
      });
  return with_numeric_entry(text);
}

std::string step_matrices_as_commands() {
  std::string text;
  for (std::size_t i = 0; i < matrix.step_matrices.size(); ++i) {
    const step_matrix& m = matrix.step_matrices[i];
    if (!m.costs) continue;
    text += text_of("smatrix =%i (", static_cast<int>(i)) + m.name + ")" +
            cost_items_text(*m.costs, 0, numeric_data, matrix.older_cost_format) + ";\n";
  }
  return with_numeric_entry(text);
}

std::vector<std::string> cost_settings() {
  std::vector<std::string> commands;
  if (matrix.fill_polymorphic) commands.emplace_back("fillsank =");
  if (!matrix.decompose_state_trees) commands.emplace_back("cstree -");
  if (matrix.exact_relative_fits) commands.emplace_back("costs &");
  return commands;
}

std::vector<std::string> costs_in_words() {
  std::vector<int> all(at(matrix.nchar));
  std::iota(all.begin(), all.end(), 0);
  std::vector<std::string> lines;
  std::istringstream commands(costs_as_commands(all));
  for (std::string line; std::getline(commands, line);) {
    if (line.back() == ';') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

}  // namespace zeb
