// SPDX-License-Identifier: Apache-2.0
// Tridiagonal systems.
#include "linalg/tridiagonal.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

// Orders, counts of columns around those solved at once, and a leading dimension beyond the order.
TEST(tridiagonal, solves_what_it_factored) {
  std::mt19937 engine(3);
  std::uniform_real_distribution<double> part(-1, 1);
  for (const int n : {1, 2, 3, 50})
    for (const int nrhs : {1, 4, 6}) {
      const int ldb = n + 3;
      std::vector<double> dl, d, du, b(static_cast<size_t>(ldb) * static_cast<size_t>(nrhs)), x(b.size());
      for (int i = 0; i < n; ++i) {
        dl.push_back(part(engine)), du.push_back(part(engine));
        d.push_back(std::copysign(2.01, part(engine)));
      }
      for (auto& v : x) v = part(engine);
      for (int k = 0; k < nrhs; ++k)
        for (int i = 0; i < n; ++i) {
          const auto at = static_cast<size_t>(k) * static_cast<size_t>(ldb) + static_cast<size_t>(i),
                     row = static_cast<size_t>(i);
          b[at] =
              d[row] * x[at] + (i > 0 ? dl[row - 1] * x[at - 1] : 0) + (i + 1 < n ? du[row] * x[at + 1] : 0);
        }
      int info = -1;
      ddtsvb_4dfl(&n, &nrhs, dl.data(), d.data(), du.data(), b.data(), &ldb, &info);
      ASSERT_EQ(info, 0);
      for (int k = 0; k < nrhs; ++k)
        for (int i = 0; i < n; ++i)
          ASSERT_NEAR(b[static_cast<size_t>(k) * static_cast<size_t>(ldb) + static_cast<size_t>(i)],
                      x[static_cast<size_t>(k) * static_cast<size_t>(ldb) + static_cast<size_t>(i)], 1e-14);
    }
  float dl[] = {1, 1}, d[] = {2, 0.5F, 1}, du[] = {1, 1};
  const int n = 3;
  int info = 0;
  sdttrfb_4dfl(&n, dl, d, du, &info);
  EXPECT_EQ(info, 2);  // 1/2 - 1 * 1 / 2
}

}  // namespace
