// What stands after the word `resample`.
#pragma once

#include <cstdint>
#include <vector>

#include "supports/resampling/resample_settings.h"

namespace zeb {

/// One command: what lasts, and what holds for this run only.
struct resample_request {
  resample_settings settings;
  int gc = 1, frequency = 0, slope = 0;  // summaries: off, on, or `not_named`
  int percent = -1;                      // the probability given here; -1 none
  int from = -1;                         // reference tree
  bool sibyl = false;
  int errcount = -1;                   // tree that errors are counted by
  int words = 0;                       // options read
  std::vector<std::uint8_t> excluded;  // by taxon
  bool list = false;                   // show the settings, don't run
  bool run = true;
};
constexpr int not_named = -1;

/// Reads everything up to and over ";". Errors of options that can't go together, or without the
/// trees and data that there are; nothing has changed then.
resample_request read_resample_request();
sampling sampling_of(const resample_settings& settings);

}  // namespace zeb
