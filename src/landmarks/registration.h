// Everything that landmarks register at start-up.
#pragma once

namespace zeb {

void register_landmarks();

}  // namespace zeb
