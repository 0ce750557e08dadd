// The table of kernels that this processor runs best.
#pragma once

#include "engine/kernels/kernels.h"

namespace zeb {

/// The kernels of one width (32, 64, 256 or 512 bits); an empty table (null slots) where the
/// processor lacks the instructions, or nobody wrote that mode yet.
kernel_slots kernels_of_width(int bits, scoring_mode mode);
/// Widest form that this processor runs.
int widest_kernels();

/// The tables to choose from, each made in a source of its own for its instructions.
kernel_slots kernels_32(scoring_mode mode);
kernel_slots kernels_64(scoring_mode mode);
kernel_slots kernels_256(scoring_mode mode);  // needs AVX2
kernel_slots kernels_512(scoring_mode mode);  // needs AVX-512 F, BW, VL, DQ and VPOPCNTDQ

}  // namespace zeb
