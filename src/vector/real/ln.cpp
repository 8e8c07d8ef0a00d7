// ln(x) on the baseline: the table and the identity of log_reduction.hpp, with
//   log(1 + t) = t - t^2 / 2 + t^3 / 3 - ...
// EP in single goes without a table: x = 2^k m, m in [2/3, 4/3), and the series in m - 1.
#include "vector/real/ln_data.hpp"
#include "vector/real/log_rare.hpp"
#include "vector/real/log_reduction.hpp"

TMK_TIER_OPEN
namespace {

using namespace ln_data;

// ln(x) in the x87 format, which has the subnormals of both types among its normal numbers.
template <class Real>
Real extended_ln(Real x) {
  long double y = x;
  asm("fldln2\n\tfxch\n\tfyl2x" : "+t"(y) : : "st(7)");
  return static_cast<Real>(y);
}

struct single_ln_la {
  using real = float;
  static constexpr char name[] = "vsLn";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 4;
  static constexpr bool restores_input = true;

  static f32 fast(const f32& x) {
    const f32 k = xsimd::to_float(exponent_field(x) - i32(format<float>::bias));
    f32 row[4];
    load_rows(single_la_rows, row_offset(x), row);
    const f32 m = mantissa(x);
    const f32 t = (m - row_center(m)) * row[0];
    const f32 p = (t * t) * (f32(-0x1.00018p-1f) + t * f32(0x1.555808p-2f));
    const f32 low = k * f32(single_la_unit_low) + row[2];
    return ((p + low) + t) + (k * f32(single_la_unit_high) + row[1]);
  }
  static lane_mask<float> flagged(const f32& x, const f32&) { return not_positive_normal(x); }
  static int32_t rare(const float* a, float* r) {
    return log_rare(a, r, [a](float x, int k) { return k == 0 ? fast(f32(x)).get(0) : extended_ln(*a); });
  }
};

// Between 1 - 2^-7 and 1 + 2^-6 the rows of 1 and 2 serve, by which t is x - 1 and nothing cancels.
struct single_ln_ha {
  using real = float;
  static constexpr char name[] = "vsLn";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 8;
  static constexpr bool restores_input = true;

  static f32 fast(const f32& x) { return formula(x, 0); }
  static f32 formula(const f32& x, int k0) {
    const f32 k = xsimd::to_float(exponent_field(x) - i32(format<float>::bias - k0));
    f32 row[4];
    load_rows(single_ha_rows, row_offset_near_one(x), row);
    const f32 m = mantissa(x);
    const f32 mh = keep_bits(m, 0xFFFFC000);
    const auto [t, t_low] = fast_two_sum(mh * row[0] - f32(1.0f), (m - mh) * row[0]);
    const f32 p = (t * t) * (f32(-0.5f) + t * (f32(0x1.555556p-2f) - f32(0.25f) * t));
    const f32 low = k * f32(single_ha_unit_low) + row[2];
    return sum_of_three(k * f32(single_ha_unit_high) + row[1], t, t_low + (p + low));
  }
  static lane_mask<float> flagged(const f32& x, const f32&) { return not_positive_normal(x); }
  static int32_t rare(const float* a, float* r) {
    return log_rare(a, r, [](float x, int k) { return formula(f32(x), k).get(0); });
  }
};

struct single_ln_ep {
  using real = float;
  static constexpr char name[] = "vsLn";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 16;
  static constexpr float filler = 0.75f;

  static f32 fast(const f32& x) { return formula(x, 0); }
  static f32 formula(const f32& x, int k0) {
    const auto [k, f] = reduce_about_one(x, k0);
    const f32 p = polyeval(f, -0.5f, 0x1.54e2bep-2f, -0x1.11d1fcp-2f, 0x1.c25262p-3f);
    return k * f32(0x1.62e43p-1f) + (f + (f * f) * p);
  }
  static lane_mask<float> flagged(const f32& x, const f32&) { return not_positive_normal(x); }
  static int32_t rare(const float* a, float* r) {
    return log_rare(a, r, [](float x, int k) { return formula(f32(x), k).get(0); });
  }
};

struct double_ln_ha {
  using real = double;
  static constexpr char name[] = "vdLn";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 4;
  static constexpr bool restores_input = true;

  static f64 fast(const f64& x) { return formula(x, 0); }
  static f64 formula(const f64& x, int k0) {
    const i32 high = bits_as<int32_t>(x);
    const f64 k = exponent(x, k0);
    f64 row[2], low_column[2];  // of the first 9 fraction bits, rounded
    const i32 offset = (((high & i32(0xFFC00)) + i32(0x400)) & i32(0x1FF800)) >> 6;
    load_rows(double_ha_rows, offset, row);
    load_rows(&double_ha_rows->low, offset, low_column);
    const auto [th, tl] = reduce(mantissa(x), row[0]);
    const f64 t = th + tl;
    const f64 p = (t * t) * polyeval(t, double_ha_polynomial);
    const f64 low = k * f64(double_unit_low) + low_column[0];
    return sum_of_three((k * f64(double_unit_high) + row[1]) + th, tl, low + p);
  }
  static lane_mask<double> flagged(const f64& x, const f64&) { return not_positive_normal(x); }
  static int32_t rare(const double* a, double* r) {
    return log_rare(a, r, [](double x, int k) { return formula(f64(x), k).get(0); });
  }
};

struct double_ln_ep {
  using real = double;
  static constexpr char name[] = "vdLn";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 4;
  static constexpr bool restores_input = true;

  static f64 fast(const f64& x) {
    const i32 high = bits_as<int32_t>(x);
    f64 row[2];  // of the first 8 fraction bits, rounded
    load_rows(double_ep_rows, (((high & i32(0xFF800)) + i32(0x800)) & i32(0x1FF000)) >> 7, row);
    const f64 t = mantissa(x) * row[0] - f64(1.0);
    return (exponent(x, 0) * f64(double_unit_high) + row[1]) +
           (t + (t * t) * polyeval(t, double_ep_polynomial));
  }
  static lane_mask<double> flagged(const f64& x, const f64&) { return not_positive_normal(x); }
  static int32_t rare(const double* a, double* r) {
    return log_rare(a, r, [a](double x, int k) { return k == 0 ? fast(f64(x)).get(0) : extended_ln(*a); });
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_DEFINE_KERNEL(s, Ln, LAynn, run_blocks<single_ln_la>)
TMK_DEFINE_KERNEL(s, Ln, HAynn, run_blocks<single_ln_ha>)
TMK_DEFINE_KERNEL(s, Ln, EPnnn, run_masked<single_ln_ep>)
TMK_DEFINE_KERNEL(d, Ln, HAynn, run_blocks<double_ln_ha>)
TMK_DEFINE_KERNEL(d, Ln, EPnnn, run_blocks<double_ln_ep>)
