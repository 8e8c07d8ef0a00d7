// SPDX-License-Identifier: Apache-2.0
// Kernels of complex functions reflect as their functions do, bit for bit: in the real axis all of them,
// signs of zeros and both sides of branch cuts included, and in the origin those that are odd or even.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <memory>
#include <numbers>
#include <random>
#include <set>
#include <span>
#include <vector>

#include "oracle/batch.hpp"
#include "platform/fp.hpp"
#include "tools/common/kernels.hpp"

namespace {

using namespace tmk::accuracy;
using namespace tmk::tools;

const std::set<std::string_view> odd = {"Sin", "Tan", "Sinh", "Tanh", "Asin", "Atan", "Asinh", "Atanh"};
const std::set<std::string_view> even = {"Cos", "Cosh"};

// The baseline computes the others in extended precision, which has tests of its own.
const std::set<std::string_view> on_baseline = {"Conj", "Exp", "Ln", "Sqrt"};

// A part of an argument at all scales; a third of them next to multiples of pi / 2.
template <class Real, class Generator>
double drawn_part(Generator& generate) {
  const double u = std::uniform_real_distribution(-1.0, 1.0)(generate);
  const int limit = sizeof(Real) == 4 ? 100 : 1000;
  const auto part = [&]() -> double {
    switch (generate() % 5) {
      case 0:
      case 1:
        return (static_cast<int>(generate() % 101) - 50) * (std::numbers::pi / 2);
      case 2:
        return std::ldexp(u, static_cast<int>(generate() % (2 * limit)) - limit);
      default:
        return u * (generate() % 2 ? 5 : limit);
    }
  };
  return static_cast<double>(static_cast<Real>(part()));
}

// Branch points and cuts from both sides, the axes, ends of the range, specials, and random numbers.
template <class Real>
std::vector<arguments> points(const vector_function& f) {
  using limits = std::numeric_limits<Real>;
  std::vector<double> parts = {0,
                               limits::denorm_min(),
                               limits::min(),
                               1e-9,
                               0.5,
                               1 - double{limits::epsilon()} / 2,
                               1,
                               1 + double{limits::epsilon()},
                               1.5,
                               2,
                               20,
                               95,
                               800,
                               1e30,
                               limits::max(),
                               HUGE_VAL};
  for (size_t i = 0, n = parts.size(); i < n; ++i) parts.push_back(-parts[i]);
  parts.push_back(NAN);
  std::vector<arguments> all;
  for (const double re : parts)
    for (const double im : parts)
      all.push_back(
          {{static_cast<double>(static_cast<Real>(re)), static_cast<double>(static_cast<Real>(im))}});
  std::mt19937 generate(7);
  for (int i = 0; i < 2000; ++i) {
    const double re = drawn_part<Real>(generate);
    all.push_back({{re, drawn_part<Real>(generate)}});
  }
  const auto random = std::make_unique<batch<Real, 512>>(f, 21);
  all.insert(all.end(), random->inputs().begin(), random->inputs().end());
  return all;
}

template <class Real>
std::vector<std::complex<double>> results(const vector_function& f, const kernel& k,
                                          std::vector<arguments> x) {
  std::vector<std::complex<double>> all;
  for (size_t i = 0; i < x.size(); i += 1024) {
    const auto sample = std::make_unique<batch<Real, 1024>>(f, std::span(x).subspan(i));
    sample->run(k.address);
    for (size_t j = 0; j < sample->inputs().size(); ++j) {
      const auto [re, im] = sample->result(static_cast<int32_t>(j));
      all.emplace_back(re, im);
    }
  }
  return all;
}

bool same_part(double x, double y) {
  return (std::isnan(x) && std::isnan(y)) || tmk::to_bits(x) == tmk::to_bits(y);
}

// The sign of a zero or an infinity that comes of a NaN is nobody's.
bool same(std::complex<double> x, std::complex<double> y) {
  const auto part = [](double p, double q, bool beside_nan) {
    return same_part(p, q) || (beside_nan && std::abs(p) == std::abs(q));
  };
  return part(x.real(), y.real(), std::isnan(x.imag())) && part(x.imag(), y.imag(), std::isnan(x.real()));
}

template <class Real>
void expect_reflections(const vector_function& f, const kernel& k) {
  const auto all = points<Real>(f);
  const auto reflected = [&](auto reflect) {
    auto copy = all;
    for (arguments& x : copy) x.a = reflect(x.a);
    return results<Real>(f, k, copy);
  };
  const auto conjugate = [](std::complex<double> z) { return std::conj(z); };
  const auto negative = [](std::complex<double> z) { return -z; };
  const auto identity = [](std::complex<double> z) { return z; };
  const auto expect = [&](const auto& got, const auto& want, auto image, const char* what) {
    for (size_t i = 0; i < all.size(); ++i)
      ASSERT_TRUE(same(got[i], image(want[i])))
          << f.name << " " << what << " of " << std::hexfloat << all[i].a << ": " << got[i] << ", not "
          << image(want[i]) << ", " << level_names[k.uses[0].slot] << " on " << tmk_tier_name(k.uses[0].tier);
  };
  const auto plain = reflected(identity);
  expect(reflected(conjugate), plain, conjugate, "conjugate");
  if (odd.contains(f.stem)) expect(reflected(negative), plain, negative, "odd");
  if (even.contains(f.stem)) expect(reflected(negative), plain, identity, "even");
}

TEST(complex_kernels, reflect_as_their_functions_do) {
  const uint32_t mode = tmk_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE | VTM_DENORMALS_KEPT);
  for (const vector_function& f : functions_with_value()) {
    if (!f.is_complex() || f.shape != call_shape::unary || !f.vectorized) continue;
    for (const kernel& k : distinct_kernels(f, available_tiers(), {TMK_SLOT_LA, TMK_SLOT_HA, TMK_SLOT_EP})) {
      if (k.uses[0].tier == TMK_TIER_W7 && !on_baseline.contains(f.stem)) continue;
      f.is_single() ? expect_reflections<float>(f, k) : expect_reflections<double>(f, k);
    }
  }
  tmk_select_tier(TMK_TIER_WIDEST);
  if (mode != 0) tmk_vtm_kernel_SetMode(mode);
}

}  // namespace
