// The operators new and delete of the program for tests.
#include "allocations.h"

#include <malloc.h>

#include <cstdlib>
#include <new>

#include "base/arena.h"

namespace {

constexpr std::size_t no_limit = static_cast<std::size_t>(-1);

struct memory_state {
  std::size_t in_use = 0;  // bytes
  std::size_t limit = no_limit;
  int left = 0;  // allocations up to the one that fails
  bool full = false;
  bool arena_planned = false;  // who counts there tells nobody
};
memory_state memory;

bool is_refused(std::size_t bytes) {
  if (memory.left > 0 && --memory.left == 0) {
    note_failed_allocation();
    if (!memory.full) return true;
    memory.limit = memory.in_use;
  }
  return memory.limit != no_limit && memory.in_use + bytes > memory.limit;
}

void* allocate(std::size_t bytes) {
  if (is_refused(bytes)) return nullptr;
  void* const block = std::malloc(bytes == 0 ? 1 : bytes);
  memory.in_use += malloc_usable_size(block);
  return block;
}

void* allocate_or_throw(std::size_t bytes) {
  for (;;) {
    if (void* const block = allocate(bytes)) return block;
    const std::new_handler handler = std::get_new_handler();
    if (!handler) throw std::bad_alloc();
    handler();
  }
}

void release(void* block) noexcept {
  memory.in_use -= malloc_usable_size(block);
  std::free(block);
}

}  // namespace

void plan_failing_allocation(int number, bool full) {
  memory.left = number;
  memory.full = full;
  memory.limit = no_limit;
}

void plan_failing_arena(int number) {
  if (memory.arena_planned && zeb::arena.fail_countdown < 0) note_failed_allocation();
  memory.arena_planned = number > 0;
  zeb::arena.fail_countdown = number - 1;
}

void* operator new(std::size_t bytes) { return allocate_or_throw(bytes); }
void* operator new[](std::size_t bytes) { return allocate_or_throw(bytes); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return allocate(bytes); }
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept { return allocate(bytes); }
void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t) noexcept { release(block); }
