// SPDX-License-Identifier: Apache-2.0
// Element-wise steps of the gamma law and its relatives. The same bits on every tier.
#include "random/distributions/gamma.hpp"

#include <algorithm>
#include <bit>

#include "simd/batch.hpp"
#include "simd/rows.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

constexpr int width = lanes<double>;

// step(i, load, store) for whole registers, then for a last one that is filled in part.
template <class Step>
void by_registers(int32_t n, Step step) {
  int32_t i = 0;
  for (; n - i >= width; i += width)
    step(
        i, [](const double* p) { return load(p); }, [](double* p, const f64& x) { store(p, x); });
  if (const int count = n - i; count > 0)
    step(
        i, [=](const double* p) { return load_partial(p, count, 1.0); },
        [=](double* p, const f64& x) { store_partial(p, count, x); });
}

constexpr int32_t lane_index[] = {0, 1, 2, 3, 4, 5, 6, 7};

// Two and four columns are even and odd lanes of registers, parted once or twice; the lanes of others are
// loaded one by one.
template <int K>
[[gnu::always_inline]] inline void take_columns(const double* group, f64 (&column)[K]) {
  const auto get = [=](int k) { return load(group + k * width); };
  if constexpr (K == 2) {
    const auto [even, odd] = deinterleave(get(0), get(1));
    column[0] = even;
    column[1] = odd;
  } else if constexpr (K == 4) {
    const auto [even, odd] = deinterleave(get(0), get(1));
    const auto [more_even, more_odd] = deinterleave(get(2), get(3));
    const auto [first, third] = deinterleave(even, more_even);
    const auto [second, fourth] = deinterleave(odd, more_odd);
    column[0] = first;
    column[1] = second;
    column[2] = third;
    column[3] = fourth;
  } else {
#pragma GCC unroll 6
    for (int c = 0; c < K; ++c) column[c] = load_at(group + c, lane_index, K);
  }
}

template <int K>
void deal_groups(int32_t n, const uint64_t* units, unit_column* column) {
  int32_t i = 0;
  for (; n - i >= width; i += width) {
    f64 taken[K];
    take_columns<K>(reinterpret_cast<const double*>(units + K * i), taken);
#pragma GCC unroll 6
    for (int c = 0; c < K; ++c) store(reinterpret_cast<double*>(column[c] + i), taken[c]);
  }
  for (; i < n; ++i)
    for (int c = 0; c < K; ++c) column[c][i] = units[K * i + c];
}

void deal(int32_t n, int k, const uint64_t* units, unit_column* column) {
  static constexpr decltype(&deal_groups<2>) by_size[] = {deal_groups<1>, deal_groups<2>, deal_groups<3>,
                                                          deal_groups<4>, deal_groups<5>, deal_groups<6>};
  by_size[k - 1](n, units, column);
}

void fractions(int32_t n, const uint64_t* units, double* u) {
  by_registers(n, [=](int32_t i, auto get, auto put) {
    const u64 unit = bits_as<uint64_t>(get(reinterpret_cast<const double*>(units) + i));
    const u64 one = u64(std::bit_cast<uint64_t>(1.0));
    put(u + i, (bits_as<double>(unit >> 12 | one) - 1.0) + 0x1p-53);
  });
}

// Less than 1 by what a constant c that is rounded up in single precision may take.
int32_t cube(int32_t n, const double* x, const double* u, double c, double squeeze, double* v,
             int32_t* undecided) {
  uint32_t open[distribution_block / 32] = {};
  by_registers(n, [&](int32_t i, auto get, auto put) {
    const f64 xi = get(x + i), w = xi * c + 1.0, x2 = xi * xi;
    put(v + i, w * w * w);
    uint32_t set = lane_bits<double>(get(u + i) >= (1 - 0x1p-20) - x2 * x2 * squeeze);
    if (n - i < width) set &= (1U << (n - i)) - 1;
    open[i / 32] |= set << i % 32;
  });
  int32_t count = 0;
  for (int32_t i = 0; i < n; i += 32)
    for (uint32_t set = open[i / 32]; set != 0; set &= set - 1)
      undecided[count++] = i + std::countr_zero(set);
  return count;
}

void square(int32_t n, const double* x, double* r) {
  by_registers(n, [=](int32_t i, auto get, auto put) {
    const f64 xi = get(x + i);
    put(r + i, xi * xi);
  });
}

void scale_from(int32_t n, double* x, double factor, double least) {
  by_registers(
      n, [=](int32_t i, auto get, auto put) { put(x + i, xsimd::max(get(x + i) * factor, f64(least))); });
}

void place_power(int32_t n, const double* g, const double* f, double beta, double a, double* r) {
  by_registers(n, [=](int32_t i, auto get, auto put) {
    const f64 fi = get(f + i);
    put(r + i, ((fi * beta) * (get(g + i) * fi)) * fi + a);
  });
}

void part_of_sum(int32_t n, const double* x, double px, const double* y, double qy, const double* f,
                 double* r) {
  by_registers(n, [=](int32_t i, auto get, auto put) {
    f64 p = get(x + i) * px, q = get(y + i) * qy;
    if (f != nullptr) {
      const f64 fi = get(f + i);
      p = p * fi;
      q = q / fi;
    }
    put(r + i, p / (p + q));
  });
}

void place_radius(int32_t n, const double* e, const double* c, double factor, double a, double* r) {
  by_registers(n, [=](int32_t i, auto get, auto put) {
    const f64 ei = get(e + i);
    put(r + i, (xsimd::sqrt(ei) * factor) * (xsimd::sqrt(ei + 2.0) * get(c + i)) + a);
  });
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(gamma_kernels) = {deal,       fractions,   cube,        square,
                                          scale_from, place_power, part_of_sum, place_radius};

}  // namespace tmk::rng
