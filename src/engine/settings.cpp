#include "engine/settings.h"

namespace zeb {

engine_settings engine;

}  // namespace zeb
