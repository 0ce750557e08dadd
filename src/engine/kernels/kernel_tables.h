// The tables of each width, which kernel_choice.cpp picks from.
#pragma once

#include "engine/kernels/kernels.h"

namespace zeb {

kernel_slots kernels_32(scoring_mode mode);
kernel_slots kernels_64(scoring_mode mode);
kernel_slots kernels_256(scoring_mode mode);  // needs AVX2
kernel_slots kernels_512(scoring_mode mode);  // needs AVX-512 F, BW, VL, DQ and VPOPCNTDQ

}  // namespace zeb
