// SPDX-License-Identifier: Apache-2.0
// The continuous laws: their shape, one sequence for any cut, and what becomes of uniforms at the edge, of
// failing draws and of the caller's controls.
#include <xmmintrin.h>

#include <cmath>
#include <cstring>
#include <random>

#include "random/goodness.hpp"
#include "random/laws.hpp"
#include "random/placed.hpp"
#include "random/plain_generators.hpp"

namespace {

template <class Real>
std::vector<Real> draw(const law& l, VtsStreamHandle g, int32_t n, Real p, Real q, Real s) {
  std::vector<Real> x(static_cast<size_t>(n));
  EXPECT_EQ(kernel_of<Real>(l)(g, n, x.data(), p, q, s), 0) << l.name;
  return x;
}

template <class Real>
void expect_shapes() {
  const Real points[][3] = {{0, 1, 1}, {-3, Real{0.25}, Real{2.5}}, {10, 40, Real{0.7}}};
  for (const law& l : laws())
    for (const auto& [p, q, s] : points) {
      SCOPED_TRACE(l.name + " " + std::to_string(p));
      const owned_stream g(VTS_BRNG_MT19937, {2026});
      expect_continuous(draw<Real>(l, g, 20000, p, q, s),
                        [&, p = p, q = q, s = s](double x) { return l.distribution_function(x, p, q, s); });
    }
}
TEST(distributions, have_their_laws) {
  expect_shapes<double>();
  expect_shapes<float>();
}

// Random cuts in addition to those of 7 and 9; pairs that drop a partner are cut between pairs.
template <class Real>
void expect_one_sequence(int32_t id) {
  std::mt19937 cuts(1);
  constexpr int32_t total = 6000;
  for (const law& l : laws()) {
    SCOPED_TRACE(l.name);
    const owned_stream whole(id, {5, 6}), parts(id, {5, 6});
    const std::vector<Real> wanted = draw<Real>(l, whole, total, 2, 3, 4);
    std::vector<Real> got;
    const int32_t unit = l.name == "gaussian pairs" ? 2 : 1;
    for (int32_t count = 7 * unit; got.size() < wanted.size();) {
      const auto piece = draw<Real>(l, parts, count, 2, 3, 4);
      got.insert(got.end(), piece.begin(), piece.end());
      const int32_t left = total - static_cast<int32_t>(got.size());
      count = got.size() == 7u ? 9 : std::min<int32_t>(left, unit * static_cast<int32_t>(1 + cuts() % 1500));
    }
    EXPECT_EQ(got, wanted);
    EXPECT_EQ(draw_bytes(whole, 3), draw_bytes(parts, 3));
  }
}
TEST(distributions, are_one_sequence_for_any_cut) {
  on_every_tier([] {
    for (const int32_t id : {VTS_BRNG_MCG59, VTS_BRNG_MT19937}) {
      expect_one_sequence<double>(id);
      expect_one_sequence<float>(id);
    }
  });
}

// a = 1, beta = 2, and 4 for the third parameter. A logarithm of 0 counts as -744.44, in singles as -103.28.
TEST(distributions, stay_finite_and_on_their_side_at_the_edges) {
  constexpr double ln0 = 744.4400719213812, ln0s = 103.2789306640625, pole = 5.8635847487551676;
  const struct {
    const char* name;
    double at;
    double d, s;
  } rows[] = {
      {"exponential", 0, 1 + 2 * ln0, 1 + 2 * ln0s},
      {"exponential", 1, 1, 1},
      {"gumbel", 0, 1 + 2 * std::log(ln0), 1 + 2 * std::log(ln0s)},
      {"gumbel", 1, 1 - 2 * ln0, 1 - 2 * ln0s},
      {"laplace", 0, 1 + 2 * ln0, 1 + 2 * ln0s},
      {"laplace", 1, 1, 1},
      {"rayleigh", 0, 1 + 2 * std::sqrt(ln0), 1 + 2 * std::sqrt(ln0s)},
      {"rayleigh", 1, 1, 1},
      {"weibull", 0, 1 + 2 * std::pow(ln0, 0.25), 1 + 2 * std::pow(ln0s, 0.25)},
      {"gaussian inversion", 0, 1 - 2 * std::sqrt(2) * pole, 1 - 2 * std::sqrt(2) * pole},
      {"gaussian inversion", 1, 1 + 2 * std::sqrt(2) * pole, 1 + 2 * std::sqrt(2) * pole},
      {"gaussian pairs", 0, 1 + 2 * std::sqrt(2 * ln0), 1 + 2 * std::sqrt(2 * ln0s)},
  };
  placed::failing = 0;
  on_every_tier([&] {
    for (const auto& row : rows) {
      const law& l =
          *std::find_if(laws().begin(), laws().end(), [&](const law& x) { return x.name == row.name; });
      const owned_stream g(placed::id(), {1});
      placed::at = row.at;
      EXPECT_NEAR(draw<double>(l, g, 1, 1, 2, 4)[0], row.d, 1e-6 * std::abs(row.d)) << row.name << row.at;
      EXPECT_NEAR(draw<float>(l, g, 1, 1, 2, 4)[0], row.s, 1e-5 * std::abs(row.s)) << row.name << row.at;
    }
  });
}

TEST(distributions, weibull_of_shape_1_takes_no_power) {
  const owned_stream g(VTS_BRNG_MCG59, {3}), h(VTS_BRNG_MCG59, {3});
  double x[50], y[50];
  _vtsdRngWeibull(0, g, 50, x, 1, 0, 1);
  _vtsdRngExponential(0, h, 50, y, 0, 1);
  EXPECT_EQ(std::memcmp(x, y, sizeof x), 0);
}

TEST(distributions, accurate_uniforms_stay_inside) {
  placed::failing = 0;
  const owned_stream g(placed::id(), {1});
  double x[3];
  float y[3];
  for (const double at : {-0.125, 1.125, 0.5}) {
    placed::at = at;
    const double inside = std::clamp(2 + at, 2.0, 3.0);
    EXPECT_EQ(_vtsdRngUniform(VTS_METHOD_ACCURATE, g, 3, x, 2, 3), 0);
    EXPECT_EQ(_vtssRngUniform(VTS_METHOD_ACCURATE, g, 3, y, 2, 3), 0);
    EXPECT_EQ(x[2], inside);
    EXPECT_EQ(y[2], static_cast<float>(inside));
    EXPECT_EQ(_vtsdRngUniform(0, g, 3, x, 2, 3), 0);
    EXPECT_EQ(x[0], 2 + at);
  }
}

uint16_t x87_control() {
  uint16_t control;
  asm volatile("fnstcw %0" : "=m"(control));
  return control;
}

// Also when a draw fails: its status comes back, and earlier blocks are written. The controls unmask division
// by zero, which the logarithms meet.
TEST(distributions, put_back_what_they_changed) {
  constexpr VtmErrorCallback mine = [](VtmErrorContext*) { return 0; };
  const uint32_t mode = tmk_vtm_kernel_SetMode(VTM_ERRMODE_NOERR | VTM_DENORMALS_FLUSHED);
  const VtmErrorCallback callback = tmk_vtm_kernel_SetErrorCallBack(mine);
  const uint32_t set_mode = tmk_vtm_kernel_GetMode();
  const uint32_t sse = _mm_getcsr();
  const uint16_t x87 = x87_control(), unmasked = x87 & ~0x04;
  const owned_stream g(placed::id(), {1});
  placed::at = 0;
  for (const law& l : laws())
    for (const int at : {0, 2}) {
      if (l.name == "cauchy" || l.name.starts_with("lognormal")) continue;  // in the caller's own controls
      placed::failing = at;
      placed::draws = 0;
      std::vector<double> x(3000, -1);
      _mm_setcsr(sse & ~0x0200u);
      asm volatile("fnclex; fldcw %0" : : "m"(unmasked));  // a flag of earlier work would trap
      const int32_t status = l.d(g, 3000, x.data(), 1, 2, 4);
      const uint32_t sse_after = _mm_getcsr();
      const uint16_t x87_after = x87_control();
      _mm_setcsr(sse);
      asm volatile("fldcw %0" : : "m"(x87));
      EXPECT_EQ(sse_after, sse & ~0x0200u) << l.name;
      EXPECT_EQ(x87_after, unmasked) << l.name;
      if (l.name != "uniform") {
        EXPECT_EQ(status, at == 0 ? 0 : -77) << l.name;
        EXPECT_NE(x[0], -1) << l.name;
      }
      EXPECT_EQ(tmk_vtm_kernel_GetMode(), set_mode) << l.name;
      EXPECT_EQ(tmk_vtm_kernel_GetErrorCallBack(), mine) << l.name;
    }
  placed::failing = 0;
  tmk_vtm_kernel_SetErrorCallBack(callback);
  tmk_vtm_kernel_SetMode(mode | (mode & VTM_DENORMALS_MASK ? 0 : VTM_DENORMALS_KEPT));
}

}  // namespace
