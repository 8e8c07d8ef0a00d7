// SPDX-License-Identifier: Apache-2.0
// The exponential integral E1(x), the integral of e^(-t) / t from x > 0 on.
//   x >= 1/2: e^(-x) g(x), g a series around the middle of x's half octave
//   x < 1/2:  -gamma - ln x + x + x^2 p(x)
// Doubles at HA add what the leading sums and products lose. All else is the short form, to about 2^-30, in
// double precision; of it the baseline has level EP alone.
#include <cmath>

#include "simd/rows.hpp"
#include "vector/exponential_integral/exp_int1_data.hpp"
#include "vector/power/pair_exp.hpp"
#include "vector/power/pair_log.hpp"
#include "vector/power/short_power.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/walk/kernel.hpp"

extern "C" {
int32_t tmk_vtm_reference_sExpInt1(const float*, float*);
int32_t tmk_vtm_reference_dExpInt1(const double*, double*);
}

TMK_TIER_OPEN
namespace {

constexpr int half_octaves = 22;

// Columns of 32, as V4 looks them up.
template <int Columns>
struct transposed {
  double column[Columns][32];
  constexpr explicit transposed(const double (&rows)[half_octaves][Columns]) : column{} {
    for (int i = 0; i < half_octaves; ++i)
      for (int j = 0; j < Columns; ++j) column[j][i] = rows[i][j];
  }
};

// The row of each x from 1/2 to below 2^10; that of any other x, whose result nobody uses, is within the
// table.
template <const auto& Rows, int Columns>
[[gnu::always_inline]] inline void series_at(const f64& x, f64 (&c)[Columns]) {
  if constexpr (this_tier == 2) {
    const u64 half_octave = bits_as<uint64_t>(x) - u64(to_bits(0.5));
    static constexpr transposed<Columns> table(Rows);
    const auto i = table_index<double, 32, 51>(half_octave);
#pragma GCC unroll 32
    for (int j = 0; j < Columns; ++j) c[j] = lane_table<double, 32>(table.column[j])[i];
  } else {
    uint32_t row[lanes<double>];
    const u64 half_octave = bits_as<uint64_t>(minimum_or_second(x, f64(1000))) - u64(to_bits(0.5));
    store_lower_words(row, (half_octave >> 51) * u64(Columns / 4));
#pragma GCC unroll 8
    for (int j = 0; j < Columns; j += 4)
      load_columns<4>(&Rows[0][j], reinterpret_cast<const int32_t*>(row), reinterpret_cast<f64(&)[4]>(c[j]));
  }
}

inline f64 short_integral(const f64& x) {
  using namespace exp_int1_data;
  const f64 reached = maximum_or_second(f64(0.5), x);
  f64 c[12];
  series_at<rows_short>(reached, c);
  const f64 t = reached - c[0];
  f64 y = short_exp2(reached * f64(-log2_e)) * polynomial<1>(t, c);
  const auto is_small = x < f64(0.5);
  if (lane_bits<double>(is_small) != 0) {
    const f64 sum = negative_multiply_add(short_log2(x), f64(ln2), f64(-euler_high));
    y = xsimd::select(is_small, (sum + x) + (x * x) * polynomial(x, small_short), y);
  }
  return y;
}

#if TMK_TIER_NUMBER(TMK_TIER) != 0
inline f64 paired_integral(const f64& x) {
  using namespace exp_int1_data;
  const f64 reached = maximum_or_second(f64(0.5), x);
  f64 c[20];
  series_at<rows_ha>(reached, c);
  const f64 t = reached - c[0];
  const auto linear = two_prod(t, c[3]);
  const auto g = fast_two_sum(c[1], linear.high);
  const f64 low = multiply_add(t * t, polynomial<4>(t, c), g.low + (linear.low + c[2]));
  const auto [power, growth] = pair_exp_in_two({-reached, f64(0.0)});
  // Larger for a while, lest the low part be a subnormal number.
  const f64 raised = bits_as<double>(bits_as<uint64_t>(power) + u64(uint64_t{64} << 52));
  const auto e = fast_two_sum(raised, raised * growth);
  f64 y = multiply_add(e.high, g.high, multiply_add(e.high, low, e.low * g.high)) * f64(0x1p-64);

  const auto is_small = x < f64(0.5);
  if (lane_bits<double>(is_small) != 0) {
    const auto log = pair_log(x);
    const auto sum = two_sum(-log.high, f64(-euler_high));
    const auto more = two_sum(sum.high, x);
    const f64 rest = (sum.low + more.low) - (log.low + f64(euler_low));
    const f64 near = more.high + multiply_add(x * x, polynomial(x, small_ha), rest);
    y = xsimd::select(is_small, near, y);
  }
  return y;
}
#endif

inline int32_t reference_integral(const float* a, float* r) { return tmk_vtm_reference_sExpInt1(a, r); }
inline int32_t reference_integral(const double* a, double* r) { return tmk_vtm_reference_dExpInt1(a, r); }

// Maximum errors in ulp, by tmk-accuracy ExpInt1 --samples 60000 --search brief:
//   single (W7, EP): 0.5161 at 0x1.7d4be6p+4: got 0x1.fb7a06p-40, want 0x1.fb7a04f8p-40
//   single (V3): 0.5042 at 0x1.40f96ap+6: got 0x1.da186cp-123, want 0x1.da186afep-123
//   single (V4): 0.5273 at 0x1.1d1e9p+6: got 0x1.fc589p-110, want 0x1.fc588ef2p-110
//   double LA, HA (V3, V4): 0.6019 at 0x1.04fc4aafa49bap+9:
//     got 0x1.e5dca943644fap-763, want 0x1.e5dca943644fa9ap-763
//   double EP: 29.8 bits (W7), 31.7 bits (V3), 29.1 bits (V4)
template <class Real, level Level>
struct exponential_integral : description<Real> {
  using value = batch<Real>;
  static constexpr int group = 2 * lanes<Real>;
  // Results are normal numbers up to here.
  static constexpr Real last = sizeof(Real) == 4 ? Real(82.875) : Real(701.75);
  static constexpr Real vanished = sizeof(Real) == 4 ? Real(105) : Real(747);

  static value fast(const value& x) {
    if constexpr (sizeof(Real) == 4)
      return in_double([](const f64& v) { return short_integral(v); }, x);
    else if constexpr (Level == level::ep)
      return short_integral(x);
    else
      return paired_integral(x);
  }
  static lane_mask<Real> flagged(const value& x, const value&) {
    return not_positive_normal<Real, to_bits(last)>(x);
  }
  // What vanishes is spared the reference, whose exponential takes long there.
  static int32_t rare(const Real* a, Real* r) {
    if (!(*a > vanished)) return reference_integral(a, r);
    *r = 0;
    return std::isinf(*a) ? VTM_STATUS_OK : VTM_STATUS_UNDERFLOW;
  }
};

}  // namespace
TMK_TIER_CLOSE

#if TMK_TIER_NUMBER(TMK_TIER) == 0
TMK_REAL_KERNELS(ExpInt1, unary, PPE, exponential_integral)
#else
TMK_KERNELS(s, ExpInt1, unary, HHH, exponential_integral)
TMK_KERNELS(d, ExpInt1, unary, HHE, exponential_integral)
#endif
