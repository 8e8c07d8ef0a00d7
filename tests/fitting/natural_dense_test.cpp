// SPDX-License-Identifier: Apache-2.0
// Natural cubics compared with a dense solve.
#include "fitting/spline_properties.hpp"

namespace tmk::tests {
namespace {

// A dense solve with pivoting of the defining equations, on widths that are wildly different.
TEST(natural_cubic, agrees_with_a_dense_solve) {
  for (const int64_t bc_type : every_boundary)
    for (const int64_t nx : {4, 7, 40}) {
      construction_case<double> s(nx, 1, false);
      for (size_t i = 1; i < s.points.size(); ++i)
        s.points[i] = s.points[i - 1] + std::pow(10, double(s.real(-3, 1)));
      s.bc_type = bc_type;
      s.bc = {0.5, 2};
      if (bc_type == DF_BC_PERIODIC) s.close();
      ASSERT_EQ(s.construct(constructors<double>::natural), 0);
      // Unknowns are all coefficients, equations their definition, cell after cell.
      const auto n = static_cast<size_t>(4 * s.cells());
      std::vector<std::vector<wide>> a;
      const auto equation = [&](wide right) -> std::vector<wide>& {
        a.emplace_back(n + 1, 0.0L);
        a.back()[n] = right;
        return a.back();
      };
      const auto add = [&](std::vector<wide>& row, int64_t cell, wide t, int derivative, wide factor) {
        for (int k = derivative; k < 4; ++k) {
          wide v = factor;
          for (int m = 0; m < derivative; ++m) v *= k - m;
          row[static_cast<size_t>(4 * cell + k)] += v * std::pow(t, wide(k - derivative));
        }
      };
      const auto h = [&](int64_t i) {
        return wide(s.points[static_cast<size_t>(i + 1)]) - s.points[static_cast<size_t>(i)];
      };
      const int64_t last = s.cells() - 1;
      for (int64_t i = 0; i <= last; ++i) {
        add(equation(s.values[0][static_cast<size_t>(i)]), i, 0, 0, 1);
        add(equation(s.values[0][static_cast<size_t>(i + 1)]), i, h(i), 0, 1);
        for (int derivative = 1; i < last && derivative < 3; ++derivative) {
          auto& row = equation(0);
          add(row, i, h(i), derivative, 1);
          add(row, i + 1, 0, derivative, -1);
        }
      }
      for (int side = 0; side < 2; ++side) {
        const int64_t cell = side == 0 ? 0 : last;
        const int derivative = bc_type == DF_BC_NOT_A_KNOT ? 3
                               : bc_type == DF_BC_PERIODIC ? 1 + side
                               : (bc_type & (side == 0 ? DF_BC_FIRST_LEFT : DF_BC_FIRST_RIGHT)) != 0 ? 1
                                                                                                     : 2;
        const bool given = bc_type > DF_BC_FREE_END && bc_type != DF_BC_PERIODIC;
        auto& row = equation(given ? s.bc[static_cast<size_t>(side)] : 0);
        if (bc_type == DF_BC_PERIODIC) {
          add(row, 0, 0, derivative, 1);
          add(row, last, h(last), derivative, -1);
        } else {
          add(row, cell, side == 0 ? 0 : h(last), derivative, 1);
          if (derivative == 3) add(row, side == 0 ? 1 : last - 1, 0, 3, -1);
        }
      }
      ASSERT_EQ(a.size(), n);
      for (size_t k = 0; k < n; ++k) {
        const auto pivot =
            std::max_element(a.begin() + static_cast<ptrdiff_t>(k), a.end(),
                             [k](const auto& p, const auto& q) { return std::fabs(p[k]) < std::fabs(q[k]); });
        std::swap(a[k], *pivot);
        for (size_t i = 0; i < n; ++i) {
          if (i == k || a[i][k] == 0) continue;
          const wide m = a[i][k] / a[k][k];
          for (size_t c = k; c <= n; ++c) a[i][c] -= m * a[k][c];
        }
      }
      wide largest = 0;
      for (int64_t i = 0; i <= last; ++i) largest = std::max(largest, std::fabs(wide(s.cell(0, i)[1])));
      for (int64_t i = 0; i <= last; ++i) {
        const auto k = static_cast<size_t>(4 * i + 1);
        ASSERT_NEAR(s.cell(0, i)[1], double(a[k][n] / a[k][k]), 1e-12 * double(largest))
            << bc_type << ' ' << i;
      }
    }
}

}  // namespace
}  // namespace tmk::tests
