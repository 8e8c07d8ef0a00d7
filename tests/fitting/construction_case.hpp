// SPDX-License-Identifier: Apache-2.0
// A task to be constructed: points, functions with noise, and the coefficients they get.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "tmk/abi/df.h"
#include "tmk/abi/threading.h"

namespace tmk::tests {

template <class Real>
struct constructors {
  using function = int32_t (*)(DFTask*, int64_t, int64_t, const ThreadingService*);
  static constexpr bool wide = sizeof(Real) == sizeof(double);
  static constexpr function linear = wide ? tmk_df_kernel_dDFLinearSpline1D : tmk_df_kernel_sDFLinearSpline1D;
  static constexpr function natural =
      wide ? tmk_df_kernel_dDFNaturalCubicSpline1D : tmk_df_kernel_sDFNaturalCubicSpline1D;
  static constexpr function by_bends =
      wide ? tmk_df_kernel_dDFDefaultCubicSpline1D : tmk_df_kernel_sDFDefaultCubicSpline1D;
  static constexpr function hermite =
      wide ? tmk_df_kernel_dDFHermiteCubicSpline1D : tmk_df_kernel_sDFHermiteCubicSpline1D;
  static constexpr function bessel =
      wide ? tmk_df_kernel_dDFBesselCubicSpline1D : tmk_df_kernel_sDFBesselCubicSpline1D;
  static constexpr function akima =
      wide ? tmk_df_kernel_dDFAkimaCubicSpline1D : tmk_df_kernel_sDFAkimaCubicSpline1D;
  static constexpr function hyman =
      wide ? tmk_df_kernel_dDFHymanCubicSpline1D : tmk_df_kernel_sDFHymanCubicSpline1D;
  static constexpr function quadratic =
      wide ? tmk_df_kernel_dDFQuadraticSpline1D : tmk_df_kernel_sDFQuadraticSpline1D;
};

template <class Real>
class construction_case {
 public:
  static constexpr Real untouched = Real(-77);
  int64_t nx, ny, order = 4, s_type = 2, bc_type = 0, ic_type = DF_IC_SECOND, yhint;
  bool uniform;
  std::vector<Real> points, ends, bc, ic;
  std::vector<std::vector<Real>> values;  // by function
  std::vector<Real> coefficients;

  construction_case(int64_t n, int64_t functions, bool even, int64_t layout = DF_ROWS, uint32_t seed = 1)
      : nx(n),
        ny(functions),
        yhint(layout),
        uniform(even),
        values(static_cast<size_t>(functions)),
        engine_(seed) {
    for (int64_t i = 0; i < n; ++i)
      points.push_back(
          static_cast<Real>(even ? Real(i) / 8 : (i == 0 ? Real(0) : points.back() + real(0.05, 0.2))));
    for (auto& f : values)
      for (int64_t i = 0; i < n; ++i) f.push_back(real(-1, 1));
  }

  Real real(double low, double high) {
    return static_cast<Real>(std::uniform_real_distribution<double>(low, high)(engine_));
  }

  void sample(const std::function<double(double)>& f) {
    for (auto& function : values)
      for (size_t i = 0; i < points.size(); ++i) function[i] = static_cast<Real>(f(points[i]));
  }

  void close() {
    for (auto& f : values) f.back() = f.front();
  }

  int64_t cells() const { return s_type == DF_TYPE_SUBBOTIN ? nx : nx - 1; }
  const Real* cell(int64_t j, int64_t i) const { return coefficients.data() + order * (j * cells() + i); }

  int32_t construct(typename constructors<Real>::function constructor,
                    const ThreadingService* threads = tmk_threading_serial(), int64_t method = 0) {
    ends = {points.front(), points.back()};
    std::vector<Real> block(static_cast<size_t>(nx * ny));
    for (int64_t j = 0; j < ny; ++j)
      for (int64_t i = 0; i < nx; ++i)
        block[static_cast<size_t>(yhint == DF_COLUMNS ? i * ny + j : j * nx + i)] =
            values[static_cast<size_t>(j)][static_cast<size_t>(i)];
    coefficients.assign(static_cast<size_t>(order * cells() * ny), untouched);
    DFTask* task = nullptr;
    const Real* x = uniform ? ends.data() : points.data();
    const int64_t xhint = uniform ? int64_t{DF_PARTITION_UNIFORM} : int64_t{DF_PARTITION_NON_UNIFORM};
    const Real* boundary = bc.empty() ? nullptr : bc.data();
    const Real* inner = ic.empty() ? nullptr : ic.data();
    const int64_t conditions = ic.empty() ? int64_t{DF_IC_NONE} : ic_type;
    int32_t status;
    if constexpr (constructors<Real>::wide) {
      EXPECT_EQ(tmk_df_kernel_dNewTask1D(&task, nx, x, xhint, ny, block.data(), yhint, 1), 0);
      EXPECT_EQ(tmk_df_kernel_dEditPPSpline1D(task, order, s_type, bc_type, boundary, conditions, inner,
                                              coefficients.data(), 0),
                0);
      status = constructor(task, 0, method, threads);
    } else {
      EXPECT_EQ(tmk_df_kernel_sNewTask1D(&task, nx, x, xhint, ny, block.data(), yhint, 1), 0);
      EXPECT_EQ(tmk_df_kernel_sEditPPSpline1D(task, order, s_type, bc_type, boundary, conditions, inner,
                                              coefficients.data(), 0),
                0);
      status = constructor(task, 0, method, threads);
    }
    EXPECT_EQ(tmk_df_kernel_DeleteTask(&task), 0);
    return status;
  }

  bool all_untouched() const {
    return std::all_of(coefficients.begin(), coefficients.end(), [](Real c) { return c == untouched; });
  }

 private:
  std::mt19937 engine_;
};

}  // namespace tmk::tests
