// Settings of the engine that commands change.
#pragma once

namespace zeb {

struct engine_settings {
  bool long_words = true;  // `xbits`: kernels of words wider than 32 bits may be used
};
extern engine_settings engine;

void allow_long_words(bool on);

}  // namespace zeb
