// What the consensus commands hand down at start-up.
#pragma once

namespace zeb {

void register_consensus();

}  // namespace zeb
