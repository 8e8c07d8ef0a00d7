// SPDX-License-Identifier: Apache-2.0
// One draw of mean and covariance given complete data, under a normal and inverted Wishart prior of mean m0,
// scale L0, tau observations' worth of trust in the mean, and d degrees of freedom (J. Schafer, Analysis of
// Incomplete Multivariate Data, 1997, section 5.2.2):
//   covariance ~ W^-1(d + n, M),   M = S + L0 + tau n / (tau + n) (xbar - m0)(xbar - m0)'
//   mean ~ N((n xbar + tau m0) / (tau + n), covariance / (tau + n))
// with xbar and S the data's mean and sum of squares about it. By the decomposition of Bartlett (1933): B
// upper triangular, B(i, i)^2 chi-square of d + n - i degrees, normal variates above; with M = L L' and C = L
// B^-1 the covariance is C C'.
#pragma once

#include <cstdint>

#include "platform/guarded.hpp"
#include "stats/missing/factor.hpp"
#include "stats/missing/model.hpp"
#include "tmk/abi/ss.h"

namespace tmk::stats::missing {

template <class Real>
struct prior_parameters {
  square<Real> model;  // mean and scale, laid out as mean and covariance
  Real tau, degrees;

  // Without a say in the scale or in the mean. Degrees of -1 make it Jeffreys' prior.
  prior_parameters(ptrdiff_t p, Real degrees_of_freedom) : model(p), tau(0), degrees(degrees_of_freedom) {}
};

template <class Real>
class posterior_step {
 public:
  explicit posterior_step(ptrdiff_t p)
      : p_(p),
        mean_(static_cast<size_t>(p)),
        z_(static_cast<size_t>(p)),
        scale_(static_cast<size_t>(p * p)),
        bartlett_(scale_.size()) {}

  // Replaces theta by a draw, of which `source` has the variates: normals(count, r) and chi_square(degrees,
  // r), which return a negative status when they fail. Throws `failed`.
  template <class Source>
  void draw(const square<Real>& sums, const prior_parameters<Real>& prior, Source& source,
            square<Real>& theta) {
    const Real n = sums[0][0], tau = prior.tau + n;
    set_scale(sums, prior, n, tau);
    draw_bartlett(prior.degrees + n, source);
    multiply(1 / std::sqrt(tau));
    for (ptrdiff_t i = 0; i < p_; ++i) {
      theta[0][i + 1] = theta[i + 1][0] = mean_[static_cast<size_t>(i)];
      for (ptrdiff_t j = 0; j <= i; ++j)
        theta[i + 1][j + 1] = theta[j + 1][i + 1] = bartlett_[static_cast<size_t>(j + i * p_)];
    }
    theta[0][0] = -1;
  }

 private:
  // The lower triangle by columns, zeros above.
  void set_scale(const square<Real>& sums, const prior_parameters<Real>& prior, Real n, Real tau) {
    const Real* const m0 = prior.model[0] + 1;
    const Real weight = prior.tau * n / tau;
    const auto deviation = [&](ptrdiff_t j) { return sums[0][j + 1] / n - m0[j]; };
    for (ptrdiff_t j = 0; j < p_; ++j) {
      const Real mean = sums[0][j + 1] / n;
      mean_[static_cast<size_t>(j)] = (n * mean + prior.tau * m0[j]) / tau;
      for (ptrdiff_t i = 0; i < p_; ++i)
        scale_[static_cast<size_t>(i + j * p_)] = i < j ? Real{0}
                                                        : sums[i + 1][j + 1] - sums[0][i + 1] * mean +
                                                              prior.model[i + 1][j + 1] +
                                                              weight * deviation(i) * deviation(j);
    }
  }

  template <class Source>
  void draw_bartlett(Real degrees, Source& source) {
    const auto check = [](int32_t status) {
      if (status < 0) throw failed{VTS_STATUS_SS_PSTEP_DRAW_FAILED};
    };
    std::fill(bartlett_.begin(), bartlett_.end(), Real{0});
    Real* const b = bartlett_.data();
    for (ptrdiff_t i = 0; i < p_; ++i) {
      Real square = 0;
      check(source.chi_square(degrees - static_cast<Real>(i), &square));
      b[i + i * p_] = std::sqrt(square);
    }
    for (ptrdiff_t j = 1; j < p_; ++j) check(source.normals(j, b + j * p_));
    check(source.normals(p_, z_.data()));
  }

  // mean += factor C z; the covariance C C' replaces B, its upper triangle by columns.
  void multiply(Real factor) {
    using blas = linalg::serial<Real>;
    const Real one = 1, zero = 0;
    const int p = static_cast<int>(p_), step = 1;
    int info = 0;
    if (!factorise("L", p_, scale_.data())) throw failed{VTS_STATUS_SS_PSTEP_FACTOR_FAILED};
    blas::trtri("U", "N", &p, bartlett_.data(), &p, &info);
    if (info != 0) throw failed{VTS_STATUS_SS_PSTEP_INVERSE_FAILED};
    blas::trmm("R", "U", "N", "N", &p, &p, &one, bartlett_.data(), &p, scale_.data(), &p);
    blas::gemv("N", &p, &p, &factor, scale_.data(), &p, z_.data(), &step, &one, mean_.data(), &step);
    blas::syrk("U", "N", &p, &p, &one, scale_.data(), &p, &zero, bartlett_.data(), &p);
  }

  ptrdiff_t p_;
  std::vector<Real> mean_, z_;
  std::vector<Real> scale_, bartlett_;  // p by p, by columns
};

}  // namespace tmk::stats::missing
