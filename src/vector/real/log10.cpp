// log10(x) on the baseline: the table and the identity of log_reduction.hpp, with
//   log10(1 + t) = e_high t + p(t),   e_high the leading bits of log10(e):
// e_high times the short part of t is exact, and p takes the rest.
// EP goes without a table: x = 2^k m, m in [2/3, 4/3), and a polynomial in m - 1.
#include "vector/real/log10_data.hpp"
#include "vector/real/log_rare.hpp"
#include "vector/real/log_reduction.hpp"

TMK_TIER_OPEN
namespace {

using namespace log10_data;

struct single_log10_la {
  using real = float;
  static constexpr char name[] = "vsLog10";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 4;
  static constexpr bool restores_input = true;

  static f32 fast(const f32& x) { return formula(x, 0); }
  static f32 formula(const f32& x, int k0) {
    const f32 k = xsimd::to_float(exponent_field(x) - i32(format<float>::bias - k0));
    f32 row[4];
    load_rows(single_la_rows, row_offset(x), row);
    const f32 m = mantissa(x);
    const f32 t = (m - row_center(m)) * row[0];
    const f32 low = k * f32(single_unit_low) + row[2];
    return (k * f32(single_unit_high) + row[1]) + (t * polyeval(t, single_la_polynomial) + low);
  }
  static lane_mask<float> flagged(const f32& x, const f32&) { return not_positive_normal(x); }
  static int32_t rare(const float* a, float* r) {
    return log_rare(a, r, [](float x, int k) { return formula(f32(x), k).get(0); });
  }
};

// Near 1 the rows of 1 and 2 serve, by which t is x - 1 and nothing cancels.
struct single_log10_ha {
  using real = float;
  static constexpr char name[] = "vsLog10";
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
    const f32 th = mh * row[0] - f32(1.0f);
    const f32 tl = (m - mh) * row[0];
    const f32 t = th + tl;
    const f32 low = k * f32(single_unit_low) + row[2];
    const auto linear = fast_two_sum(th * f32(single_e_high), tl * f32(single_e_high));
    const f32 rest = linear.low + (low + t * polyeval(t, single_ha_polynomial));
    return sum_of_three(k * f32(single_unit_high) + row[1], linear.high, rest);
  }
  static lane_mask<float> flagged(const f32& x, const f32&) { return not_positive_normal(x); }
  static int32_t rare(const float* a, float* r) {
    return log_rare(a, r, [](float x, int k) { return formula(f32(x), k).get(0); });
  }
};

struct single_log10_ep {
  using real = float;
  static constexpr char name[] = "vsLog10";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 16;
  static constexpr float filler = 0.75f;

  static f32 fast(const f32& x) { return formula(x, 0); }
  static f32 formula(const f32& x, int k0) {
    const auto [k, f] = reduce_about_one(x, k0);
    return k * f32(0x1.344136p-2f) + f * polyeval(f, single_ep_polynomial);
  }
  static lane_mask<float> flagged(const f32& x, const f32&) { return not_positive_normal(x); }
  static int32_t rare(const float* a, float* r) {
    return log_rare(a, r, [](float x, int k) { return formula(f32(x), k).get(0); });
  }
};

struct double_log10_ha {
  using real = double;
  static constexpr char name[] = "vdLog10";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 4;
  static constexpr bool restores_input = true;

  static f64 fast(const f64& x) { return formula(x, 0); }
  static f64 formula(const f64& x, int k0) {
    const i32 high = bits_as<int32_t>(x);
    const f64 k = exponent(x, k0);
    f64 row[2], low_column[2];  // of the first 9 fraction bits, rounded
    const i32 offset = (((high & i32(0xFFC00)) + i32(0x400)) & i32(0x1FF800)) >> 6;
    load_rows(double_rows, offset, row);
    load_rows(&double_rows->low, offset, low_column);
    const auto [th, tl] = reduce(mantissa(x), row[0]);
    const f64 t = th + tl;
    const f64 low = k * f64(double_unit_low) + low_column[0];
    const f64 sum = (k * f64(double_unit_high) + row[1]) + th * f64(double_e_high);
    return sum_of_three(sum, tl * f64(double_e_high), low + t * polyeval(t, double_polynomial));
  }
  static lane_mask<double> flagged(const f64& x, const f64&) { return not_positive_normal(x); }
  static int32_t rare(const double* a, double* r) {
    return log_rare(a, r, [](double x, int k) { return formula(f64(x), k).get(0); });
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_DEFINE_KERNEL(s, Log10, LAynn, run_blocks<single_log10_la>)
TMK_DEFINE_KERNEL(s, Log10, HAynn, run_blocks<single_log10_ha>)
TMK_DEFINE_KERNEL(s, Log10, EPnnn, run_masked<single_log10_ep>)
TMK_DEFINE_KERNEL(d, Log10, HAynn, run_blocks<double_log10_ha>)
