// SPDX-License-Identifier: Apache-2.0
// What the discrete laws do element by element.
#include "random/distributions/discrete_kernels.hpp"

#include <algorithm>
#include <bit>
#include <cmath>

#include "random/distributions/log_ratio.hpp"
#include "random/distributions/strip_table.hpp"
#include "simd/integer.hpp"
#include "simd/neighbours.hpp"
#include "simd/rows.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

constexpr int width = lanes<double>;

// body(i, at) for each register of n elements; `at` is where a register of results goes: to r + i, or, for
// one that is partly filled, to a buffer of which the leading ones are copied.
template <class Body>
void in_registers(int32_t n, int32_t* r, Body body) {
  int32_t i = 0;
  for (; n - i >= width; i += width) body(i, r + i);
  if (i == n) return;
  alignas(64) int32_t rest[width];
  body(i, rest);
  std::copy_n(rest, n - i, r + i);
}

// The number of the cell or strip of scaled uniforms, and the fraction that is left.
struct place {
  f64 number, fraction;
};
place place_of(const f64& scaled, int32_t* number) {
  store_truncated(number, scaled, 0);
  const f64 whole = load_as<double>(number);
  return {whole, scaled - whole};
}

void of_cells(int32_t n, const double* u, const double* cells, int32_t bits, int32_t least, int32_t* r) {
  const f64 count(1 << bits), exponent_52(0x1p52);
  const u64 mask((1u << bits) - 1), offset(static_cast<uint32_t>(least));
  in_registers(n, r, [&](int32_t i, int32_t* at) {
    alignas(64) int32_t number[width];
    const place p = place_of(load(u + i) * count, number);
    const f64 cell = load_at(cells, number);
    // The number in the lower bits, like the alias of the cell.
    const f64 own = p.number + exponent_52;
    const u64 chosen = bits_as<uint64_t>(xsimd::select(p.fraction < cell, own, cell));
    store_lower_words(reinterpret_cast<uint32_t*>(at), (chosen & mask) + offset);
  });
}

int32_t of_strips(int32_t n, const double* pairs, const double* cuts, int32_t count, double mode, int32_t* r,
                  int32_t* undecided) {
  const f64 strips(count), below_count(std::nextafter(count, 0)), middle(mode), most(INT32_MAX);
  const f64 sure_unit(1 << sure_bits), exponent_52(0x1p52);
  const u64 sure_mask((1u << sure_bits) - 1);
  constexpr int32_t together = 32;  // fewer loops of unpredictable length
  int32_t found = 0;
  uint32_t open = 0;
  in_registers(n, r, [&](int32_t i, int32_t* at) {
    alignas(64) int32_t number[width];
    const auto [u, v] = load_deinterleaved(pairs + 2 * i);
    const place p = place_of(xsimd::min(u * strips, below_count), number);
    const auto [cut, next] = load_neighbours(cuts, number);
    const f64 d = round_down(cut + p.fraction * (next - cut));
    store_truncated(at, xsimd::min(d + middle, most), 0);
    const u64 sure = (bits_as<uint64_t>(cut) & sure_mask) | bits_as<uint64_t>(exponent_52);
    const f64 least = bits_as<double>(sure) - exponent_52;
    open |= lane_bits<double>(v * sure_unit > least) << (i % together);
    if ((i + width) % together != 0 && i + width < n) return;
    const int32_t first = i - i % together;
    for (; open != 0; open &= open - 1) {
      undecided[found] = first + std::countr_zero(open);
      found += undecided[found] < n;
    }
  });
  return found;
}

// r[i] = f(r[i], p[i]...)
template <class F, class... Pointers>
void map(int32_t n, double* r, F f, Pointers... p) {
  for (int32_t i = 0; i < n; i += width) {
    const int some = std::min(n - i, width);
    store_partial(r + i, some, f(load_partial(r + i, some, 0.0), load_partial(p + i, some, 0.0)...));
  }
}

f64 correction(const f64& z) {
  const auto small = z < f64(least_of_stirling_series);
  const f64 series = stirling_series(z);
  if (!xsimd::any(small)) return series;
  alignas(64) double each[width];
  store(each, z);
  for (double& x : each) x = x < least_of_stirling_series ? stirling_correction(x) : stirling_series(x);
  return load(+each);
}

void line(int32_t n, const double* d, double slope, double constant, double* r) {
  map(
      n, r, [=](const f64&, const f64& x) { return x * slope + constant; }, d);
}
void add_multiple(int32_t n, const double* x, double factor, double* r) {
  map(
      n, r, [=](const f64& sum, const f64& y) { return sum + y * factor; }, x);
}
void add_factor(int32_t n, const double* d, log_gamma_factor f, const double* logarithm, double* r) {
  map(
      n, r,
      [=](const f64& sum, const f64& y, const f64& l) {
        const f64 x = y * f.direction, z = x + f.z;
        return sum + ((z - 0.5) * l - x + correction(z)) * f.weight;
      },
      d, logarithm);
}
void quotient(int32_t n, const double* d, double z, double offset, double* r) {
  map(
      n, r, [=](const f64&, const f64& x) { return offset / (x + z); }, d);
}
void add_quotient(int32_t n, const double* d, double z, double offset, const double* logarithm, double* r) {
  map(
      n, r,
      [=](const f64& sum, const f64& x, const f64& l) {
        const f64 y = x + z;
        return sum + ((y - 0.5) * l + correction(y + offset) - correction(y));
      },
      d, logarithm);
}
void clear_at_zero(int32_t n, const double* d, double* r) {
  map(
      n, r, [](const f64& x, const f64& y) { return xsimd::select(y == f64(0), f64(0), x); }, d);
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(discrete_kernels) = {of_cells,   of_strips, line,         add_multiple,
                                             add_factor, quotient,  add_quotient, clear_at_zero};

}  // namespace tmk::rng
