// How the homoplasy of characters becomes a score, from the settings and the taxa and characters
// that are active. Reports and searches both go by one `fit_rules`, so that they can't differ.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zeb {

/// What homoplasy costs one character, or a weighting set on the average.
struct fit_function {
  enum class form : std::uint8_t {
    hyperbola,  // h / (parameter + h)
    table,      // the user's function at h * parameter
    line,       // h * parameter
  };
  form kind = form::hyperbola;
  double parameter = 3;
  bool operator==(const fit_function&) const = default;
};

/// Characters that are weighted together, by the average of their homoplasy.
struct fit_set {
  double characters = 0;  // that scores count, at least 1
  fit_function function;
  bool operator==(const fit_set&) const = default;
};

struct fit_rules {
  bool on = false;           // scores are fits
  double concavity = 3;      // the general one
  std::vector<double> user;  // the user's function: fit by extra steps, from 0; empty: none
  // By character of the matrix; `set_of` is empty where there are no sets, -1 for no set. All
  // characters of a set have the function of the set.
  std::vector<fit_function> functions;
  std::vector<std::int32_t> set_of;
  std::vector<fit_set> sets;
  bool operator==(const fit_rules&) const = default;

  /// What `homoplasy` (0 or more, in steps or fractions of them) costs: rising, 0 at 0.
  double fit(const fit_function& function, double homoplasy) const;
  /// Of one character by itself, unweighted.
  double character_fit(int character, double homoplasy) const {
    return fit(functions[static_cast<std::size_t>(character)], homoplasy);
  }
  /// Of a whole set, from the sum of weight * homoplasy over its characters.
  double set_fit(int set, double sum) const;
  /// The concavity of a function that isn't a line; of one by the user's table, what it would be
  /// without the table.
  double concavity_of(const fit_function& function) const {
    return function.kind == fit_function::form::table ? concavity / function.parameter
                                                      : function.parameter;
  }
  int set_of_character(int character) const {
    return set_of.empty() ? -1 : set_of[static_cast<std::size_t>(character)];
  }
};

/// The function of one point of a landmark character: by its own missing entries, where those count
/// and nothing else was said for the character. `all` of the active taxa could have it.
fit_function function_of_point(const fit_rules& rules, int character, double observed, double all);
/// For the settings in force and the active taxa and characters of the matrix.
fit_rules current_fit_rules();
/// What the step after `steps` extra ones costs by the general function, the user's or the general
/// concavity's.
double general_step_cost(double steps);
/// The most homoplasy that any tree gives to a character, in steps, fractions of them for
/// continuous characters. The taxa are the active ones.
double most_homoplasy(int character);
/// The largest of all active characters, in whole steps.
int most_extra_steps();
/// The concavity of characters that resemble those of concavity `k` after `ratio` (1 or more) times
/// the homoplasy: the one whose steps cost about the same, each against a first step.
double matched_concavity(double k, double ratio);

}  // namespace zeb
