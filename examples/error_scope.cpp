// SPDX-License-Identifier: Apache-2.0
// Bad elements three ways: collected, repaired, raised.
#include <cstdio>
#include <tmk/math.hpp>
#include <vector>

int main() {
  const std::vector<double> x{4, 0, -9, 1};
  std::vector<double> y(x.size());
  {
    tmk::error_scope scope;
    tmk::inv_sqrt(x, y);
    for (const tmk::math_error& e : scope.errors())
      std::printf("element %lld: %g gave %g\n", static_cast<long long>(e.index), e.a1.real(),
                  e.result.real());
  }
  {
    tmk::error_scope scope([](tmk::math_error& e) { e.result = 0; });
    tmk::inv_sqrt(x, y);
    for (const double value : y) std::printf("%g ", value);
    std::puts("");
  }
  try {
    tmk::error_scope scope(tmk::on_error::raise);
    tmk::inv_sqrt(x, y);
  } catch (const tmk::error& e) {
    std::puts(e.what());
  }
}
