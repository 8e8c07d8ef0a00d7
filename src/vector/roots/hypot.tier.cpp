// SPDX-License-Identifier: Apache-2.0
#include "vector/roots/hypotenuse.hpp"

// Maximum errors in ulp, by tmk-accuracy Hypot --search brief --samples 500000:
//   single LA (W7): 1.168 at (0x1.70465ap+2, -0x1.7e9486p+1): got 0x1.9efdecp+2, want 0x1.9efde9aap+2
//   single HA (all tiers): 0.5266 at (-0x1.cabf4p-6, 0x1.ffffdap+0): got 0x1.000658p+1, want 0x1.0006590ep+1
//   single EP (W7): 1.168 at (0x1.70465ap+2, -0x1.7e9486p+1): got 0x1.9efdecp+2, want 0x1.9efde9aap+2
//   single LA (V3, V4): 1.134 at (0x1.ffffap-1, -0x1.72c876p+2): got 0x1.784416p+2, want 0x1.784413bbp+2
//   single EP (V3): 1.134 at (0x1.ffffap-1, -0x1.72c876p+2): got 0x1.784416p+2, want 0x1.784413bbp+2
//   single EP (V4): 738 at (-0x1.400348p+3, -0x1.3ff7eap+3): got 0x1.c48336p+3, want 0x1.c488fa56p+3
//   double LA, HA (W7): 0.5263 at (0x1.ffa10a58e180cp+0, -0x1.e8cf74d194493p+2)
//   double EP (W7): 1.137 at (0x1.ffffffffffbd1p-1, -0x1.7a456fad2adcfp+2)
//   double LA (V3): 1.146 at (-0x1.194a53ad3e752p+0, -0x1.6bbecb197a239p+2)
//   double HA (V3, V4): 0.5263 at (0x1.ffa10a58e180cp+0, -0x1.e8cf74d194493p+2)
//   double EP (V3): 1.146 at (-0x1.194a53ad3e752p+0, -0x1.6bbecb197a239p+2)
//   double LA (V4): 1.507 at (0x1.ffffc81787412p-1, 0x1.00021d531d618p+0)
//   double EP (V4): 3.5e+07 at (-0x1.a2d9617abe44ap+2, -0x1.31bd9b7da6d7cp+3)
TMK_KERNELS(s, Hypot, binary, LHE, hypotenuse)
#if TMK_TIER_NUMBER(TMK_TIER) == 0
TMK_KERNELS(d, Hypot, binary, HHE, hypotenuse)
#else
TMK_KERNELS(d, Hypot, binary, LHE, hypotenuse)
#endif
