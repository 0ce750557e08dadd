// Memory kept back for what must not fail: telling of an error, putting things back, ending.
#pragma once

namespace zeb {

/// Takes the reserve, and has it given up once the system refuses memory where none may lack.
void start_memory_reserve();
/// Takes it again after it was given up, if it can be had.
void refill_memory_reserve();

/// While one lives a refusal gives up the reserve, and the allocation is tried again.
class memory_reserve_scope {
 public:
  memory_reserve_scope();
  ~memory_reserve_scope();
  memory_reserve_scope(const memory_reserve_scope&) = delete;
  memory_reserve_scope& operator=(const memory_reserve_scope&) = delete;
};

}  // namespace zeb
