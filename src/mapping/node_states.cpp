#include "mapping/node_states.h"

#include <algorithm>
#include <bit>

#include "base/indices.h"
#include "base/message_text.h"
#include "mapping/state_optimisation.h"
#include "mapping/value_ranges.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

void map_states(const tree_shape& shape, pass which, polytomy_kind polytomies,
                mapped_character& mapped) {
  const state_model model(mapped.character);
  const state_optimiser optimiser(model, shape, polytomies);
  mapped.steps = optimiser.steps();
  const bool continuous = matrix.characters[at(mapped.character)].is_continuous;
  for (int v = 0; at(v) < shape.nodes(); ++v) {
    if (!shape.has(v)) continue;
    node_values& values = mapped.at_nodes[at(v)];
    for (std::size_t i = 0; i < model.size(); ++i) {
      if (which == pass::down ? !optimiser.in_down(v, i) : !optimiser.in_final(v, i)) continue;
      const int value = model.value(i);
      if (continuous)
        values.join({0, {value, value}});
      else
        values.states |= std::uint32_t{1} << value;
    }
  }
}

void map_ranges(const tree_shape& shape, pass which, mapped_character& mapped) {
  const value_ranges ranges(mapped.character, shape);
  mapped.steps = ranges.steps();
  if (!ranges.any()) return;
  for (int v = 0; at(v) < shape.nodes(); ++v)
    if (shape.has(v))
      mapped.at_nodes[at(v)].range = which == pass::down ? ranges.down(v) : ranges.final(v);
}

std::string value_text(int character, int value) {
  return text_of("%.3f",
                 matrix.show_original_scale ? original_value(character, value) : value / 1000.0);
}

}  // namespace

void node_values::join(const node_values& other) {
  states |= other.states;
  if (other.range.low > other.range.high) return;
  if (range.low > range.high)
    range = other.range;
  else
    range = {std::min(range.low, other.range.low), std::max(range.high, other.range.high)};
}

mapped_character map_character(const tree_shape& shape, int character, pass which,
                               polytomy_kind polytomies) {
  mapped_character mapped{character, 0, std::vector<node_values>(shape.nodes())};
  const bool continuous = matrix.characters[at(character)].is_continuous;
  if (continuous && polytomies == polytomy_kind::hard)
    map_ranges(shape, which, mapped);
  else
    map_states(shape, which, polytomies, mapped);
  return mapped;
}

bool is_landmark(int character) { return matrix.characters[at(character)].type == landmark_data; }

std::string state_name(int character, int state) {
  if (matrix.use_char_names && at(character) < matrix.char_names.size()) {
    const std::vector<std::string>& names = matrix.char_names[at(character)].states;
    if (at(state) < names.size() && !names[at(state)].empty()) return names[at(state)];
  }
  return state_symbol(character, state);
}

std::string values_text(int character, const node_values& values) {
  if (!values.known()) return "?";
  if (values.states == 0) {
    const std::string low = value_text(character, values.range.low);
    return values.ambiguous() ? low + "-" + value_text(character, values.range.high) : low;
  }
  std::vector<std::string> names;
  bool only_symbols = true;
  for (std::uint32_t rest = values.states; rest; rest &= rest - 1) {
    names.push_back(state_name(character, std::countr_zero(rest)));
    only_symbols = only_symbols && names.back().size() == 1;
  }
  std::string text;
  for (const std::string& name : names) text += (text.empty() || only_symbols ? "" : "/") + name;
  return text;
}

std::string character_heading(int character) {
  const std::string number = text_of("Char. %i", character);
  const std::string name = character_name(character);
  return name == number ? number : number + ", " + name;
}

std::string steps_text(int character, std::int64_t steps) {
  if (matrix.characters[at(character)].is_continuous)
    return text_of("%.3f steps", static_cast<double>(steps) / 1000);
  return counted(steps, "step", "steps");
}

std::string node_label(int node) {
  return node < matrix.ntax ? taxon_label(node) : std::to_string(node);
}

}  // namespace zeb
