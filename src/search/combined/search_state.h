// All that searches leave behind beyond trees, kept from searches that nobody asked for by name.
#pragma once

#include "base/random.h"
#include "search/combined/combined_settings.h"
#include "search/drivers/mult.h"
#include "search/drivers/rebuild.h"
#include "search/search_journal.h"
#include "search/search_results.h"
#include "search/search_settings.h"

namespace zeb {

/// With its end the settings of all search commands, the results of the last search, the journal
/// and the process's generator are what they were.
class search_state_scope {
 public:
  search_state_scope() = default;
  ~search_state_scope();
  search_state_scope(const search_state_scope&) = delete;
  search_state_scope& operator=(const search_state_scope&) = delete;

 private:
  swap_settings swapping_ = swapping;
  search_settings_state settings_ = search_settings;
  mult_settings mult_ = mult;
  ratchet_settings ratchet_ = ratchet;
  drift_settings drift_ = drift;
  fuse_settings fusing_ = fusing;
  sector_settings sectors_ = sectors;
  combined_settings combined_ = combined;
  rebuild_settings rebuilding_ = rebuilding;
  search_results results_ = last_search;
  search_journal journal_ = searches_done;
  random_generator generator_ = randomness.generator;
};

}  // namespace zeb
