// SPDX-License-Identifier: Apache-2.0
// Uniform numbers over an interval, and uniform integers.
#include "random/core/registry.hpp"
#include "random/distributions/precision.hpp"

namespace {
using namespace tmk::rng;

constexpr uint32_t accurate = 0x40000000;  // of the method: no rounding beyond the interval

int32_t draw(VtsStreamHandle stream, int32_t n, double* r, double a, double b) {
  return record_of(stream).dBrng(stream, n, r, a, b);
}
int32_t draw(VtsStreamHandle stream, int32_t n, float* r, float a, float b) {
  return record_of(stream).sBrng(stream, n, r, a, b);
}

template <class Real>
int32_t uniform(int32_t method, VtsStreamHandle stream, int32_t n, Real* r, Real a, Real b) {
  if (n <= 0) return VTS_STATUS_OK;
  const int32_t status = draw(stream, n, r, a, b);
  if (status >= 0 && (static_cast<uint32_t>(method) & accurate) != 0)
    precision<Real>::steps().clamp(n, r, a, b);
  return status;
}

}  // namespace

extern "C" {

int32_t _vtsdRngUniform(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a, double b) {
  return uniform(method, stream, n, r, a, b);
}

int32_t _vtssRngUniform(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a, float b) {
  return uniform(method, stream, n, r, a, b);
}

int32_t _vtsiRngUniform(int32_t, VtsStreamHandle stream, int32_t n, int32_t* r, int32_t a, int32_t b) {
  alignas(64) double x[distribution_block];
  return in_blocks(n, r, [=, &x](int32_t count, int32_t* block) {
    const int32_t status = _vtsdRngUniform(0, stream, count, x, a, b);
    if (status >= 0) precision<double>::steps().floor(count, x, block);
    return status;
  });
}
}
