#include "base/memory_reserve.h"

#include <exception>
#include <memory>
#include <new>

namespace zeb {
namespace {

// More than messages, their places and the waiting texts of all open files take together. Large
// enough for the allocator to give it back to the system, and never touched, so that it costs
// addresses only.
constexpr std::size_t reserve_bytes = 4 << 20;

struct reserve_state {
  std::unique_ptr<char[]> block;
  int scopes = 0;
};
reserve_state reserve;

// Called by operator new until it gets what it asks for, or an exception.
void give_up_reserve() {
  const bool needed = reserve.scopes > 0 || std::uncaught_exceptions() > 0;
  if (!needed || !reserve.block) throw std::bad_alloc();
  reserve.block.reset();
}

}  // namespace

void start_memory_reserve() {
  refill_memory_reserve();
  std::set_new_handler(give_up_reserve);
}

void refill_memory_reserve() {
  if (!reserve.block) reserve.block.reset(new (std::nothrow) char[reserve_bytes]);
}

memory_reserve_scope::memory_reserve_scope() { ++reserve.scopes; }
memory_reserve_scope::~memory_reserve_scope() { --reserve.scopes; }

}  // namespace zeb
