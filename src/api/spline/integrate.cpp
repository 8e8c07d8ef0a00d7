// SPDX-License-Identifier: Apache-2.0
// Integrals, and what holds outside the partition.
#include "api/spline/core.hpp"

namespace tmk {

template <class Real>
void basic_spline<Real>::integrate(std::span<const Real> lo, std::span<const Real> hi,
                                   std::span<Real> out) const {
  constexpr auto function = "spline::integrate";
  detail::check_array(function, "lo", lo, lo.size());
  detail::check_array(function, "hi", hi, lo.size());
  detail::check_array(function, "out", out, functions() * lo.size());
  detail::check_apart(function, "out", out, "lo", lo);
  detail::check_apart(function, "out", out, "hi", hi);
  detail::check_status(
      function, detail::textbook<Real>::integrate(core_->handle.get(), detail::c_rules(outside_).data(),
                                                  static_cast<int64_t>(lo.size()), lo.data(), hi.data(),
                                                  out.data(), detail::call_threads()));
}

template <class Real>
Real basic_spline<Real>::integrate(Real lo, Real hi) const {
  detail::check_one_function("spline::integrate", functions());
  Real result = 0;
  detail::check_status("spline::integrate", detail::textbook<Real>::integrate(
                                                core_->handle.get(), detail::c_rules(outside_).data(), 1, &lo,
                                                &hi, &result, detail::call_threads()));
  return result;
}

template <class Real>
basic_spline<Real>& basic_spline<Real>::extrapolate(side which, extrapolation how) {
  constexpr auto function = "spline::extrapolate";
  detail::check_side(function, "which", which);
  if (how < extrapolation::polynomial || how > extrapolation::nan) {
    const auto number = std::to_string(static_cast<int>(how));
    detail::refuse_value(function, "how", number, "an extrapolation");
  }
  const std::size_t index = which == side::left ? 0 : 1;
  const bool needs_terms = how != extrapolation::polynomial && how != extrapolation::nan;
  std::vector<Real> terms(needs_terms ? 2 * functions() : 0);
  if (needs_terms)
    detail::check_status(function, detail::textbook<Real>::terms(
                                       core_->handle.get(), static_cast<int32_t>(index),
                                       static_cast<int32_t>(how), terms.data(), detail::call_threads()));
  outside_[index] = {how, {}, std::move(terms)};
  return *this;
}

template <class Real>
basic_spline<Real>& basic_spline<Real>::extrapolate_by(side which, outside_function function) {
  detail::check_side("spline::extrapolate", "which", which);
  if (!function) detail::refuse("spline::extrapolate", "function", "null", "is null");
  outside_[which == side::left ? 0 : 1] = {extrapolation::polynomial, std::move(function), {}};
  return *this;
}

template class basic_spline<double>;
template class basic_spline<float>;

}  // namespace tmk
