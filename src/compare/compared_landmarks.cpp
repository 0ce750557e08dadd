#include "compare/compared_landmarks.h"

#include <algorithm>

#include "base/interrupts.h"
#include "realign/superimpose.h"

namespace zeb {
namespace {

// Below this sum of distances between the points nothing is done. Coordinates are decimal, so that
// a sum of just as much may come out a little lower.
constexpr double same_place = 0.0001 - 1e-9;

using points = std::vector<landmark_point>;

points taxon_points(const landmark_configuration& configuration, int taxon) {
  const auto first = configuration.coordinates.begin() + taxon * configuration.points;
  return {first, first + configuration.points};
}

bool no_point(const points& of) {
  return std::ranges::all_of(of, [](const landmark_point& p) { return is_missing(p); });
}

class configuration_comparer {
 public:
  configuration_comparer(const comparison_task& task, comparison& found, int character)
      : task_(task),
        found_(found),
        character_(character),
        first_(*task.first.landmarks_of(character)),
        second_(*task.second.landmarks_of(found.characters.in_second[at(character)])) {}
  void compare() {
    for (int t = 0; t < task_.first.ntax(); ++t) {
      check_interrupt();
      const int u = found_.taxa.in_second[at(t)];
      if (u >= 0) compare_taxon(t, taxon_points(first_, t), taxon_points(second_, u));
    }
  }

 private:
  void compare_taxon(int taxon, const points& first, const points& second);
  void note_missing(int taxon, bool first_is_missing, const points& second);
  bool lay_on(const points& first, points& second) const;
  bool take_second(int taxon) const;

  const comparison_task& task_;
  comparison& found_;
  int character_;
  const landmark_configuration& first_;
  const landmark_configuration& second_;
};

// A configuration that one set lacks is that of the other, unless the user wants it to stay away.
void configuration_comparer::note_missing(int taxon, bool first_is_missing, const points& second) {
  landmark_difference d{.taxon = taxon,
                        .character = character_,
                        .solved = false,
                        .replaced = false,
                        .first_is_missing = first_is_missing,
                        .second_is_missing = !first_is_missing,
                        .result = second};
  char action = 'y';
  if (first_is_missing && task_.decisions.action(query::missing) != 'i') {
    const std::string subject = std::to_string(taxon) + " " + std::to_string(character_);
    action = task_.decisions.decide(
        query::missing, subject,
        "\n" + task_.first.taxa[at(taxon)] + " lacks the landmarks of " +
            task_.first.characters[at(character_)].name + " in " + task_.first.file +
            "\n\nReplace missing entry (y), don't (n), or ignore that it is missing (i)? ");
  }
  d.replaced = first_is_missing && action != 'n';
  if (first_is_missing && !d.replaced) std::ranges::fill(d.result, missing_point);
  ++(first_is_missing ? found_.counts.landmarks_missing_first
                      : found_.counts.landmarks_missing_second);
  found_.landmarks.push_back(std::move(d));
}

// Moves the second configuration to where it lies best on the first. False: they haven't the same
// points.
bool configuration_comparer::lay_on(const points& first, points& second) const {
  points reference, target;
  for (std::size_t i = 0; i < first.size(); ++i) {
    if (is_missing(first[i]) != is_missing(second[i])) return false;
    if (is_missing(first[i])) continue;
    reference.push_back(first[i]);
    target.push_back(second[i]);
  }
  const matched_points matched = {first_.dimensions, reference, target, {}};
  move_points(second, superimpose(matched, {.scales = true, .turns = true}));
  return true;
}

double distance_between(const points& first, const points& second) {
  double sum = 0;
  for (std::size_t i = 0; i < first.size(); ++i) {
    if (!is_missing(first[i]) && !is_missing(second[i])) sum += distance_of(first[i], second[i]);
  }
  return sum;
}

bool same_points(const points& first, const points& second) {
  return std::ranges::equal(first, second, [](const landmark_point& a, const landmark_point& b) {
    return is_missing(a) == is_missing(b);
  });
}

bool configuration_comparer::take_second(int taxon) const {
  const std::string subject = std::to_string(taxon) + " " + std::to_string(character_);
  const std::string question = "\n" + task_.first.taxa[at(taxon)] + ", " +
                               task_.first.characters[at(character_)].name +
                               ":\n\nHave differences which can't be fixed realigning\n\nUse that "
                               "of the newer file (y) or of the older one (n)? ";
  return task_.decisions.decide(query::landmarks, subject, question) == 'n';
}

void configuration_comparer::compare_taxon(int taxon, const points& first, const points& second) {
  const bool no_first = no_point(first);
  const bool no_second = no_point(second);
  if (no_first && no_second) return;
  if (no_first || no_second) return note_missing(taxon, no_first, second);
  if (same_points(first, second) && distance_between(first, second) < same_place) return;
  landmark_difference d{.taxon = taxon,
                        .character = character_,
                        .solved = false,
                        .replaced = false,
                        .first_is_missing = false,
                        .second_is_missing = false,
                        .result = second};
  d.solved = lay_on(first, d.result) && distance_between(first, d.result) < same_place;
  if (!d.solved) d.replaced = take_second(taxon);
  ++found_.counts.landmarks;
  found_.counts.landmarks_solved += d.solved;
  found_.landmarks.push_back(std::move(d));
}

// Configurations of both sets, of which those of one may lie anywhere.
bool mixes_sets(const comparison_task& task, const comparison& found, int character) {
  const int other = found.characters.in_second[at(character)];
  const landmark_configuration& second = *task.second.landmarks_of(other);
  const auto only = found.taxa.only_in_second();
  return std::ranges::any_of(only, [&](int t) { return !no_point(taxon_points(second, t)); });
}

}  // namespace

void compare_landmarks(const comparison_task& task, comparison& found) {
  const auto shared =
      shared_characters(task, found, [](const data_character& c) { return c.is_landmark(); });
  for (const int c : shared) {
    configuration_comparer(task, found, c).compare();
    const bool replaced = std::ranges::any_of(found.landmarks, &landmark_difference::replaced);
    found.realign_landmarks |= replaced || mixes_sets(task, found, c);
  }
}

}  // namespace zeb
