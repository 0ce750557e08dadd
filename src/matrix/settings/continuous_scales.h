// Changes to the scale of continuous characters in memory. Stored values go from 0 to 65,000; the
// table of scales keeps the way back to the units that were read.
#pragma once

#include <cstdint>
#include <span>

namespace zeb {

bool any_continuous();

/// Rescales the character so that its minimum number of steps over the flagged taxa is `steps`
/// (user's units), in the logarithm of the original values where `in_logarithm`. A character
/// without variation is left as it is. Errors, with the character unchanged: the values don't fit,
/// or are 0 where logarithms are asked for.
void standardise(int character, double steps, std::span<const std::uint8_t> taxa,
                 bool in_logarithm);
/// Puts a character in log form back to the form it was read in; no-op for others.
void undo_logarithm(int character);
/// Adds to the original scale; the stored values stay. Error in log form.
void shift_scale(int character, double by);
/// The stored values become the original ones.
void fix_scale(int character);
/// Sets the scale outright, for data written by the program.
void set_scale(int character, double factor, double shift, bool logarithmic);

}  // namespace zeb
