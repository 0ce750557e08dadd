// Any text read as a matrix ends in an error, or in data that are written and read back the same.
#include <cstddef>
#include <cstdint>
#include <string>

#include "../support/matrix_probe.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// The first byte chooses the settings.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2 || size > 20000) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (zeb_test::asks_for_much(text)) return 0;
  constexpr const char* settings[] = {"nstates num 8 nogaps;", "nstates num 16;",
                                      "nstates num 32;",       "nstates dna;",
                                      "nstates dna gaps;",     "nstates prot gaps;"};
  zeb_test::probe_matrix_reader(text, settings[data[0] % 6]);
  return 0;
}
