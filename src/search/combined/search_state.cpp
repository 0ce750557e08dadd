#include "search/combined/search_state.h"

#include <utility>

namespace zeb {

search_state_scope::~search_state_scope() {
  swapping = swapping_;
  search_settings = settings_;
  mult = mult_;
  ratchet = ratchet_;
  drift = drift_;
  fusing = fusing_;
  sectors = sectors_;
  combined = combined_;
  rebuilding = rebuilding_;
  last_search = results_;
  searches_done = std::move(journal_);
  go_on_from(generator_);
}

}  // namespace zeb
