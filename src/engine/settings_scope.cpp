#include "engine/settings_scope.h"

#include <utility>

namespace zeb {

engine_settings_scope::~engine_settings_scope() {
  engine = engine_;
  collapsing = collapsing_;
  weighting = std::move(weighting_);
}

}  // namespace zeb
