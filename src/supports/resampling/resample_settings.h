// What the user asks of `resample`.
#pragma once

#include <string>

#include "supports/resampling/sampling.h"

namespace zeb {

struct resample_settings {
  sampling_scheme scheme = sampling_scheme::symmetric;
  int replications = 100;
  int symmetric_percent = 33;  // of characters whose weight goes up, and whose weight goes down
  int deleted_percent = 36;    // by the jackknife
  int sibyl_percent = 33;      // deleted, when reduced data are tried
  int cut = 50;                // groups with more than so many per cent are shown
  bool gc = true;              // summaries that are shown, any of the three
  bool frequency = false;
  bool slope = false;
  bool savetrees = false;    // the consensus of each replicate goes to the tree buffer
  bool savesummary = false;  // so do the trees shown, with their supports
  bool table = false;        // supports as a table, too
  bool zero_weights = true;  // symmetric: down is to 0, else to half of twice the weight
  int softboot = 0;          // 0 to 100, bootstraps: the higher, the milder
  bool allow = false;        // almost any command may be a part of the search
  std::string search;        // commands; empty: the default search
};
extern resample_settings resampling;  // written by `resample`

}  // namespace zeb
