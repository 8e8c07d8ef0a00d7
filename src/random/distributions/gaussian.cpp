// SPDX-License-Identifier: Apache-2.0
// Normal variates, and their exponentials.
//   pairs by Box and Muller (1958): rho = sqrt(-2 ln u), z = rho cos(2 pi v), z' = rho sin(2 pi v)
//   by inversion: z = sqrt(2) erf^-1(u), u uniform over (-1, 1)
//   by a ziggurat (ziggurat.hpp)
#include <cstring>

#include "random/core/chunk_kinds.hpp"
#include "random/core/stream.hpp"
#include "random/distributions/candidates.hpp"
#include "random/distributions/kernel_calls.hpp"
#include "random/distributions/ziggurat.hpp"
#include "tmk/abi/serv.h"

namespace {
using namespace tmk::rng;

// A logarithm's pole, then those of the inverse error function. That runs in place, and what is reported as
// its argument may be the infinite result, which has the same sign.
template <class Real>
int32_t repair_gaussian(VtmErrorContext* context) {
  constexpr double erf_inv_pole = 5.8635847487551676;
  const bool pole = context->code == VTM_STATUS_SINGULARITY;
  if (pole && context->a1 == 0) return repair_ln<Real>(context);
  if (pole || context->code == VTM_STATUS_DOMAIN)
    context->r1 = context->r2 = context->a1 < 0 ? -erf_inv_pole : erf_inv_pole;
  return 0;
}

// n variates, n even and at most a block.
template <class Real>
int32_t draw_pairs(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r, Real a, Real sigma) {
  constexpr Real two_pi = 4 * precision<Real>::half_pi;
  constexpr int32_t most = distribution_block / 2;
  alignas(64) Real u[2 * most], rho[most], sine[most], cosine[most];
  const int32_t pairs = n / 2;
  const auto& steps = precision<Real>::steps();
  const int32_t status = draw_uniforms(kind, stream, n, +u, Real{0}, Real{1});
  if (status < 0) return status;
  Real* const first = sine;
  steps.split_pairs(pairs, u, first);
  run_kernel(precision<Real>::ln, pairs, first, rho);  // not in place: the callback reads the argument
  steps.scale(pairs, rho, -2);
  run_kernel(precision<Real>::sqrt, pairs, rho, rho);
  steps.scale(pairs, u, two_pi);
  run_kernel(precision<Real>::sin_cos, pairs, u, sine, cosine);
  steps.join_pairs(pairs, r, rho, cosine, sine, sigma, a);
  return status;
}

// Of the last pair of an odd count the second goes to `leftover`, with mean 0 and deviation 1.
template <class Real>
int32_t fill_with_pairs(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r, Real a, Real sigma,
                        Real& leftover) {
  const int32_t status = in_blocks(n & ~1, r, [=](int32_t count, Real* block) {
    return draw_pairs(kind, stream, count, block, a, sigma);
  });
  if (status < 0 || n <= 0 || n % 2 == 0) return status;
  Real pair[2];
  const int32_t last = draw_pairs(kind, stream, 2, pair, Real{0}, Real{1});
  if (last < 0) return last;
  r[n - 1] = pair[0] * sigma + a;
  leftover = pair[1];
  return last;
}

template <class Real>
int32_t box_muller(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r, Real a, Real sigma) {
  Real dropped;
  return fill_with_pairs(kind, stream, n, r, a, sigma, dropped);
}

// The second of a pair that is not handed out yet, as it is stored in the stream's chunk.
template <class Real>
struct kept_partner {
  Real variate;
  uint32_t present;
};
static_assert(sizeof(kept_partner<float>) == bytes_of_kind(chunk_gaussian_single));

template <class Real>
kept_partner<Real>* find_or_add_partner(VtsStreamHandle stream) {
  constexpr chunk_kind kind = sizeof(Real) == 4 ? chunk_gaussian_single : chunk_gaussian_double;
  constexpr uint32_t bytes = bytes_of_kind(kind);
  static_assert(bytes >= sizeof(kept_partner<Real>));
  if (void* found = __vtsSearchChunk(stream, kind)) return static_cast<kept_partner<Real>*>(found);
  void* blob = tmk_serv_allocate(bytes, stream_alignment);
  if (blob == nullptr) return nullptr;
  std::memset(blob, 0, bytes);
  if (__vtsAddChunk(stream, kind, nullptr, blob, bytes) >= 0) return static_cast<kept_partner<Real>*>(blob);
  tmk_serv_deallocate(blob);
  return nullptr;
}

// The sequence does not depend on how it is cut into draws: the partner that an odd draw leaves begins the
// next.
template <class Real>
int32_t box_muller_keeping_partner(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r, Real a,
                                   Real sigma) {
  if (n <= 0) return VTS_STATUS_OK;
  kept_partner<Real>* partner = find_or_add_partner<Real>(stream);
  if (partner == nullptr) return VTS_STATUS_NO_MEMORY;
  if (partner->present != 0) {
    *r++ = partner->variate * sigma + a;
    --n;
    partner->present = 0;
  }
  Real leftover;
  const int32_t status = fill_with_pairs(kind, stream, n, r, a, sigma, leftover);
  if (status >= 0 && n % 2 != 0) *partner = {leftover, 1};
  return status;
}

template <class Real>
int32_t by_inversion(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r, Real a, Real sigma) {
  return in_blocks(n, r, [=](int32_t count, Real* block) {
    const int32_t status = draw_uniforms(kind, stream, count, block, Real{-1}, Real{1});
    if (status < 0) return status;
    run_kernel(precision<Real>::erf_inv, count, block, block);
    precision<Real>::steps().place(count, block, precision<Real>::sqrt_2 * sigma, a);
    return status;
  });
}

// A point of a quasi-random sequence has no coordinate to spare for the undecided.
template <class Real>
int32_t by_ziggurat(uniforms, VtsStreamHandle stream, int32_t n, Real* r, Real a, Real sigma) {
  if (gives_points(stream)) return by_inversion(uniforms::open, stream, n, r, a, sigma);
  return fill_with_accepted(n, r, [=](int32_t count, Real* block) {
    const int32_t kept = ziggurat_candidates(stream, count, block);
    if (kept > 0 && (a != 0 || sigma != 1)) precision<Real>::steps().place(kept, block, sigma, a);
    return kept;
  });
}

template <class Real>
int32_t gaussian(uniforms kind, int32_t method, VtsStreamHandle stream, int32_t n, Real* r, Real a,
                 Real sigma) {
  static constexpr int32_t (*methods[])(uniforms, VtsStreamHandle, int32_t, Real*, Real, Real) = {
      box_muller<Real>, box_muller_keeping_partner<Real>, by_inversion<Real>, by_ziggurat<Real>};
  const kernel_scope scope(repair_gaussian<Real>);
  return methods[method](kind, stream, n, r, a, sigma);
}

// b + beta e^z. Overflow of the exponential is reported by the thread's mode.
template <class Real>
int32_t lognormal(uniforms kind, int32_t method, VtsStreamHandle stream, int32_t n, Real* r, Real a,
                  Real sigma, Real b, Real beta) {
  const int32_t of_gaussian = method == 0 ? 1 : 2;
  return in_blocks(n, r, [=](int32_t count, Real* block) {
    const int32_t status = gaussian(kind, of_gaussian, stream, count, block, a, sigma);
    if (status < 0) return status;
    run_kernel(precision<Real>::exp, count, block, block);
    precision<Real>::steps().place_above(count, block, beta, b);
    return status;
  });
}

}  // namespace

extern "C" {

int32_t _vdRngGaussianBoxMuller(VtsStreamHandle stream, int32_t n, double* r, double a, double sigma) {
  return box_muller(uniforms::own, stream, n, r, a, sigma);
}
int32_t _vdRngGaussianBoxMuller2(VtsStreamHandle stream, int32_t n, double* r, double a, double sigma) {
  return box_muller_keeping_partner(uniforms::own, stream, n, r, a, sigma);
}
int32_t _vdRngGaussianICDF(VtsStreamHandle stream, int32_t n, double* r, double a, double sigma) {
  return by_inversion(uniforms::own, stream, n, r, a, sigma);
}
int32_t _vsRngGaussianBoxMuller(VtsStreamHandle stream, int32_t n, float* r, float a, float sigma) {
  return box_muller(uniforms::own, stream, n, r, a, sigma);
}
int32_t _vsRngGaussianBoxMuller2(VtsStreamHandle stream, int32_t n, float* r, float a, float sigma) {
  return box_muller_keeping_partner(uniforms::own, stream, n, r, a, sigma);
}
int32_t _vsRngGaussianICDF(VtsStreamHandle stream, int32_t n, float* r, float a, float sigma) {
  return by_inversion(uniforms::own, stream, n, r, a, sigma);
}

int32_t _vdRngGaussianZiggurat(VtsStreamHandle stream, int32_t n, double* r, double a, double sigma) {
  return gaussian(uniforms::own, 3, stream, n, r, a, sigma);
}
int32_t _vsRngGaussianZiggurat(VtsStreamHandle stream, int32_t n, float* r, float a, float sigma) {
  return gaussian(uniforms::own, 3, stream, n, r, a, sigma);
}

int32_t _vtsdRngGaussian(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a,
                         double sigma) {
  return gaussian(uniforms::own, method, stream, n, r, a, sigma);
}
int32_t _vtssRngGaussian(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a, float sigma) {
  return gaussian(uniforms::own, method, stream, n, r, a, sigma);
}
int32_t _vtsdRngLognormal(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a,
                          double sigma, double b, double beta) {
  return lognormal(uniforms::own, method, stream, n, r, a, sigma, b, beta);
}
int32_t _vtssRngLognormal(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a, float sigma,
                          float b, float beta) {
  return lognormal(uniforms::own, method, stream, n, r, a, sigma, b, beta);
}

int32_t tmk_vtsdRngGaussian(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a,
                            double sigma) {
  return gaussian(uniforms::open, method, stream, n, r, a, sigma);
}
int32_t tmk_vtssRngGaussian(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a,
                            float sigma) {
  return gaussian(uniforms::open, method, stream, n, r, a, sigma);
}
int32_t tmk_vtsdRngLognormal(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a,
                             double sigma, double b, double beta) {
  return lognormal(uniforms::open, method, stream, n, r, a, sigma, b, beta);
}
int32_t tmk_vtssRngLognormal(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a,
                             float sigma, float b, float beta) {
  return lognormal(uniforms::open, method, stream, n, r, a, sigma, b, beta);
}
}
