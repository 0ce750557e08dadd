#include "matrix/costs/cost_text.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <map>

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

struct table_group {
  cost_table costs;
  std::uint32_t present = 0;
  std::vector<int> characters;
};

std::vector<table_group> groups_of_tables(const std::vector<int>& numbers) {
  std::vector<table_group> groups;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (numbers[at(c)] < 0 || !matrix.characters[at(c)].is_sankoff) continue;
    const shared_costs set = costs_set_for(c);
    const cost_table costs = set ? *set : costs_all_alike(1);
    auto group = std::find_if(groups.begin(), groups.end(),
                              [&](const table_group& g) { return g.costs == costs; });
    if (group == groups.end()) {
      groups.push_back({costs, 0, {}});
      group = groups.end() - 1;
    }
    group->present |= states_in_cells(c);
    group->characters.push_back(numbers[at(c)]);
  }
  return groups;
}

/// `command(value, characters)` for each value that some characters have; below 0: none.
std::string lines_by_value(
    const std::vector<int>& numbers,
    const std::function<std::int64_t(const character_record&)>& value,
    const std::function<std::string(std::int64_t, const std::string&)>& command) {
  std::map<std::int64_t, std::vector<int>> found;
  for (int c = 0; c < matrix.nchar; ++c)
    if (const std::int64_t v = value(matrix.characters[at(c)]); v >= 0 && numbers[at(c)] >= 0)
      found[v].push_back(numbers[at(c)]);
  std::string text;
  for (const auto& [v, characters] : found) text += command(v, numbers_text(characters)) + ";\n";
  return text;
}

std::string root_states_text(std::int64_t states) {
  std::string text = "[";
  for (int s = 0; s < 32; ++s)
    if (states >> s & 1)
      text += symbol_of_state(static_cast<data_type>(matrix.state_entry_type), s);
  return text + "]";
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
  std::string text;
  for (const table_group& group : groups_of_tables(numbers)) {
    const std::string items = cost_items_text(group.costs, group.present, matrix.older_cost_format);
    text +=
        "costs" + numbers_text(group.characters) + " =" + (items.empty() ? " * 1" : items) + ";\n";
  }
  text += lines_by_value(
      numbers,
      [](const character_record& r) { return r.root_states ? std::int64_t{r.root_states} : -1; },
      [](std::int64_t states, const std::string& list) {
        return "ancstates" + list + " " + root_states_text(states);
      });
  text += lines_by_value(
      numbers, [](const character_record& r) { return std::int64_t{r.user_min_steps}; },
      [](std::int64_t steps, const std::string& list) {
        return "usminmax" + list + " = " + std::to_string(steps);
      });
  text += lines_by_value(
      numbers, [](const character_record& r) { return std::int64_t{r.user_max_state}; },
      [](std::int64_t state, const std::string& list) {
        return "usminmax > " + std::to_string(state) + list;
      });
  return text;
}

}  // namespace zeb
