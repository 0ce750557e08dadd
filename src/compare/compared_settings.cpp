#include "compare/compared_settings.h"

#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/progress.h"

namespace zeb {
namespace {

bool same_costs(const data_character& first, const data_character& second) {
  if (!first.settings.is_sankoff || !second.settings.is_sankoff)
    return first.settings.is_sankoff == second.settings.is_sankoff;
  if (!first.costs || !second.costs) return first.costs == second.costs;
  return *first.costs == *second.costs;
}

std::vector<setting_kind> differing_settings(const data_character& first,
                                             const data_character& second) {
  const character_record& a = first.settings;
  const character_record& b = second.settings;
  std::vector<setting_kind> kinds;
  if (a.additive != b.additive) kinds.push_back(setting_kind::additivity);
  if (a.weight != b.weight) kinds.push_back(setting_kind::weight);
  if (a.active != b.active) kinds.push_back(setting_kind::activity);
  if (a.internal_steps != b.internal_steps) kinds.push_back(setting_kind::internal_steps);
  if (!same_costs(first, second)) kinds.push_back(setting_kind::costs);
  if (a.root_states != b.root_states) kinds.push_back(setting_kind::ancestral_states);
  return kinds;
}

int& count_of(comparison_counts& counts, setting_kind kind) {
  switch (kind) {
    case setting_kind::additivity:
      return counts.additivity;
    case setting_kind::weight:
      return counts.weights;
    case setting_kind::activity:
      return counts.activity;
    case setting_kind::internal_steps:
      return counts.internal_steps;
    case setting_kind::costs:
      return counts.costs;
    default:
      return counts.ancestral_states;
  }
}

std::string settings_in_words(const character_record& settings) {
  std::string text = settings.additive ? "additive" : "non-additive";
  if (settings.is_sankoff) text = "Sankoff";
  text += settings.active ? ", active" : ", inactive";
  return text +
         text_of(", weight %i, %i internal steps\n", settings.weight, settings.internal_steps);
}

bool keep_first_settings(const comparison_task& task, int character, int other) {
  const data_character& first = task.first.characters[at(character)];
  const data_character& second = task.second.characters[at(other)];
  const std::string question = "\nDifferent settings of " + first.name + ":\n\n  " +
                               task.first.file + ": " + settings_in_words(first.settings) + "  " +
                               task.second.file + ": " + settings_in_words(second.settings) +
                               "\nUse the first (y) or the second (n)? ";
  const std::string subject = std::to_string(character) + " " + std::to_string(other);
  return task.decisions.decide(query::settings, subject, question) == 'y';
}

}  // namespace

void compare_settings(const comparison_task& task, comparison& found) {
  for (const data_character& c : task.first.characters) found.chosen_settings.push_back(c.settings);
  for (int c = 0; c < task.first.nchar(); ++c) {
    const int other = found.characters.in_second[at(c)];
    if (other < 0) continue;
    check_interrupt();
    show_progress("character settings", c, task.first.nchar());
    const data_character& second = task.second.characters[at(other)];
    const auto kinds = differing_settings(task.first.characters[at(c)], second);
    for (const setting_kind kind : kinds) {
      found.settings.push_back({c, kind});
      ++count_of(found.counts, kind);
    }
    if (!kinds.empty() && !keep_first_settings(task, c, other)) {
      character_record& chosen = found.chosen_settings[at(c)];
      chosen.additive = second.settings.additive;
      chosen.active = second.settings.active;
      chosen.weight = second.settings.weight;
      chosen.internal_steps = second.settings.internal_steps;
    }
  }
}

}  // namespace zeb
