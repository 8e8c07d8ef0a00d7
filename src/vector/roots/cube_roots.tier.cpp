// SPDX-License-Identifier: Apache-2.0
// The kernels of the cube roots.
#include "vector/roots/cube_roots.hpp"

TMK_KERNELS(s, Cbrt, unary, LHE, cbrt_of)
TMK_KERNELS(d, Cbrt, unary, LHL, cbrt_of)
TMK_KERNELS(s, InvCbrt, unary, LHE, inv_cbrt_of)
TMK_KERNELS(d, InvCbrt, unary, HHH, inv_cbrt_of)
TMK_REAL_KERNELS(Pow2o3, unary, LHE, two_thirds_of)
