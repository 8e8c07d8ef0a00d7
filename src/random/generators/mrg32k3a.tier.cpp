// SPDX-License-Identifier: Apache-2.0
// MRG32K3A: several vectors of consecutive elements at once. The elements of every stride-th position obey a
// recurrence of order three as well, whose coefficients are those of the characteristic polynomial of the
// stride-th power of the one-step matrix.
#include "random/generators/mrg32k3a.hpp"

#include "simd/integer.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

constexpr int width = lanes<uint64_t>;
constexpr int vectors = 4;
constexpr int stride = vectors * width;

// Trace, principal minors and determinant of the matrix, whose columns are the states that the unit states
// become.
template <class Recurrence>
constexpr Recurrence strided(const Recurrence& one) {
  constexpr auto m = Recurrence::modulus;
  uint32_t a[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  for (auto& column : a)
    for (int i = 0; i < stride; ++i) one.step(column);
  const auto minor = [&](int i, int j, int k, int l) {
    return Recurrence::add(Recurrence::multiply(a[i][k], a[j][l]),
                           m - Recurrence::multiply(a[i][l], a[j][k]));
  };
  const uint32_t trace = Recurrence::add(Recurrence::add(a[0][0], a[1][1]), a[2][2]);
  const uint32_t minors =
      Recurrence::add(Recurrence::add(minor(0, 1, 0, 1), minor(0, 2, 0, 2)), minor(1, 2, 1, 2));
  const uint32_t determinant =
      Recurrence::add(Recurrence::add(Recurrence::multiply(a[0][0], minor(1, 2, 1, 2)),
                                      m - Recurrence::multiply(a[0][1], minor(1, 2, 0, 2))),
                      Recurrence::multiply(a[0][2], minor(1, 2, 0, 1)));
  return {trace, minors == 0 ? 0 : m - minors, determinant};
}

// x -> x mod m from below 2 m, without a compare of 64 bits, which the baseline lacks: the sign is the upper
// word's.
template <class Recurrence>
u64 reduce_once(const u64& x) {
  const u64 less = x - u64(uint64_t{Recurrence::modulus});
  const u64 borrow = bits_as<uint64_t>(bits_as<int32_t>(merge_words(less >> 32, less)) >> 31);
  return less + (borrow & u64(uint64_t{Recurrence::modulus}));
}

// 2^32 is `deficit` modulo m.
template <class Recurrence>
u64 fold(const u64& x) {
  return (x & u64(uint64_t{0xFFFFFFFF})) + multiply_low_words(x >> 32, u64(uint64_t{Recurrence::deficit}));
}

// The last three elements of a vector of positions, oldest first.
template <class Recurrence>
struct strided_vector {
  u64 z[3];

  u64 step(const Recurrence& r) {
    const u64 sum = fold<Recurrence>(multiply_low_words(z[2], u64(uint64_t{r.c1}))) +
                    fold<Recurrence>(multiply_low_words(z[1], u64(uint64_t{r.c2}))) +
                    fold<Recurrence>(multiply_low_words(z[0], u64(uint64_t{r.c3})));
    z[0] = z[1];
    z[1] = z[2];
    return z[2] = reduce_once<Recurrence>(fold<Recurrence>(sum));
  }
};

void serial(mrg32k3a_state* s, int32_t n, uint32_t* r) {
  for (int32_t i = 0; i < n; ++i) r[i] = mrg32k3a_next(*s);
}

void words(mrg32k3a_state* s, int32_t n, uint32_t* r) {
  constexpr int first = 3 * stride;
  if (n < 2 * first) return serial(s, n, r);
  alignas(64) uint64_t xs[first], ys[first];
  for (int i = 0; i < first; ++i) {
    r[i] = mrg32k3a_next(*s);
    xs[i] = s->x[2];
    ys[i] = s->y[2];
  }
  strided_vector<mrg_first> x[vectors];
  strided_vector<mrg_second> y[vectors];
  for (int v = 0; v < vectors; ++v)
    for (int k = 0; k < 3; ++k) {
      x[v].z[k] = u64::load_aligned(xs + k * stride + v * width);
      y[v].z[k] = u64::load_aligned(ys + k * stride + v * width);
    }
  constexpr mrg_first over_x = strided(mrg_x);
  constexpr mrg_second over_y = strided(mrg_y);
  int32_t i = first;
  for (; n - i >= stride; i += stride) {
    alignas(64) uint64_t z[stride];
#pragma GCC unroll 4
    for (int v = 0; v < vectors; ++v) {
      const u64 difference = x[v].step(over_x) + u64(uint64_t{mrg_first::modulus}) - y[v].step(over_y);
      reduce_once<mrg_first>(difference).store_aligned(z + v * width);
    }
    for (int k = 0; k < stride; ++k) r[i + k] = static_cast<uint32_t>(z[k]);
  }
  alignas(64) uint64_t last_x[stride], last_y[stride];
  for (int v = 0; v < vectors; ++v) {
    x[v].z[2].store_aligned(last_x + v * width);
    y[v].z[2].store_aligned(last_y + v * width);
  }
  for (int k = 0; k < 3; ++k) {
    s->x[k] = static_cast<uint32_t>(last_x[stride - 3 + k]);
    s->y[k] = static_cast<uint32_t>(last_y[stride - 3 + k]);
  }
  serial(s, n - i, r + i);
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(mrg32k3a_kernels) = {words};

}  // namespace tmk::rng
