// SPDX-License-Identifier: Apache-2.0
// A C++ program that needs the rest of the library: versions, threads, and a covariance, for which the shared
// library loads a BLAS or does without. The argument specifies where a BLAS comes from: loaded, linked or
// none.
#include <tmk/abi/threading.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <tmk/math.hpp>
#include <tmk/random.hpp>
#include <tmk/spline.hpp>
#include <tmk/stats.hpp>
#include <tmk/version.hpp>
#include <vector>

namespace {

bool has_blas() {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);)
    if (line.find("blas") != std::string::npos) return true;
  return false;
}

int wrong = 0;
void expect(bool right, const char* what) {
  if (right) return;
  std::printf("wrong: %s\n", what);
  ++wrong;
}

}  // namespace

int main(int, char** arguments) {
  const std::string blas = arguments[1];
  expect(tmk::version() == TMK_VERSION_STRING && tmk_version() == TMK_VERSION, "version");
  if (const char* asked = std::getenv("OMP_NUM_THREADS"))
    expect(tmk_threading_pool()->MaxThreads() == std::atoi(asked), "threads by the environment");
  std::vector<double> x(200000), y(x.size());
  tmk::stream g(tmk::generator::mcg59, 3u);
  tmk::fill_parallel(g, x, tmk::distribution::uniform{}, 2);
  const tmk::parallel_scope threads(2);
  tmk::exp(x, y);
  expect(std::abs(y[150000] - std::exp(x[150000])) < 1e-15, "exp");
  const std::vector<double> knots{0, 1, 2, 4}, values{1, 3, 5, 9};
  expect(std::abs(tmk::spline::natural(knots, values)(3.0) - 7) < 1e-14, "spline");

  expect(has_blas() == (blas == "linked"), "a BLAS before the first covariance");
  const double rows[] = {1, 2, 2, 4, 3, 6, 4, 8};
  const tmk::summary s = tmk::describe(tmk::matrix_view<const double>(rows, 4, 2));
  expect(std::abs(s.cov(0, 1) - 10.0 / 3) < 1e-14 && std::abs(s.cov(1, 1) - 20.0 / 3) < 1e-14, "covariance");
  expect(has_blas() == (blas != "none"), "a BLAS after it");
  return wrong;
}
