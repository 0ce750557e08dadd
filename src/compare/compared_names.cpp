#include "compare/compared_names.h"

#include <algorithm>
#include <bit>

#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/progress.h"

namespace zeb {
namespace {

[[noreturn]] void refuse_unnamed(const data_set& data, int character, int state) {
  std::string what = text_of("character %i of %s has no name", character, data.file.c_str());
  if (state >= 0)
    what = text_of("state %i of character %i of %s", state, character, data.file.c_str());
  error_end("Cannot compare/combine matrices: all characters and states must be named\n(" + what +
            ")");
}

std::string pair_subject(int first, int second) {
  return std::to_string(first) + " " + std::to_string(second);
}

// What an XML document can't hold as it is.
bool spoils_figure(char c) {
  return static_cast<unsigned char>(c) < 33 || c == '<' || c == '>' || c == '&' || c == '"' ||
         c == '\'';
}

bool make_fit(std::string& name) {
  if (std::ranges::none_of(name, spoils_figure)) return false;
  std::ranges::replace_if(name, spoils_figure, '_');
  return true;
}

std::string state_lines(const comparison_task& task, int character, int other) {
  return line_of_match(character, task.first.file, task.first.characters[at(character)].name) +
         line_of_match(other, task.second.file, task.second.characters[at(other)].name) + "\n";
}

bool confirm_states(const comparison_task& task, int character, int other, int state,
                    int other_state) {
  if (task.decisions.action(query::states) == 'y') return true;
  const std::string question =
      "\nEquivalence between states:\n\n" + state_lines(task, character, other) +
      line_of_match(state, task.first.file,
                    task.first.characters[at(character)].states[at(state)]) +
      line_of_match(other_state, task.second.file,
                    task.second.characters[at(other)].states[at(other_state)]) +
      "\nare they the same state ? ";
  const std::string subject =
      pair_subject(character, other) + " " + pair_subject(state, other_state);
  return task.decisions.decide(query::states, subject, question) == 'y';
}

bool keep_first_sequence(const comparison_task& task, int character, int other) {
  const auto sequence = [](const data_character& of) {
    std::string text;
    for (const std::string& name : of.states) text += " " + (name.empty() ? "-" : name);
    return text + "\n";
  };
  const data_character& first = task.first.characters[at(character)];
  const data_character& second = task.second.characters[at(other)];
  const std::string question = "\nDifferent sequence of states in additive character:\n\n" +
                               state_lines(task, character, other) + task.first.file + ":" +
                               sequence(first) + task.second.file + ":" + sequence(second) +
                               "\nUse the first (y) or the second (n)? ";
  return task.decisions.decide(query::sequence, pair_subject(character, other), question) == 'y';
}

}  // namespace

std::string line_of_match(int number, const std::string& where, const std::string& name) {
  return text_of("  %3i in ", number) + where + " - " + name + "\n";
}

std::vector<std::string> character_names(const data_set& data) {
  std::vector<std::string> names;
  for (const data_character& c : data.characters) names.push_back(c.name);
  return names;
}

void check_names(const data_set& data) {
  for (int c = 0; c < data.nchar(); ++c) {
    const data_character& character = data.characters[at(c)];
    if (character.name.empty()) refuse_unnamed(data, c, -1);
    if (!character.has_numbered_states()) continue;
    std::uint32_t seen = 0;
    for (int t = 0; t < data.ntax(); ++t) {
      if (!data.is_silent(t, c)) seen |= data.states(t, c);
    }
    for (; seen; seen &= seen - 1) {
      const int state = std::countr_zero(seen);
      if (at(state) >= character.states.size() || character.states[at(state)].empty())
        refuse_unnamed(data, c, state);
    }
  }
}

void make_names_fit_figures(data_set& data) {
  int taxon = -1;
  for (int t = data.ntax() - 1; t >= 0; --t) {
    if (make_fit(data.taxa[at(t)])) taxon = t;
  }
  int character = -1;
  for (int c = data.nchar() - 1; c >= 0; --c) {
    bool changed = make_fit(data.characters[at(c)].name);
    for (std::string& state : data.characters[at(c)].states) changed |= make_fit(state);
    if (changed) character = c;
  }
  const auto tell = [&data](const char* what, int number) {
    if (number < 0) return;
    warning_f(
        "Invalid symbols in taxon/char/state names\n(e.g. %s %i of %s,\ninvalid for an SVG "
        "file)\nwill be changed to \"_\"",
        what, number, data.file.c_str());
  };
  tell("taxon", taxon);
  tell("character", character);
}

void match_characters(const comparison_task& task, comparison& found) {
  const auto compatible = [&task](int i, int j) {
    const data_character& first = task.first.characters[at(i)];
    const data_character& second = task.second.characters[at(j)];
    return are_of_one_kind(task.first, i, task.second, j) &&
           (!task.compare_states || states_are_alike(first, second, task.by_similarity));
  };
  const auto confirm = [&task](int i, int j) {
    if (task.decisions.action(query::characters) == 'y') return true;
    const std::string question =
        "\nCharacters:\n\n" + line_of_match(i, task.first.file, task.first.characters[at(i)].name) +
        " " + line_of_match(j, task.second.file, task.second.characters[at(j)].name) +
        "\nare they the same character ? ";
    return task.decisions.decide(query::characters, pair_subject(i, j), question) == 'y';
  };
  const std::vector<state_sketch> sketches(task.first.characters.begin(),
                                           task.first.characters.end());
  const std::vector<state_sketch> others(task.second.characters.begin(),
                                         task.second.characters.end());
  const auto plausible = [&](int i, int j) {
    return !task.compare_states || sketches[at(i)].may_be_alike(others[at(j)]);
  };
  found.characters =
      match_names(character_names(task.first), character_names(task.second), task.forced_characters,
                  {.by_similarity = task.by_similarity,
                   .progress = "matching characters",
                   .plausible = plausible,
                   .compatible = compatible,
                   .confirm = confirm});
}

void match_taxa(const comparison_task& task, comparison& found) {
  const auto confirm = [&task](int i, int j) {
    if (task.decisions.action(query::taxa) == 'y') return true;
    const std::string question = "\nTaxa:\n\n" +
                                 line_of_match(i, task.first.file, task.first.taxa[at(i)]) +
                                 line_of_match(j, task.second.file, task.second.taxa[at(j)]) +
                                 "\nare they the same taxon ? ";
    return task.decisions.decide(query::taxa, pair_subject(i, j), question) == 'y';
  };
  found.taxa = match_names(task.first.taxa, task.second.taxa, task.forced_taxa,
                           {.by_similarity = task.by_similarity,
                            .progress = "matching taxa",

                            .confirm = confirm});
}

void match_states_of_characters(const comparison_task& task, comparison& found) {
  found.states.resize(task.first.characters.size());
  for (int c = 0; c < task.first.nchar(); ++c) {
    const int other = found.characters.in_second[at(c)];
    if (other < 0) continue;
    check_interrupt();
    show_progress("matching states", c, task.first.nchar());
    state_rules rules{
        .by_similarity = task.by_similarity,
        .additive = found.chosen_settings[at(c)].additive != 0,
    };
    rules.confirm = [&](int i, int j) { return confirm_states(task, c, other, i, j); };
    rules.keep_first_sequence = [&] { return keep_first_sequence(task, c, other); };
    state_numbers& numbers = found.states[at(c)];
    numbers = number_states(task.first.characters[at(c)], task.second.characters[at(other)], rules);
    if (numbers.overflow) {
      warning_f(
          "Fusing characters %i and %i results in more than 32 states\n"
          "States beyond 32 will be changed to missing",
          c, other);
    }
    if (numbers.sequences_differ) found.sequences.push_back(c);
    found.counts.states +=
        static_cast<int>(numbers.only_in_first.size() + numbers.only_in_second.size());
  }
  found.counts.sequences = static_cast<int>(found.sequences.size());
}

}  // namespace zeb
