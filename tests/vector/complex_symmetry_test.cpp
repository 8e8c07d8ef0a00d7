// SPDX-License-Identifier: Apache-2.0
// Symmetries of the complex exponential's family, bit for bit on every kernel: f(conj z) = conj f(z), and
// f(-z) = f(z) or -f(z). Among the arguments are zeros, large angles, the neighbours of zeros and poles, and
// results that overflow.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <vector>

#include "platform/fp.hpp"
#include "tools/common/kernels.hpp"

namespace {

using namespace tmk::tools;

enum class parity { none, odd, even };
struct symmetric_function {
  std::string_view stem;
  parity of;
};
constexpr symmetric_function symmetric_functions[] = {
    {"Exp", parity::none}, {"Sin", parity::odd},  {"Sinh", parity::odd}, {"Tan", parity::odd},
    {"Tanh", parity::odd}, {"Cos", parity::even}, {"Cosh", parity::even}};

// A part of an argument, at all scales; a third of them next to multiples of pi / 2.
template <class Real, class Generator>
Real draw(Generator& generate) {
  const double u = std::uniform_real_distribution(-1.0, 1.0)(generate);
  const int limit = sizeof(Real) == 4 ? 100 : 1000;
  switch (generate() % 6) {
    case 0:
      return Real(0);
    case 1:
    case 2:
      return static_cast<Real>(double(int(generate() % 101) - 50) * (std::numbers::pi / 2));
    case 3:
      return static_cast<Real>(std::ldexp(u, int(generate() % (2 * limit)) - limit));
    default:
      return static_cast<Real>(u * (generate() % 2 ? 5 : limit));
  }
}

template <class Real>
void expect_symmetric(const vector_function& f, parity of, const kernel& k) {
  using complex = std::complex<Real>;
  std::mt19937 generate(7);
  constexpr int n = 3000;
  std::vector<complex> z(n), conjugate(n), negative(n), w(n), of_conjugate(n), of_negative(n);
  for (int i = 0; i < n; ++i) {
    z[i] = {draw<Real>(generate), draw<Real>(generate)};
    conjugate[i] = std::conj(z[i]);
    negative[i] = -z[i];
  }
  const auto run = [&](const std::vector<complex>& from, std::vector<complex>& to) {
    reinterpret_cast<void (*)(int32_t, const complex*, complex*)>(k.address)(n, from.data(), to.data());
  };
  run(z, w), run(conjugate, of_conjugate), run(negative, of_negative);
  const auto same = [](complex x, complex y) {
    const auto same_part = [](Real a, Real b) {
      return tmk::to_bits(a) == tmk::to_bits(b) || (std::isnan(a) && std::isnan(b));
    };
    return same_part(x.real(), y.real()) && same_part(x.imag(), y.imag());
  };
  for (int i = 0; i < n; ++i) {
    const auto where = [&] {
      return testing::Message() << std::hexfloat << f.name << z[i] << " = " << w[i] << ", slot "
                                << k.uses[0].slot << " on " << tmk_tier_name(k.uses[0].tier);
    };
    ASSERT_TRUE(same(of_conjugate[i], std::conj(w[i])))
        << where() << ", of the conjugate " << of_conjugate[i];
    const bool as_promised = of == parity::none || same(of_negative[i], of == parity::odd ? -w[i] : w[i]);
    ASSERT_TRUE(as_promised) << where() << ", of -z " << of_negative[i];
  }
}

TEST(complex_symmetries, hold_bit_for_bit) {
  const uint32_t mode = tmk_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE | VTM_DENORMALS_KEPT);
  for (const vector_function& f : functions_with_value())
    for (const auto [stem, of] : symmetric_functions)
      if (f.is_complex() && f.stem == stem)
        for (const kernel& k :
             distinct_kernels(f, available_tiers(), {TMK_SLOT_LA, TMK_SLOT_HA, TMK_SLOT_EP})) {
          tmk_select_tier(k.uses[0].tier);
          f.is_single() ? expect_symmetric<float>(f, of, k) : expect_symmetric<double>(f, of, k);
        }
  if (mode != 0) tmk_vtm_kernel_SetMode(mode);
  tmk_select_tier(TMK_TIER_WIDEST);
}

}  // namespace
