// What the wide tiers' sqrt and inv_sqrt share around the estimate of 1 / sqrt(x).
#pragma once

#include "vector/frame/kernel.hpp"
#include "vector/real/estimates.hpp"
#include "vector/real/wide/lane_tests.hpp"

TMK_TIER_OPEN
namespace {

// x r^2 - 1 without the rounding of x r.
template <class Real>
batch<Real> root_residual(const batch<Real>& x, const batch<Real>& r) {
  const batch<Real> h = x * r;
  const batch<Real> l = xsimd::fms(x, r, h);
  return xsimd::fma(l, r, xsimd::fms(h, r, batch<Real>(Real(1))));
}

// (1 + e)^(-1/2) - 1, by the terms that make the level: |e| is below 2^-10.4.
template <level Level, class Real>
batch<Real> inverse_root_series(const batch<Real>& e) {
  using value = batch<Real>;
  value p(Real(0.375));
  if constexpr (sizeof(Real) == 8 && Level != level::ep) {
    p = Level == level::ha ? xsimd::fma(e, value(Real(-0.24609375)), value(Real(0.2734375)))
                           : value(Real(0.2734375));
    p = xsimd::fma(e, p, value(Real(-0.3125)));
    p = xsimd::fma(e, p, value(Real(0.375)));
  }
  return e * xsimd::fma(e, p, value(Real(-0.5)));
}

}  // namespace
TMK_TIER_CLOSE
