// Settings of the engine that come back as they were.
#pragma once

#include "engine/collapsing/collapsing.h"
#include "engine/fit/weighting_settings.h"
#include "engine/settings.h"

namespace zeb {

class engine_settings_scope {
 public:
  engine_settings_scope() = default;
  ~engine_settings_scope();
  engine_settings_scope(const engine_settings_scope&) = delete;
  engine_settings_scope& operator=(const engine_settings_scope&) = delete;

 private:
  engine_settings engine_ = engine;
  collapsing_settings collapsing_ = collapsing;
  weighting_settings weighting_ = weighting;
};

}  // namespace zeb
