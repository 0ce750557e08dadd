// What higher rooms lend to landmarks at start-up.
#pragma once

namespace zeb {

struct landmark_hooks {
  /// Are scores fits? Then points count as they are, without automatic factors.
  bool (*implied_weights)() = nullptr;
};
extern landmark_hooks hooks_of_landmarks;

}  // namespace zeb
