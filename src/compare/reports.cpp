#include "compare/reports.h"

#include <algorithm>
#include <cmath>

#include "base/message_text.h"
#include "compare/compared_cells.h"
#include "compare/compared_names.h"
#include "console/output.h"
#include "trees/drawing/tables.h"

namespace zeb {
namespace {

const data_character& first_character(const comparison_task& task, int character) {
  return task.first.characters[at(character)];
}

void tell_matches(const char* head, const correspondence& found, const comparison_task& task,
                  const std::vector<std::string>& names, const std::vector<std::string>& others) {
  if (found.approximate.empty()) return;
  emit("\n", head, ":\n\n");
  for (const auto& pair : found.approximate) {
    emit(line_of_match(pair.first, task.first.file, names[at(pair.first)]),
         line_of_match(pair.second, task.second.file, others[at(pair.second)]), "\n");
  }
}

void tell_unique(const char* what, const std::vector<int>& unique,
                 const std::vector<std::string>& names, const data_set& data) {
  if (unique.empty()) return;
  emit("\n", what, " only in ", data.file, ":\n");
  for (const int i : unique) emit("  ", text_of("%3i ", i), names[at(i)], "\n");
}

void tell_states(const comparison_task& task, const comparison& found) {
  bool headed = false;
  const auto head = [&headed] {
    if (!headed) emit("\nEquivalence between states:\n\n");
    headed = true;
  };
  for (std::size_t c = 0; c < found.states.size(); ++c) {
    const int other = found.characters.in_second[c];
    if (other < 0) continue;
    const data_character& a = task.first.characters[c];
    const data_character& b = task.second.characters[at(other)];
    for (const auto& pair : found.states[c].approximate) {
      head();
      emit("  ", a.name, ": ", a.states[at(pair.first)], " = ", b.states[at(pair.second)], "\n");
    }
    for (const int state : found.states[c].only_in_first) {
      head();
      emit("  ", a.name, ": ", a.states[at(state)], " only in ", task.first.file, "\n");
    }
    for (const int state : found.states[c].only_in_second) {
      head();
      emit("  ", a.name, ": ", b.states[at(state)], " only in ", task.second.file, "\n");
    }
  }
}

std::string setting_in_words(setting_kind kind, const data_character& character) {
  const character_record& r = character.settings;
  switch (kind) {
    case setting_kind::additivity:
      return r.additive ? "additive" : "non-additive";
    case setting_kind::weight:
      return text_of("weight %i", r.weight);
    case setting_kind::activity:
      return r.active ? "active" : "inactive";
    case setting_kind::internal_steps:
      return text_of("%i internal steps", r.internal_steps);
    case setting_kind::costs:
      return r.is_sankoff ? "a Sankoff character" : "no Sankoff character";
    default:
      return r.root_states ? "with ancestral states" : "without ancestral states";
  }
}

void tell_settings(const comparison_task& task, const comparison& found) {
  if (!found.settings.empty()) emit("\nDifferent character settings:\n");
  for (const setting_difference& d : found.settings) {
    const data_character& a = first_character(task, d.character);
    const data_character& b =
        task.second.characters[at(found.characters.in_second[at(d.character)])];
    std::string here = setting_in_words(d.kind, a);
    const std::string there = setting_in_words(d.kind, b);
    if (here == there) here = "other costs or states";
    emit("  ", a.name, ": ", here, " / ", there, "\n");
  }
  if (!found.sequences.empty()) emit("\nDifferent sequence of states:\n");
  for (const int c : found.sequences) emit("  ", first_character(task, c).name, "\n");
}

void tell_cells(const comparison_task& task, const comparison& found) {
  if (!found.cells.empty())
    emit("\nDifferent entries (", task.first.file, " / ", task.second.file, "):\n");
  for (const cell_difference& d : found.cells) {
    const data_character& c = first_character(task, d.character);
    const auto words = [&](std::uint32_t states, bool is_missing) {
      if (is_missing) return std::string("?");
      return states_in_words(states, c, found.states[at(d.character)].names);
    };
    emit("  ", task.first.taxa[at(d.taxon)], ", ", c.name, ": ", words(d.first, d.first_is_missing),
         " / ", words(d.second, d.second_is_missing), "\n");
  }
}

void tell_scales(const comparison_task& task, const comparison& found) {
  for (const scale_match& scale : found.scales) {
    if (!scale.is_changed && scale.differences.empty()) continue;
    emit("\nContinuous character ", first_character(task, scale.character).name, ":\n");
    if (scale.is_changed) {
      emit("  ", task.first.file, " = ", task.second.file,
           text_of(" x %g %c %g\n", scale.factor, scale.shift < 0 ? '-' : '+',
                   std::abs(scale.shift)));
    }
    if (scale.beyond_scaling) {
      emit("\nHave differences which can't be fixed by scaling\n", "  (the values of ",
           task.first.file, " stay)\n");
    }
    for (const scale_match::entry& e : scale.differences) {
      const auto words = [](const entry_range& range, bool is_missing) {
        if (is_missing) return std::string("?");
        return range.low == range.high ? text_of("%g", range.low)
                                       : text_of("%g-%g", range.low, range.high);
      };
      emit("  ", task.first.taxa[at(e.taxon)], ": ", words(e.first, e.first_is_missing), " / ",
           words(e.second, e.second_is_missing), "\n");
    }
  }
}

void tell_landmarks(const comparison_task& task, const comparison& found) {
  for (const landmark_difference& d : found.landmarks) {
    if (d.first_is_missing || d.second_is_missing) continue;
    emit("\n", task.first.taxa[at(d.taxon)], ", landmarks of ",
         first_character(task, d.character).name,
         d.solved ? ":\n  the same when realigned\n"
                  : ":\nHave differences which can't be fixed realigning\n");
  }
}

}  // namespace

void tell_details(const comparison_task& task, const comparison& found) {
  const std::vector<std::string> characters = character_names(task.first);
  const std::vector<std::string> others = character_names(task.second);
  tell_matches("Taxa", found.taxa, task, task.first.taxa, task.second.taxa);
  tell_matches("Characters", found.characters, task, characters, others);
  tell_unique("Taxa", found.taxa.only_in_first(), task.first.taxa, task.first);
  tell_unique("Taxa", found.taxa.only_in_second(), task.second.taxa, task.second);
  tell_unique("Characters", found.characters.only_in_first(), characters, task.first);
  tell_unique("Characters", found.characters.only_in_second(), others, task.second);
  tell_states(task, found);
  tell_settings(task, found);
  tell_cells(task, found);
  tell_scales(task, found);
  tell_landmarks(task, found);
}

void tell_scorings(const comparison_task& task, const comparison& found) {
  std::vector<std::int64_t> added_by_character(task.first.characters.size());
  std::vector<std::int64_t> deleted_by_character = added_by_character;
  std::vector<std::int64_t> added_by_taxon(task.first.taxa.size());
  std::vector<std::int64_t> deleted_by_taxon = added_by_taxon;
  for (const cell_difference& d : found.cells) {
    const scoring_change change = scoring_change_of(d);
    added_by_character[at(d.character)] += change.adds;
    deleted_by_character[at(d.character)] += change.deletes;
    added_by_taxon[at(d.taxon)] += change.adds;
    deleted_by_taxon[at(d.taxon)] += change.deletes;
  }
  const std::string in = " (numbers as in " + task.first.file + ")";
  print_table("Scorings added, by character" + in, added_by_character);
  print_table("Scorings deleted, by character" + in, deleted_by_character);
  print_table("Scorings added, by taxon" + in, added_by_taxon);
  print_table("Scorings deleted, by taxon" + in, deleted_by_taxon);
}

void tell_counts(const comparison_task& task, const comparison& found) {
  const comparison_counts& n = found.counts;
  const char* newer = task.first.file.c_str();
  const char* older = task.second.file.c_str();
  const auto tell = [](const char* format, int count) {
    if (count > 0) emit(text_of(format, count));
  };
  emit("\n");
  if (!n.any()) emit("No differences between the two matrices!\n");
  emit(text_of("  Matrices share %i taxa and %i characters\n", found.taxa.shared(),
               found.characters.shared()));
  tell("  %i taxa are unique to one of the matrices\n", n.taxa_added + n.taxa_deleted);
  if (n.taxa_added + n.taxa_deleted > 0)
    emit(text_of("    %s adds %i taxa (and deletes %i) to %s\n", newer, n.taxa_added,
                 n.taxa_deleted, older));
  tell("  %i un-matched chars.\n", n.characters_added + n.characters_deleted);
  if (n.characters_added + n.characters_deleted > 0)
    emit(text_of("    %s adds %i chars. (and deletes %i) to %s\n", newer, n.characters_added,
                 n.characters_deleted, older));
  tell("  %i un-matched states\n", n.states);
  tell("  %i chars. with different additivity\n", n.additivity);
  tell("  %i different character weights\n", n.weights);
  tell("  %i chars. active in one of the matrices only\n", n.activity);
  tell("  %i chars. with different internal steps\n", n.internal_steps);
  tell("  %i chars. with different Sankoff settings\n", n.costs);
  tell("  %i Sankoff characters differ in ancestral states\n", n.ancestral_states);
  tell("  %i different sequence of states in additive characters\n", n.sequences);
  tell("  %i continuous characters with scale changed\n", n.scales);
  tell("        %i matrix cells with different states\n", n.cells);
  tell("        %i matrix cells missing/observed\n", n.missing_resolved + n.missing_added);
  if (n.missing_resolved + n.missing_added > 0) {
    emit(text_of("           %s resolves %i missing entries from %s\n", newer, n.missing_resolved,
                 older));
    emit(text_of("           (and eliminates %i entries)\n", n.missing_added));
  }
  if (n.landmarks > 0)
    emit(text_of("    %i different landmark configurations (%i solvable by realigning)\n",
                 n.landmarks, n.landmarks_solved));
  const auto tell_replaced = [](int count, const char* where, const char* by) {
    if (count > 0)
      emit(text_of("    %i missing landmark configs. in %s replaced by config. in %s\n", count,
                   where, by));
  };
  const auto stands_in = [](const landmark_difference& d) {
    return d.first_is_missing && d.replaced;
  };
  tell_replaced(static_cast<int>(std::ranges::count_if(found.landmarks, stands_in)), newer, older);
  tell_replaced(n.landmarks_missing_second, older, newer);
  if (found.realign_landmarks) {
    emit("\nNOTE: some landmark configurations combine taxon sets and should be realigned\n");
  }
}

}  // namespace zeb
