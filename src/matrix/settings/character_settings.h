// Changing the settings of characters, and showing them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace zeb {

/// Weighted steps of a whole matrix must fit the counters of the scoring kernels.
constexpr int largest_weight = 1'000'000;

/// What is to change; settings without a value stay.
struct character_change {
  std::optional<bool> additive = {};
  std::optional<bool> active = {};
  std::optional<bool> sankoff = {};
  std::optional<int> weight = {};
  std::optional<int> internal_steps = {};
};
/// Applies the change and, where anything changes, lets go of the packed data. Continuous and
/// landmark characters have no type of optimisation to choose: that part of the change skips them,
/// and landmarks have no internal steps.
void change_character(int character, const character_change& change);

/// Gives the characters other weights for a while, and makes others of them active. Put back on any
/// path, unless the data have gone. Packed data are dropped when activity changes, and what lies
/// above them in the arena with them; who takes packed data next sees other weights by itself.
class weights_scope {
 public:
  weights_scope();
  ~weights_scope();
  weights_scope(const weights_scope&) = delete;
  weights_scope& operator=(const weights_scope&) = delete;

  /// By character, from 0 to `largest_weight`. May be called again, for the next replicate.
  void set_weights(std::span<const std::int32_t> weights) const;
  /// A byte by character.
  void set_activity(std::span<const std::uint8_t> active) const;

 private:
  std::vector<std::int32_t> weights_;
  std::vector<std::uint8_t> active_;
  int generation_;
};

/// Copies the current settings into the default, and back.
void keep_settings();
void restore_kept_settings();
/// Commands that make the default what it is, and then the settings; empty: the default is as after
/// reading. Costs stay those that are set.
std::string kept_settings_as_commands();

/// The settings of all characters, a line each.
void show_character_table();
/// Which of the flagged characters now have which of the settings that have a value in `changed`.
void summarise_settings(std::span<const std::uint8_t> flagged, const character_change& changed);

}  // namespace zeb
