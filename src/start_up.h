// Start-up registration of all rooms.
#pragma once

namespace zeb {

/// Hands the command table to the interpreter and lets every room register what lower floors call.
void register_everything();

}  // namespace zeb
