// SPDX-License-Identifier: Apache-2.0
// WH: a vector of consecutive elements per component, in doubles.
#include "random/generators/wh.hpp"

#include <algorithm>

#include "simd/integer.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

constexpr int width = lanes<double>;
constexpr double integer_at_low_end = 0x1.8p52;  // x + this - this: x as an integer

// x -> step x mod m. A residue that is not 0 keeps the quotient 2^-24 away from the integers and its rounding
// errors are below 2^-27, so the wide tiers' floor is right in every rounding mode. The baseline has no such
// instruction: there the quotient may be one off, and residues lie between -m and m. All else is exact, since
// products are below 2^49, and may be fused.
struct component {
  f64 step, ratio, modulus;
  component() = default;
  component(uint32_t a, uint32_t m) : step(a), ratio(static_cast<double>(a) / m), modulus(m) {}

  f64 operator()(const f64& x) const {
    if constexpr (is_baseline) {
      const f64 magic(integer_at_low_end);
      const f64 quotient = (x * ratio + magic) - magic;
      return x * step - quotient * modulus;
    } else {
      return xsimd::fnma(xsimd::floor(x * ratio), modulus, x * step);
    }
  }
  f64 least_positive(const f64& x) const {
    return is_baseline ? xsimd::select(x < f64(0.0), x + modulus, x) : x;
  }
};

// A sink writes the results of `width` elements, given by component.
struct word_sink {
  using value = uint32_t;
  static constexpr int per_element = 4;
  void put(value* r, const f64 (&x)[4]) const { store_interleaved_words(r, x); }
};

// The sum's order and the unmultiplied interval are part of the results.
template <class Real>
struct uniform_sink {
  using value = Real;
  static constexpr int per_element = 1;
  const wh_moduli_row& row;
  double a, b;

  void put(value* r, const f64 (&x)[4]) const {
    f64 sum = x[0] * row.reciprocal[0];
    for (int j = 1; j < 4; ++j) sum = sum + x[j] * row.reciprocal[j];
    const f64 magic(integer_at_low_end);
    const f64 nearest = (sum + magic) - magic;
    const f64 floor = nearest - xsimd::select(nearest > sum, f64(1.0), f64(0.0));
    const f64 y = (sum - floor) * (b - a) + a;
    if constexpr (sizeof(Real) == 8)
      store(r, y);
    else
      store_singles(r, y);
  }
};

template <class Sink>
void draw(wh_state* state, const wh_moduli_row& row, int32_t n, typename Sink::value* r, const Sink& sink) {
  alignas(64) double start[4][width];
  const int serial = std::min(n, width);
  for (int j = 0; j < 4; ++j) {
    uint32_t x = state->x[j];
    for (int k = 0; k < width; ++k) {
      start[j][k] = x;
      if (k < serial) x = multiply_mod(state->a[j], x, row.m[j]);
    }
    state->x[j] = x;
  }
  f64 x[4], shown[4];
  for (int j = 0; j < 4; ++j) x[j] = f64::load_aligned(start[j]);
  if (n >= width) {
    component c[4];
    for (int j = 0; j < 4; ++j) {
      uint32_t step = state->a[j];
      for (int k = 1; k < width; k *= 2) step = multiply_mod(step, step, row.m[j]);
      c[j] = component(step, row.m[j]);
    }
    for (; n >= width; n -= width, r += width * Sink::per_element) {
#pragma GCC unroll 4
      for (int j = 0; j < 4; ++j) {
        shown[j] = c[j].least_positive(x[j]);
        x[j] = c[j](x[j]);
      }
      sink.put(r, shown);
    }
    for (int j = 0; j < 4; ++j) {
      x[j] = c[j].least_positive(x[j]);
      x[j].store_aligned(start[j]);
      state->x[j] = static_cast<uint32_t>(start[j][n]);
    }
  }
  alignas(64) typename Sink::value rest[width * Sink::per_element];
  sink.put(rest, x);
  std::copy_n(rest, n * Sink::per_element, r);
}

void words(wh_state* state, const wh_moduli_row& row, int32_t n, uint32_t* r) {
  draw(state, row, n, r, word_sink{});
}
template <class Real>
void uniforms(wh_state* state, const wh_moduli_row& row, int32_t n, Real* r, double a, double b) {
  draw(state, row, n, r, uniform_sink<Real>{row, a, b});
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(wh_kernels) = {words, uniforms<double>, uniforms<float>};

}  // namespace tmk::rng
