// The commands that bring back settings, weights and other choices of landmarks.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace zeb {

/// Without their ";". Nothing where the data hold no landmarks.
std::vector<std::string> lmark_settings_as_commands();
/// Factors, weights, minima and lines of figures, for characters that get new numbers (by
/// character; negative: left out).
std::vector<std::string> landmark_choices_as_commands(std::span<const int> new_numbers);

}  // namespace zeb
