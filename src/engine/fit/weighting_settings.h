// Settings of implied weights, which `piwe` and `xpiwe` change. What they mean for each character
// is in fit_rules.h.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zeb {

/// Concavities of characters by their missing entries: those are taken to hide homoplasy.
struct missing_entry_rule {
  bool on = false;
  bool matches_costs = false;  // match what steps cost over a range, rather than be proportional
  double share = 0.5;          // of the homoplasy of an observed entry that a missing one has
  double most_ratio = 5;       // largest ratio of the general concavity to a character's own
  bool operator==(const missing_entry_rule&) const = default;
};

struct weighting_settings {
  bool on = false;          // scores are fits
  double concavity = 3.0;   // k, in steps of homoplasy: with k of them a character costs half
  bool extended = false;    // what follows `user_costs` is in force
  bool data_allow = false;  // data were read while `on`: functions and sets can be defined
  std::vector<double> user_costs;  // of the first extra step, the second...; empty: none
  missing_entry_rule missing;
  // By character, or empty where no character has any.
  std::vector<double> own_concavity;       // given by the user; 0 none
  std::vector<std::int32_t> set_of;        // weighting sets, from 0; -1 none
  std::vector<std::uint8_t> has_constant;  // its steps all cost the same:
  int constant_steps = 0;                  // what one costs after so many extra steps,
  double constant_factor = 1;              // times this
};
extern weighting_settings weighting;

void set_implied_weights(bool on);
void set_concavity(double k);
/// Empty: no function of the user.
void set_user_costs(std::vector<double> costs);
/// Refuses active characters that the user's function isn't for.
void check_characters_of_user_function();
void set_extended_weighting(bool on);
/// For the characters marked (one byte each) and, of weighting sets, for the whole set; 0 takes
/// their concavities away.
void set_own_concavity(std::span<const std::uint8_t> characters, double k);
/// Takes the place of concavities given before.
void extrapolate_to_missing(const missing_entry_rule& rule);
/// No character has a concavity of its own any more.
void clear_own_concavities();
/// `set_of` by character: the number of its weighting set, from 0 without gaps; -1 none. They leave
/// the set of constant weight.
void set_weighting_sets(std::vector<std::int32_t> set_of);
/// Makes the weight of characters constant; they leave their weighting sets.
void set_constant_weight(std::span<const std::uint8_t> characters, int steps, double factor);
/// Takes characters out of all sets.
void leave_weighting_sets(std::span<const std::uint8_t> characters);

bool has_own_concavities();
/// Of weighting sets; characters of constant weight aren't one.
int weighting_set_count();
bool has_constant_weights();
/// Any of these.
bool has_extended_weighting();

/// The commands that set what differs from the defaults, without their ";".
std::vector<std::string> weighting_as_commands();
/// Those of `xpiwe` among them.
std::vector<std::string> extended_weighting_as_commands();

/// For new data, and where data go: what belongs to characters goes with them.
void forget_character_weighting();

}  // namespace zeb
