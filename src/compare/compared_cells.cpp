#include "compare/compared_cells.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "base/interrupts.h"
#include "console/progress.h"
#include "matrix/symbols.h"

namespace zeb {
namespace {

// Numbers in both sets of one cell.
struct shared_cell {
  int taxon, other_taxon;
  int character, other_character;
};

class cell_comparer {
 public:
  cell_comparer(const comparison_task& task, comparison& found) : task_(task), found_(found) {
    characters_ =
        shared_characters(task, found, [](const data_character& c) { return c.is_discrete(); });
    for (int t = 0; t < task.first.ntax(); ++t) {
      if (found.taxa.in_second[at(t)] >= 0) taxa_.push_back(t);
    }
  }

  void compare() {
    go_through("missing entries", [this](const shared_cell& cell) { note_missing(cell); });
    go_through("different observed entries", [this](const shared_cell& cell) { note_cell(cell); });
    for (const cell_difference& d : found_.cells) count(d);
  }

 private:
  template <class function>
  void go_through(std::string_view stage, function visit);
  void note_missing(const shared_cell& cell);
  void note_cell(const shared_cell& cell);
  cell_difference difference_at(const shared_cell& cell) const;
  char choose(const shared_cell& cell, const cell_difference& d);
  std::string question(const shared_cell& cell, const cell_difference& d,
                       const char* answers) const;
  void count(const cell_difference& d);
  static std::string subject(const shared_cell& cell) {
    return std::to_string(cell.taxon) + " " + std::to_string(cell.character);
  }

  const comparison_task& task_;
  comparison& found_;
  std::vector<int> taxa_, characters_;
  char for_all_ = 0;  // what the user said of all others of this character, or taxon
};

// Characters one by one, or taxa: the user may answer for all cells of one.
template <class function>
void cell_comparer::go_through(std::string_view stage, function visit) {
  const std::vector<int>& outer = task_.by_taxon ? taxa_ : characters_;
  const std::vector<int>& inner = task_.by_taxon ? characters_ : taxa_;
  for (std::size_t i = 0; i < outer.size(); ++i) {
    check_interrupt();
    show_progress(stage, static_cast<double>(i), static_cast<double>(outer.size()));
    for_all_ = 0;
    for (const int j : inner) {
      const int t = task_.by_taxon ? outer[i] : j;
      const int c = task_.by_taxon ? j : outer[i];
      visit(shared_cell{t, found_.taxa.in_second[at(t)], c, found_.characters.in_second[at(c)]});
    }
  }
}

cell_difference cell_comparer::difference_at(const shared_cell& cell) const {
  const state_numbers& numbers = found_.states[at(cell.character)];
  cell_difference d{};
  d.taxon = cell.taxon;
  d.character = cell.character;
  d.first_is_missing = task_.first.is_silent(cell.taxon, cell.character);
  d.second_is_missing = task_.second.is_silent(cell.other_taxon, cell.other_character);
  d.first = task_.first.states(cell.taxon, cell.character);
  d.second = task_.second.states(cell.other_taxon, cell.other_character);
  if (!d.first_is_missing) d.first = renumbered(d.first, numbers.of_first);
  if (!d.second_is_missing) d.second = renumbered(d.second, numbers.of_second);
  d.result = d.first;
  return d;
}

std::string cell_comparer::question(const shared_cell& cell, const cell_difference& d,
                                    const char* answers) const {
  const data_character& character = task_.first.characters[at(cell.character)];
  const std::vector<std::string>& names = found_.states[at(cell.character)].names;
  const auto line = [&](const data_set& data, std::uint32_t states, bool is_missing) {
    return "  " + data.file + ": " +
           (is_missing ? std::string("?") : states_in_words(states, character, names)) + "\n";
  };
  return "\n" + task_.first.taxa[at(cell.taxon)] + ", " + character.name + ":\n\n" +
         line(task_.first, d.first, d.first_is_missing) +
         line(task_.second, d.second, d.second_is_missing) + answers;
}

void cell_comparer::note_missing(const shared_cell& cell) {
  if (task_.decisions.action(query::missing) == 'i') return;
  cell_difference d = difference_at(cell);
  if (d.first_is_missing == d.second_is_missing) return;
  const char answer = task_.decisions.decide(
      query::missing, subject(cell),
      question(cell, d,
               "\nReplace missing entry (y), don't (n), or ignore that it is missing (i)? "));
  if (answer == 'y' && d.first_is_missing) d.result = d.second;
  if (answer == 'i' && choose(cell, d) == 'n') d.result = d.second;
  found_.cells.push_back(d);
}

// "y", "n" or "b".
char cell_comparer::choose(const shared_cell& cell, const cell_difference& d) {
  if (for_all_) return for_all_;
  const std::string about =
      question(cell, d,
               task_.by_taxon ? "\nUse first (y), second (n), both (b);\n"
                                "first (a), second (r) for all of this taxon? "
                              : "\nUse first (y), second (n), both (b);\n"
                                "first (a), second (r) for all of this character? ");
  const char answer = task_.decisions.decide(query::cells, subject(cell), about, "ynbar");
  if (answer == 'a') for_all_ = 'y';
  if (answer == 'r') for_all_ = 'n';
  return for_all_ ? for_all_ : answer;
}

void cell_comparer::note_cell(const shared_cell& cell) {
  cell_difference d = difference_at(cell);
  if (d.first_is_missing && d.second_is_missing) return;
  if (!d.is_observed() && task_.decisions.action(query::missing) != 'i') return;
  if (d.is_observed() && d.first == d.second) return;
  const char answer = choose(cell, d);
  if (answer == 'n') d.result = d.second;
  if (answer == 'b') d.result = d.is_observed() ? d.first | d.second : missing_cell;
  found_.cells.push_back(d);
}

void cell_comparer::count(const cell_difference& d) {
  comparison_counts& counts = found_.counts;
  const scoring_change change = scoring_change_of(d);
  counts.scorings_added += change.adds;
  counts.scorings_deleted += change.deletes;
  if (d.is_observed()) {
    ++counts.cells;
  } else if (d.second_is_missing) {
    ++counts.missing_resolved;
  } else {
    ++counts.missing_added;
  }
}

}  // namespace

scoring_change scoring_change_of(const cell_difference& d) {
  return {!d.first_is_missing && (d.second_is_missing || (d.first & ~d.second) != 0),
          !d.second_is_missing && (d.first_is_missing || (d.second & ~d.first) != 0)};
}

std::string states_in_words(std::uint32_t states, const data_character& character,
                            const std::vector<std::string>& names) {
  std::string text;
  for (std::uint32_t rest = states; rest; rest &= rest - 1) {
    const int state = std::countr_zero(rest);
    if (!text.empty()) text += ", ";
    text += symbol_of_state(static_cast<data_type>(character.settings.type), state);
    if (at(state) < names.size() && !names[at(state)].empty()) text += " " + names[at(state)];
  }
  return text;
}

void compare_cells(const comparison_task& task, comparison& found) {
  cell_comparer(task, found).compare();
}

}  // namespace zeb
