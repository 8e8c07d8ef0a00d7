// SPDX-License-Identifier: Apache-2.0
// Integrals: the C interface integrates inside the partition, the rules of the sides from its ends on.
#include <limits>

#include "api/spline/outside.hpp"

namespace tmk {

namespace {

template <class Real>
void integrate_inside(const detail::spline_core<Real>& core, std::span<const Real> lo, bool lo_ascends,
                      std::span<const Real> hi, bool hi_ascends, Real* out) {
  detail::check_fitting(
      "spline::integrate",
      detail::twin<Real>(tmk_df_kernel_dDFIntegrate1D, tmk_df_kernel_sDFIntegrate1D)(
          core.task.get(), 0, static_cast<int64_t>(lo.size()), lo.data(), detail::site_hint(lo_ascends),
          hi.data(), detail::site_hint(hi_ascends), nullptr, nullptr, out, DF_ROWS, nullptr, nullptr, nullptr,
          nullptr, nullptr, nullptr, nullptr, nullptr, detail::fitting_threads()));
}

}  // namespace

template <class Real>
void basic_spline<Real>::integrate(std::span<const Real> lo, std::span<const Real> hi,
                                   std::span<Real> out) const {
  constexpr auto function = "spline::integrate";
  const std::size_t n = lo.size();
  detail::check_output(function, "lo", lo.data(), n, n);
  detail::check_output(function, "hi", hi.data(), hi.size(), n);
  detail::check_output(function, "out", out.data(), out.size(), functions() * n);
  for (const auto& [name, limits] : {std::pair("lo", lo), std::pair("hi", hi)})
    detail::check_overlap(function, {"out", {out.data(), out.size()}, sizeof(Real)},
                          {name, {limits.data(), n}, sizeof(Real)}, false);
  if (n == 0) return;
  const auto from = detail::prepare<Real>(*core_, outside_, lo, {true, true}),
             to = detail::prepare<Real>(*core_, outside_, hi, {true, true});
  integrate_inside<Real>(*core_, from.values, from.ascending, to.values, to.ascending, out.data());
  for (const auto& [limits, sign] : {std::pair(&from, Real(-1)), std::pair(&to, Real(1))})
    for (const auto& s : limits->strays)
      for (std::size_t f = 0; f < functions(); ++f)
        out[f * n + s.index] += sign * detail::outside_value(*core_, s, f, -1, Real(0));
}

template <class Real>
Real basic_spline<Real>::integrate(Real lo, Real hi) const {
  detail::check_one_function("spline::integrate", functions());
  Real result = 0;
  integrate(std::span<const Real>(&lo, 1), std::span<const Real>(&hi, 1), std::span<Real>(&result, 1));
  return result;
}

template <class Real>
basic_spline<Real>& basic_spline<Real>::extrapolate(side which, extrapolation how) {
  detail::check_side("spline::extrapolate", "which", which);
  const Real ends[2] = {first(), last()};
  std::vector<Real> terms;
  if (how == extrapolation::constant || how == extrapolation::linear) {
    basic_spline carried_on = *this;
    carried_on.outside_ = {};
    terms.resize(2 * functions());
    carried_on.evaluate(std::span(&ends[which == side::left ? 0 : 1], 1), {0, 1}, terms);
  } else if (how == extrapolation::periodic) {
    std::vector<Real> whole(functions());
    integrate_inside<Real>(*core_, {&ends[0], 1}, false, {&ends[1], 1}, false, whole.data());
    for (const Real integral : whole) terms.insert(terms.end(), {integral, 0});
  } else if (how != extrapolation::polynomial && how != extrapolation::nan) {
    const auto number = std::to_string(static_cast<int>(how));
    detail::refuse("spline::extrapolate", "how", number, "is " + number + ", want an extrapolation");
  }
  outside_[which == side::left ? 0 : 1] = {how, {}, std::move(terms)};
  return *this;
}

template class basic_spline<double>;
template class basic_spline<float>;

}  // namespace tmk
