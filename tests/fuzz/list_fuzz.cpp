// Any text read as a list or as one taxon ends in marks of 0 and 1, or in an error.
#include <cstddef>
#include <cstdint>
#include <string>

#include "../support/list_world.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4000) return 0;
  zeb_test::probe_list_parser({reinterpret_cast<const char*>(data), size});
  return 0;
}
