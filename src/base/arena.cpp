#include "base/arena.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "base/command.h"
#include "base/errors.h"
#include "base/message_text.h"
#include "base/process.h"

#if !defined(__SANITIZE_ADDRESS__) && defined(__has_feature)
#if __has_feature(address_sanitizer)
#define __SANITIZE_ADDRESS__  // as GCC says it
#endif
#endif

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#define POISON(p, n) __asan_poison_memory_region(p, n)
#define UNPOISON(p, n) __asan_unpoison_memory_region(p, n)
#else
#define POISON(p, n) static_cast<void>(0)
#define UNPOISON(p, n) static_cast<void>(0)
#endif

namespace zeb {

arena_state arena;
lock_tags locks;

namespace {

constexpr int most_locks = 50;
constexpr std::size_t grain = 8;
// Left poisoned after each block, so that what runs over its end is seen.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::size_t gap = 16;
#else
constexpr std::size_t gap = 0;
#endif

// A lock remembers where both stacks stood, and which marks were in force before it.
struct lock_entry {
  int* tag;
  std::byte* low;
  std::byte* high;
  std::byte* low_mark;
  std::byte* high_mark;
};
struct lock_state {
  std::vector<lock_entry> table;  // from the bottom up
  std::vector<unlock_hook> hooks;
};
lock_state standing;

std::byte* round_up(std::byte* p, std::size_t alignment) {
  const auto address = reinterpret_cast<std::uintptr_t>(p);
  return p + ((alignment - address % alignment) % alignment);
}

std::byte* round_down(std::byte* p, std::size_t alignment) {
  return p - reinterpret_cast<std::uintptr_t>(p) % alignment;
}

void note_peak() {
  arena.peak_ram = std::max(arena.peak_ram, arena_in_use());
  arena.peak_ram_ever = std::max(arena.peak_ram_ever, arena.peak_ram);
}

bool must_fail() { return arena.fail_countdown >= 0 && arena.fail_countdown-- == 0; }

void set_low(std::byte* p) {
  if (p < arena.low) POISON(p, static_cast<std::size_t>(arena.low - p));
  arena.low = p;
}

void set_high(std::byte* p) {
  if (p > arena.high) POISON(arena.high, static_cast<std::size_t>(p - arena.high));
  arena.high = p;
}

}  // namespace

void create_arena(std::size_t size) {
  release_arena();
  std::size_t got = size < 64 ? 64 : size;  // the smallest block still holds the two stacks' ends
  void* block = std::malloc(got);
  while (!block && got / 2 >= 100) {
    got /= 2;
    block = std::malloc(got);
  }
  if (!block) {
    error_end("Allocation failure: not enough RAM available,\ncan't recover from error");
  }
  arena.base = static_cast<std::byte*>(block);
  arena.size = size < got ? size : got;
  arena.low = round_up(arena.base, grain);
  arena.top = arena.size >= 32 ? round_down(arena.base + arena.size - 16, grain) : arena.low;
  arena.high = arena.top;
  arena.low_mark = arena.low;
  arena.high_mark = arena.high;
  POISON(arena.low, static_cast<std::size_t>(arena.high - arena.low));
  standing.table.clear();
  standing.table.reserve(most_locks);
  arena.lock_count = 0;
  if (got < size) {
    error_end("Allocation failure: not enough RAM available,\nallocated only",
              megabytes_text(static_cast<double>(got)));
  }
}

void release_arena() {
  if (!arena.base) return;
  UNPOISON(arena.base, arena.size);
  std::free(arena.base);
  arena.base = arena.low = arena.high = arena.low_mark = arena.high_mark = arena.top = nullptr;
  for (const lock_entry& entry : standing.table) *entry.tag = 0;
  standing.table.clear();
  arena.lock_count = 0;
}

std::size_t arena_free() { return static_cast<std::size_t>(arena.high - arena.low); }

std::size_t arena_in_use() {
  return static_cast<std::size_t>(arena.low - arena.base) +
         static_cast<std::size_t>(arena.top - arena.high);
}

void measure_peak_anew() { arena.peak_ram = arena_in_use(); }
void forget_largest_peak() { arena.peak_ram_ever = 0; }

std::size_t checked_product(std::size_t a, std::size_t b) {
  std::size_t result = 0;
  if (__builtin_mul_overflow(a, b, &result)) out_of_memory();
  return result;
}

void out_of_memory() {
  note_memory_refused();
  error_end(command.command_name + " - out of ram (change \"hold\" and/or \"mxram\")");
}

void* alloc_low_bytes(std::size_t bytes, std::size_t alignment) {
  std::byte* start = round_up(arena.low, alignment < grain ? grain : alignment);
  if (must_fail() || start > arena.high || bytes > static_cast<std::size_t>(arena.high - start)) {
    out_of_memory();
  }
  const std::size_t room = static_cast<std::size_t>(arena.high - start);
  std::byte* end = round_up(start + bytes + std::min(gap, room - bytes), grain);
  if (end > arena.high) end = arena.high;
  UNPOISON(start, bytes);
  arena.low = end;
  note_peak();
  return start;
}

void* alloc_high_bytes(std::size_t bytes, std::size_t alignment) {
  if (must_fail() || bytes > arena_free()) out_of_memory();
  const std::size_t with_gap = bytes + std::min(gap, arena_free() - bytes);
  std::byte* start = round_down(arena.high - with_gap, alignment < grain ? grain : alignment);
  if (start < arena.low) out_of_memory();
  UNPOISON(start, bytes);
  arena.high = start;
  note_peak();
  return start;
}

void free_to_low(void* p) {
  auto* to = static_cast<std::byte*>(p);
  if (to < arena.low_mark || to > arena.low) error_end("Heap deallocation error");
  set_low(to);
}

void free_to_high(void* p) {
  auto* to = static_cast<std::byte*>(p);
  if (to > arena.high_mark || to < arena.high) error_end("Heap deallocation error");
  set_high(to);
}

arena_scope::~arena_scope() {
  --arena.live_scopes;
  set_low(low_);
  set_high(high_);
}

void lock(int* tag) {
  if (!tag) error_end("Void lock tag");
  if (standing.table.size() == most_locks) error_end("Too many ram locks");
  standing.table.push_back({tag, arena.low, arena.high, arena.low_mark, arena.high_mark});
  arena.low_mark = arena.low;
  arena.high_mark = arena.high;
  arena.lock_count = static_cast<int>(standing.table.size());
  *tag = arena.lock_count;
}

void unlock(int* tag) {
  if (!tag) error_end("Void lock tag");
  if (*tag == 0) return;
  const auto index = static_cast<std::size_t>(*tag) - 1;
  if (*tag < 0 || index >= standing.table.size() || standing.table[index].tag != tag)
    error_end("Unlock error");
  if (arena.live_scopes > 0)
    error_end("Data and settings that a running search stands on can't be changed");
  for (std::size_t i = standing.table.size(); i-- > index;) {
    for (const unlock_hook hook : standing.hooks) hook(standing.table[i].tag);
  }
  // A lock protects what lay in the stacks between the former marks and where they stood: that is
  // what goes now, with all that came later.
  const lock_entry entry = standing.table[index];
  for (std::size_t i = index; i < standing.table.size(); ++i) *standing.table[i].tag = 0;
  standing.table.resize(index);
  arena.low_mark = entry.low_mark;
  arena.high_mark = entry.high_mark;
  set_low(entry.low_mark);
  set_high(entry.high_mark);
  arena.lock_count = static_cast<int>(standing.table.size());
}

void unlock_all() {
  if (!standing.table.empty()) unlock(standing.table.front().tag);
}

std::size_t locked_bytes(const int* tag) {
  for (const lock_entry& entry : standing.table) {
    if (entry.tag != tag) continue;
    return static_cast<std::size_t>(entry.low - entry.low_mark) +
           static_cast<std::size_t>(entry.high_mark - entry.high);
  }
  return 0;
}

void release_command_memory() {
  set_low(arena.low_mark);
  set_high(arena.high_mark);
}

void add_unlock_hook(unlock_hook hook) { standing.hooks.push_back(hook); }

}  // namespace zeb
