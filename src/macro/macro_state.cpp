#include "macro/macro_state.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "base/errors.h"
#include "base/message_text.h"
#include "language/input.h"

namespace zeb {

macro_state macros;
walk_results walked;

void set_exit_status(int status) { macros.exit_status = status; }

namespace {

// Loops are paid for from the memory that a script is given, though their records lie beside it.
constexpr std::size_t bytes_of_loop = 64;
constexpr std::size_t least_bytes_of_loop = 36;  // as the least size of the memory counts them

// Takes the tables in turn from the memory, which holds zeros.
template <class T>
T* carve(char*& place, std::size_t n) {
  const std::size_t misfit = reinterpret_cast<std::uintptr_t>(place) % alignof(std::max_align_t);
  if (misfit) place += alignof(std::max_align_t) - misfit;
  T* result = reinterpret_cast<T*>(place);
  place += n * sizeof(T);
  return result;
}

std::int64_t least_memory() {
  const std::int64_t vars = macros.max_variables;
  const std::int64_t loops = macros.max_loops;
  return static_cast<std::int64_t>(least_bytes_of_loop) * loops + 4 * vars +
         (macros.protection ? 29 * vars : 0) + (macros.integer_only ? 4 * vars : 8 * vars) +
         8 * vars + 1000;
}

std::string kilobytes_text(std::size_t bytes) {
  return text_of("%zu.%zu", bytes / 1000, bytes % 1000 / 100);
}

}  // namespace

void allocate_macro_tables() {
  macros.memory_bytes = std::max(macros.memory_bytes, least_memory());
  const auto vars = static_cast<std::size_t>(macros.max_variables);
  const auto loops = static_cast<std::size_t>(macros.max_loops);
  // The configured size is what scripts may use; what tables take here beyond it comes on top.
  const std::size_t beyond = loops * (bytes_of_loop - least_bytes_of_loop) + 512;
  const std::size_t least = static_cast<std::size_t>(least_memory()) + beyond;
  macros.memory_size = std::max(static_cast<std::size_t>(macros.memory_bytes), least);
  // Memory of zeros: what isn't used is never touched.
  macros.memory = static_cast<std::byte*>(std::calloc(macros.memory_size, 1));
  if (!macros.memory) error_end("Allocation failure: not enough RAM available");
  char* place = reinterpret_cast<char*>(macros.memory);
  if (macros.protection) {
    macros.dimension_count = carve<std::int8_t>(place, vars);
    macros.dimension_sizes = carve<int*>(place, vars);
    macros.size_tables = carve<int>(place, vars * most_dimensions);
  } else {
    macros.dimension_count = nullptr;
    macros.dimension_sizes = nullptr;
    macros.size_tables = nullptr;
  }
  macros.named = carve<int>(place, vars);
  carve<std::byte>(place, loops * bytes_of_loop);
  macros.int_values = macros.integer_only ? carve<std::int32_t>(place, vars) : nullptr;
  macros.real_values = macros.integer_only ? nullptr : carve<double>(place, vars);
  macros.names = carve<char*>(place, vars);
  macros.heap_bottom = macros.heap_top = place;
  macros.heap_end = reinterpret_cast<char*>(macros.memory) + macros.memory_size - 16;
  macros.named_count = 0;
  macros.bodies.clear();
  macros.table_array = -1;
  macros.frames.assign(static_cast<std::size_t>(input.top) + 1, macro_frame{});
  for (macro_frame& frame : macros.frames) frame.heap_top = macros.heap_top;
}

void free_macro_tables() {
  std::free(macros.memory);
  macros.memory = nullptr;
  macros.heap_bottom = macros.heap_top = macros.heap_end = nullptr;
  macros.named_count = 0;
  macros.frames.assign(1, macro_frame{});
}

std::size_t macro_memory_used() {
  return static_cast<std::size_t>(macros.heap_top - reinterpret_cast<char*>(macros.memory));
}

std::string macro_memory_text() {
  const std::size_t used = macro_memory_used();
  const auto free = static_cast<std::size_t>(macros.heap_end - macros.heap_top);
  return "Macros: " + kilobytes_text(used) + " Kb in use, " + kilobytes_text(free) + " Kb free";
}

char* take_heap(std::size_t bytes) {
  if (bytes > static_cast<std::size_t>(macros.heap_end - macros.heap_top))
    error_end("Not enough RAM available to continue macros...");
  char* result = macros.heap_top;
  macros.heap_top += bytes;
  return result;
}

void release_heap(char* to) {
  if (to < macros.heap_bottom || to > macros.heap_top) {
    error_end("Heap deallocation error in memory for Macros");
  }
  macros.heap_top = to;
}

void set_table_array(int number) { macros.table_array = number; }

void tell_percent_swapped(double percent) { walked.percent_swapped = percent; }

void tell_growing_tree(bool complete, int taxon_added) {
  walked.tree_complete = complete;
  walked.taxon_added = taxon_added;
}

void tell_reconstruction_steps(double steps) { walked.steps = steps; }

void tell_file(std::string name, bool is_directory) noexcept {
  walked.file = std::move(name);
  walked.is_directory = is_directory;
}

}  // namespace zeb
