#include "engine/settings.h"

namespace zeb {

engine_settings engine;

void allow_long_words(bool on) { engine.long_words = on; }

}  // namespace zeb
