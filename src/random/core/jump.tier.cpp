// SPDX-License-Identifier: Apache-2.0
// Additions over GF(2), of states and of polynomials.
#include "random/core/jump.hpp"

#include "simd/integer.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

void add(unsigned char* r, const unsigned char* a, int32_t bytes) {
  constexpr int32_t width = sizeof(u32);
  const auto at = [](auto* p) { return reinterpret_cast<uint32_t*>(const_cast<unsigned char*>(p)); };
  for (; bytes >= width; bytes -= width, r += width, a += width)
    store(at(r), load<uint32_t>(at(r)) ^ load<uint32_t>(at(a)));
  for (; bytes > 0; --bytes) *r++ ^= *a++;
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(jump_kernels) = {add};

}  // namespace tmk::rng
