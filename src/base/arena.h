// One block of memory with two stacks that grow towards each other. Nothing is freed singly: a
// command's temporary memory goes when it ends, long-lived data are protected by locks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

namespace zeb {

/// The block and its marks. Written by the functions of this file only.
struct arena_state {
  std::byte* base = nullptr;         // start of the block
  std::size_t size = 16'777'216;     // bytes, set by `mxram`
  std::byte* low = nullptr;          // next free byte of the low stack, 8-aligned
  std::byte* high = nullptr;         // lowest byte in use of the high stack, 8-aligned
  std::byte* low_mark = nullptr;     // what `low` returns to when a command ends
  std::byte* high_mark = nullptr;    // what `high` returns to when a command ends
  std::byte* top = nullptr;          // where `high` stands with nothing allocated
  int lock_count = 0;                // live locks, without the sentinel
  int live_scopes = 0;               // arena_scope objects that stand
  std::size_t peak_ram = 0;          // largest use during the command, bytes
  std::size_t peak_ram_ever = 0;     // the same over the run
  std::int64_t fail_countdown = -1;  // for tests: the n-th allocation from now fails; -1 never
};
extern arena_state arena;

/// Creates the block, halving the size down to 100 bytes when the system refuses it. Any former
/// block is released. Raises an error when less than `size` was given; ends the process when
/// nothing was.
void create_arena(std::size_t size);
void release_arena();

/// Bytes still free between the two stacks.
std::size_t arena_free();
/// Bytes in use at both ends.
std::size_t arena_in_use();

/// The peak of use is taken from here on, or the largest ever forgotten.
void measure_peak_anew();
void forget_largest_peak();

/// a * b in 64 bits; ends the command as out of memory where it overflows.
std::size_t checked_product(std::size_t a, std::size_t b);

/// Ends the command with its name and " - out of ram (change "hold" and/or "mxram")".
[[noreturn]] void out_of_memory();

/// Raw allocation; `alignment` is a power of two, at least 8 is used. Ends the command when the
/// block is exhausted.
void* alloc_low_bytes(std::size_t bytes, std::size_t alignment);
void* alloc_high_bytes(std::size_t bytes, std::size_t alignment);

/// `n` elements from the low or high stack, uninitialised (`alloc_`) or zeroed (`calloc_`).
/// `alignment` in bytes.
template <class T>
std::span<T> alloc_low(std::size_t n, std::size_t alignment = alignof(T)) {
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);
  return {static_cast<T*>(alloc_low_bytes(checked_product(n, sizeof(T)), alignment)), n};
}
template <class T>
std::span<T> alloc_high(std::size_t n, std::size_t alignment = alignof(T)) {
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);
  return {static_cast<T*>(alloc_high_bytes(checked_product(n, sizeof(T)), alignment)), n};
}
template <class T>
std::span<T> calloc_low(std::size_t n, std::size_t alignment = alignof(T)) {
  std::span<T> s = alloc_low<T>(n, alignment);
  if (n) std::memset(static_cast<void*>(s.data()), 0, s.size_bytes());
  return s;
}
template <class T>
std::span<T> calloc_high(std::size_t n, std::size_t alignment = alignof(T)) {
  std::span<T> s = alloc_high<T>(n, alignment);
  if (n) std::memset(static_cast<void*>(s.data()), 0, s.size_bytes());
  return s;
}

/// A table of `rows` pointers, each to `cols` elements; the elements are contiguous.
template <class T>
std::span<T*> alloc_table_low(std::size_t rows, std::size_t cols) {
  std::span<T*> table = alloc_low<T*>(rows);
  std::span<T> cells = alloc_low<T>(checked_product(rows, cols));
  for (std::size_t r = 0; r < rows; ++r) table[r] = cells.data() + r * cols;
  return table;
}
template <class T>
std::span<T*> calloc_table_low(std::size_t rows, std::size_t cols) {
  std::span<T*> table = alloc_table_low<T>(rows, cols);
  if (rows && cols) std::memset(static_cast<void*>(table[0]), 0, rows * cols * sizeof(T));
  return table;
}

/// Gives back what was taken last: `p` must lie between the mark and the stack's end, else the
/// error "Heap deallocation error".
void free_to_low(void* p);
void free_to_high(void* p);

/// Protects all that is allocated so far. The tag gets the lock's number, from 1; at most 50 stand.
void lock(int* tag);
/// Releases the lock and all later ones, and everything allocated since it was taken. A tag of 0 is
/// a no-op.
void unlock(int* tag);
/// Releases all locks, and with them all data.
void unlock_all();
/// Bytes that the lock of this tag protects by itself; 0 where it isn't taken.
std::size_t locked_bytes(const int* tag);
/// Releases everything above the marks.
void release_command_memory();

/// Called before a lock is released, by whoever must let go of the data that it protects
/// (registered at start-up, in order). Gets the tag about to go: once for every lock that lapses,
/// the latest first.
using unlock_hook = void (*)(const int* tag);
void add_unlock_hook(unlock_hook hook);

/// The lock tags, from the bottom up. 0 where the lock isn't taken.
struct lock_tags {
  int matrix_lock = 0;  // matrix, character records, tree buffer
  int tree_lock = 0;    // tree buffer after a change of its capacity
  int character_names_lock = 0;
  int constraints_lock = 0;
  int optimisation_lock = 0;  // packed data
  int search_lock = 0;        // search workspace
};
extern lock_tags locks;

/// What a command has allocated so far survives the commands that it runs. Locks taken or released
/// in between keep their own marks.
class arena_marks_scope {
 public:
  arena_marks_scope()
      : low_mark_(arena.low_mark), high_mark_(arena.high_mark), low_(arena.low), high_(arena.high) {
    arena.low_mark = low_;
    arena.high_mark = high_;
  }
  ~arena_marks_scope() {
    if (arena.low_mark == low_) arena.low_mark = low_mark_;
    if (arena.high_mark == high_) arena.high_mark = high_mark_;
  }
  arena_marks_scope(const arena_marks_scope&) = delete;
  arena_marks_scope& operator=(const arena_marks_scope&) = delete;

 private:
  std::byte* low_mark_;
  std::byte* high_mark_;
  std::byte* low_;
  std::byte* high_;
};

/// Puts both stacks back where they stood, for scratch within one function. Locks may not be taken
/// while one lives.
class arena_scope {
 public:
  arena_scope() : low_(arena.low), high_(arena.high) { ++arena.live_scopes; }
  ~arena_scope();
  arena_scope(const arena_scope&) = delete;
  arena_scope& operator=(const arena_scope&) = delete;

 private:
  std::byte* low_;
  std::byte* high_;
};

}  // namespace zeb
