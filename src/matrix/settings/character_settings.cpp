#include "matrix/settings/character_settings.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/list_text.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

template <class field, class value>
bool assign(field& target, const std::optional<value>& wanted) {
  if (!wanted || target == static_cast<field>(*wanted)) return false;
  target = static_cast<field>(*wanted);
  return true;
}

}  // namespace

void change_character(int character, const character_change& change) {
  character_record& record = matrix.characters[at(character)];
  character_record changed = record;
  bool any = assign(changed.active, change.active);
  any |= assign(changed.weight, change.weight);
  if (!(record.type & (continuous_data | landmark_data))) {
    bool type_changed = assign(changed.additive, change.additive);
    type_changed |= assign(changed.is_sankoff, change.sankoff);
    if (type_changed) changed.needs_recheck = 1;
    any |= type_changed;
  }
  if (record.type != landmark_data) any |= assign(changed.internal_steps, change.internal_steps);
  if (!any) return;
  drop_packed_data();
  record = changed;
}

weights_scope::weights_scope() : generation_(matrix.generation) {
  for (const character_record& record : matrix.characters) {
    weights_.push_back(record.weight);
    active_.push_back(record.active);
  }
}

weights_scope::~weights_scope() {
  if (matrix.generation != generation_) return;
  set_weights(weights_);
  set_activity(active_);
}

void weights_scope::set_weights(std::span<const std::int32_t> weights) const {
  ALWAYS_CHECK(weights.size() == at(matrix.nchar), "weights aren't by character");
  for (int c = 0; c < matrix.nchar; ++c) matrix.characters[at(c)].weight = weights[at(c)];
}

void weights_scope::set_activity(std::span<const std::uint8_t> active) const {
  ALWAYS_CHECK(active.size() == at(matrix.nchar), "activity isn't by character");
  for (int c = 0; c < matrix.nchar; ++c) change_character(c, {.active = active[at(c)] != 0});
}

void keep_settings() {
  std::copy(matrix.characters.begin(), matrix.characters.end(), matrix.kept_characters.begin());
  keep_costs();
}

void restore_kept_settings() {
  drop_packed_data();
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& kept = matrix.kept_characters[at(c)];
    // What describes the cells (type, scale, observed states) isn't a setting and stays.
    change_character(c, {.additive = kept.additive != 0,
                         .active = kept.active != 0,
                         .sankoff = kept.is_sankoff != 0,
                         .weight = kept.weight,
                         .internal_steps = kept.internal_steps});
  }
  restore_kept_costs();
}

namespace {

bool is_as_read(const character_record& kept) {
  return kept.active && !kept.is_sankoff && kept.weight == 1 && kept.internal_steps == 0 &&
         (kept.is_continuous || !kept.additive);
}

std::string code_of(int character, const character_record& record) {
  const bool costs = record.is_sankoff && costs_set_for(character);
  return text_of("%s%s%s/%i=%i", record.additive ? "+" : "-", record.active ? "[" : "]",
                 costs ? "(" : ")", record.weight, record.internal_steps);
}

std::string codes_as_commands(std::span<const character_record> records) {
  std::string text;
  for (int c = 0; c < matrix.nchar;) {
    const std::string code = code_of(c, records[at(c)]);
    const int first = c;
    while (c < matrix.nchar && code_of(c, records[at(c)]) == code) ++c;
    text += text_of("ccode %s %i.%i;\n", code.c_str(), first, c - 1);
  }
  return text;
}

}  // namespace

std::string kept_settings_as_commands() {
  if (std::ranges::all_of(matrix.kept_characters, is_as_read)) return {};
  return codes_as_commands(matrix.kept_characters) + "ckeep;\n" +
         codes_as_commands(matrix.characters);
}

namespace {

const char* optimisation_text(const character_record& record) {
  if (record.type == landmark_data) return "landmark";
  if (record.is_continuous) return "continuous";
  if (record.is_sankoff) return "Sankoff";
  return record.additive ? "additive" : "nonadditive";
}

}  // namespace

void show_character_table() {
  emit("Character  Optimisation  Activity      Weight  Extra steps\n");
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& record = matrix.characters[at(c)];
    std::string line =
        text_of("%9i  %-12s  %-8s  %10i  %11i", c, optimisation_text(record),
                record.active ? "active" : "inactive", record.weight, record.internal_steps);
    if (matrix.use_char_names) line += "  " + character_name(c);
    emit(line, "\n");
  }
}

void summarise_settings(std::span<const std::uint8_t> flagged, const character_change& changed) {
  if (std::none_of(flagged.begin(), flagged.end(), [](std::uint8_t f) { return f != 0; })) return;
  const auto line = [&](const std::string& words, auto holds) {
    const auto listed = [&](int c) { return flagged[at(c)] && holds(matrix.characters[at(c)]); };
    std::vector<std::string> items;
    if (matrix.use_char_names) {
      for (int c = 0; c < matrix.nchar; ++c) {
        if (listed(c)) items.push_back(character_label(c));
      }
    } else {
      items = list_items(matrix.nchar, listed);
    }
    const std::string head = "    " + words + ":";
    if (!items.empty()) emit(head, wrapped_words(items, head.size()), "\n");
  };
  const auto line_per_value = [&](const std::string& words, std::int32_t character_record::*field) {
    std::set<int> values;
    for (int c = 0; c < matrix.nchar; ++c) {
      if (flagged[at(c)]) values.insert(matrix.characters[at(c)].*field);
    }
    for (const int value : values) {
      line(words + std::to_string(value),
           [field, value](const character_record& r) { return r.*field == value; });
    }
  };
  using record_type = const character_record&;
  const auto has_type = [](record_type r) { return !(r.type & (continuous_data | landmark_data)); };
  emit("Characters: \n");
  if (changed.additive) {
    line("additive", [&](record_type r) { return has_type(r) && r.additive; });
    line("nonadditive", [&](record_type r) { return has_type(r) && !r.additive; });
  }
  if (changed.active) {
    line("active", [](record_type r) { return r.active != 0; });
    line("inactive", [](record_type r) { return r.active == 0; });
  }
  if (changed.sankoff) {
    line("Sankoff", [&](record_type r) { return has_type(r) && r.is_sankoff; });
    line("non-Sankoff", [&](record_type r) { return has_type(r) && !r.is_sankoff; });
  }
  if (changed.weight) line_per_value("Character weight ", &character_record::weight);
  if (changed.internal_steps) {
    line_per_value("Internal (=extra) steps ", &character_record::internal_steps);
  }
}

}  // namespace zeb
