#include "supports/registration.h"

#include "language/settings_scope.h"
#include "supports/quick_consensus.h"
#include "supports/resampling/resample_settings.h"

namespace zeb {

void register_supports() {
  add_settings(noted<resampling>);
  add_settings(noted<quick_consensus>);
}

}  // namespace zeb
