// SPDX-License-Identifier: Apache-2.0
// The angle of the vector (x, y) to the x axis, in radians and in half turns.
#include "vector/inverse_trigonometric/angle_of_vector.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
using angle_in_radians = angle_of_vector<Real, Level, angle_unit::radians>;
template <class Real, level Level>
using angle_in_half_turns = angle_of_vector<Real, Level, angle_unit::half_turns>;

}  // namespace
TMK_TIER_CLOSE

// Maximum errors in ulp, by tmk-accuracy Atan2 --search brief --samples 500000:
//   single LA (all tiers): 1.713 at (0x1.003c74p+0, 0x1.fffff2p+0): got 0x1.db2734p-2, want 0x1.db273093p-2
//   single HA (all tiers): 0.5355 at (-0x1.7cp-143, 0x1.808p-139): got -0x1.f95dap-5, want -0x1.f95da112p-5
//   single EP (W7, V3): 5484 at (0x1.ff82c8p-53, 0x1.01ep+2): got 0x1.fb9fd4p-55, want 0x1.fbcaabfep-55
//   single EP (V4): 1308 at (0x1.001634p-1, 0x1.f5a1fcp+0): got 0x1.ffde8cp-3, want 0x1.ffd454c9p-3
//   double LA, EP (W7): 1.785 at (0x1.401c52c66f73cp+3, 0x1.400327d0b13e6p+3)
//   double HA (all tiers): 0.5375 at (-0x1.4edaa5aef3fb7p-2, 0x1.83f3eefad74a6p+2)
//   double LA, EP (V3, V4): 1.401 at (-0x1.3fffffff321dbp+3, 0x1.3e39ff079c2a9p+3)
// Maximum errors in ulp, by tmk-accuracy Atan2pi --search brief --samples 500000:
//   single LA (W7): 1.831 at (0x1.47ef9ep-1, 0x1.0c9618p+3): got 0x1.8d346ep-6, want 0x1.8d346a56p-6
//   single HA (all tiers): 0.5403 at (0x1.eddbbp+2, 0x1.8b15cap+7): got 0x1.973b28p-7, want 0x1.973b26ebp-7
//   single EP (W7, V3): 5419 at (-0x1.ap-145, 0x1.094p-138): got -0x1.ff0178p-9, want -0x1.ff2bcd13p-9
//   single LA (V3, V4): 1.664 at (0x1.47ef8ep-1, 0x1.0c95cp+3): got 0x1.8d34dcp-6, want 0x1.8d34d8acp-6
//   single EP (V4): 1143 at (0x1.b788p-135, 0x1.1804p-77): got 0x1.ff98d4p-60, want 0x1.ffa1c13bp-60
//   double LA (W7): 1.899 at (-0x1.d14c370831a1p+0, 0x1.55f02d71f5ec6p+2)
//   double LA (V3, V4): 1.597 at (0x1.f02d5a8c26c7p+1, 0x1.49ed2872f2f63p+346)
//   double HA (all tiers): 0.5282 at (0x1.bf8feb41e5c2fp+2, 0x1.b012561fa5e0ep+247)
//   double EP (W7, V3): 9.2e+06 at (-0x1.e0c07ce75beeap+985, 0x1.31fea5c48d676p+991)
//   double EP (V4): 2.6e+07 at (0x1.8358b636180cep+2, 0x1.f144ff6503327p+453)
TMK_KERNELS(s, Atan2, binary, LHE, angle_in_radians)
TMK_KERNELS(d, Atan2, binary, LHL, angle_in_radians)
TMK_REAL_KERNELS(Atan2pi, binary, LHE, angle_in_half_turns)
