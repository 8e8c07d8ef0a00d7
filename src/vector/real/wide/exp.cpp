// e^x on the wide tiers. Single LA keeps the table and drops its corrections; the levels below HA otherwise
// do without a table: a longer polynomial costs less than the lookups.
#include "vector/real/wide/exponential.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
struct wide_exp {
  using real = Real;
  using value = batch<Real>;
  using constants = exp_series<Real, exp_base::e>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr auto name = single ? "vsExp" : "vdExp";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 4 * lanes<Real>;
  static constexpr Real filler = Real(0.75);

  static value fast(const value& x) {
    if constexpr (Level == level::ha) return exponential<exp_base::e>(x);
    if constexpr (Level == level::ep) return exponential_without_table<false>(x, constants::ep);
    if constexpr (!single) return exponential_without_table<true>(x, constants::la);
    const auto arg = reduce<exp_base::e>(x);
    const value& r = arg.reduced;
    return xsimd::fma(arg.power, xsimd::fma(r * r, series(r, constants::la), r), arg.power);
  }
  // Good: |x| < 87.3365... (EP 87.25), 708.39...
  static lane_mask<Real> flagged(const value& x, const value&) {
    constexpr auto bound = !single ? 0x4086232B00000000 : Level == level::ep ? 0x42AE8000 : 0x42AEAC50;
    return magnitude_from(x, static_cast<integer<Real>>(bound));
  }
  static int32_t rare(const Real* a, Real* r) {
    const auto formula = extreme_exponential<exp_base::e, Real>;
    return exp_rare(a, r, formula, formula);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_DEFINE_KERNEL(s, Exp, LAynn, run_masked<wide_exp<float, level::la>>)
TMK_DEFINE_KERNEL(s, Exp, HAynn, run_masked<wide_exp<float, level::ha>>)
TMK_DEFINE_KERNEL(s, Exp, EPnnn, run_masked<wide_exp<float, level::ep>>)
TMK_DEFINE_KERNEL(d, Exp, LAynn, run_masked<wide_exp<double, level::la>>)
TMK_DEFINE_KERNEL(d, Exp, HAynn, run_masked<wide_exp<double, level::ha>>)
TMK_DEFINE_KERNEL(d, Exp, EPnnn, run_masked<wide_exp<double, level::ep>>)
