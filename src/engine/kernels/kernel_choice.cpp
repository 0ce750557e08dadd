#include "engine/kernels/kernel_choice.h"

namespace zeb {

int widest_kernels() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
      __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512vpopcntdq"))
    return 512;
  if (__builtin_cpu_supports("avx2")) return 256;
#endif
  return 64;
}

kernel_slots kernels_of_width(int bits, scoring_mode mode) {
  if (bits > widest_kernels()) return {};
#if defined(__x86_64__)
  if (bits == 512) return kernels_512(mode);
  if (bits == 256) return kernels_256(mode);
#endif
  return bits == 64 ? kernels_64(mode) : kernels_32(mode);
}

}  // namespace zeb
