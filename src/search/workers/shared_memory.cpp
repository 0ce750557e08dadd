#include "search/workers/shared_memory.h"

#include <sys/mman.h>

#include <new>

namespace zeb {

shared_memory::shared_memory(std::size_t bytes)
    : start_(mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)),
      bytes_(bytes) {
  if (start_ == MAP_FAILED) throw std::bad_alloc();
}

shared_memory::~shared_memory() { munmap(start_, bytes_); }

}  // namespace zeb
