// SPDX-License-Identifier: Apache-2.0
// Values, derivatives and cells: the C interface answers inside the partition, the rules of the sides
// outside.
#include <algorithm>
#include <limits>

#include "api/spline/outside.hpp"

namespace tmk {

namespace {

struct order_row {
  int64_t hint;
  bool one_function;
};
// In the order of result_order.
constexpr order_row order_rows[] = {
    {DF_FUNCTION_SITE_DERIVATIVE, false}, {DF_FUNCTION_DERIVATIVE_SITE, false},
    {DF_SITE_FUNCTION_DERIVATIVE, false}, {DF_SITE_DERIVATIVE_FUNCTION, false},
    {DF_FUNCTION_SITE_DERIVATIVE, true},  {DF_FUNCTION_DERIVATIVE_SITE, true},
};

// Where the results of a site are.
struct strides {
  std::size_t function, site, derivative;
};
strides strides_of(int64_t hint, std::size_t functions, std::size_t sites, std::size_t orders) {
  switch (hint) {
    case DF_FUNCTION_DERIVATIVE_SITE:
      return {orders * sites, 1, sites};
    case DF_SITE_FUNCTION_DERIVATIVE:
      return {orders, functions * orders, 1};
    case DF_SITE_DERIVATIVE_FUNCTION:
      return {1, functions * orders, functions};
    default:
      return {sites * orders, orders, 1};
  }
}

template <class Real>
void check_apart(const char* function, std::span<Real> out, std::span<const Real> other, const char* name) {
  detail::check_overlap(function, {"out", {out.data(), out.size()}, sizeof(Real)},
                        {name, {other.data(), other.size()}, sizeof(Real)}, false);
}

template <class Real>
void check_sites(const char* function, const abscissae<Real>& sites) {
  const std::size_t n = sites.size();
  if (!sites.is_grid()) detail::check_output(function, "sites", sites.array().data(), n, n);
  if (sites.is_grid() && n > INT32_MAX)
    detail::refuse(function, "sites", std::to_string(n),
                   "has " + std::to_string(n) + " points, want at most 2147483647");
}

// Whether ascending sites are to be merged with the points: below one to four points a search of each site
// costs no more, and on even points it never does.
template <class Real>
bool merges(const detail::spline_core<Real>& core, std::size_t sites) {
  return !core.even && sites >= core.points / 4;
}

template <class Real>
void interpolate(const char* function, const detail::spline_core<Real>& core,
                 const detail::outside_rules<Real>& rules, const abscissae<Real>& sites,
                 std::span<const std::int32_t> orders, Real* out, int64_t layout) {
  if (sites.size() == 0) return;
  int32_t wanted[16] = {};
  for (const std::int32_t k : orders) wanted[k] = 1;
  const bool merged = merges(core, sites.size());
  // Below the polynomials' degree every result depends on the site, and so a NaN spreads by itself.
  const auto p = detail::prepare(core, rules, sites, {orders.back() < core.order - 1, merged});
  detail::check_fitting(
      function, detail::twin<Real>(tmk_df_kernel_dDFInterpolate1D, tmk_df_kernel_sDFInterpolate1D)(
                    core.task.get(), DF_INTERPOLATE_VALUES, 0, static_cast<int64_t>(p.values.size()),
                    p.values.data(), detail::site_hint(p.ascending && merged), orders.back() + 1, 0, wanted,
                    nullptr, out, layout, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                    nullptr, nullptr, detail::fitting_threads()));
  const strides at = strides_of(layout, core.functions, p.values.size(), orders.size());
  for (const auto& s : p.strays)
    for (std::size_t f = 0; f < core.functions; ++f)
      for (std::size_t k = 0; k < orders.size(); ++k) {
        Real& result = out[f * at.function + s.index * at.site + k * at.derivative];
        result = detail::outside_value(core, s, f, orders[k], result);
      }
}

// The same into an array of the caller's, checked.
template <class Real>
void write(const char* function, const detail::spline_core<Real>& core,
           const detail::outside_rules<Real>& rules, const abscissae<Real>& sites, const derivatives& orders,
           std::span<Real> out, int64_t layout) {
  check_sites(function, sites);
  detail::check_output(function, "out", out.data(), out.size(),
                       core.functions * sites.size() * orders.orders().size());
  if (!sites.is_grid()) check_apart(function, out, sites.array(), "sites");
  interpolate(function, core, rules, sites, orders.orders(), out.data(), layout);
}

}  // namespace

derivatives::derivatives(std::initializer_list<int> orders) {
  int previous = -1;
  for (const int order : orders) {
    if (order <= previous || order > 15)
      detail::refuse("derivatives", "orders[" + std::to_string(count_) + ']', std::to_string(order),
                     "is " + std::to_string(order) + ", want ascending orders from 0 to 15");
    orders_[count_++] = previous = order;
  }
  if (count_ == 0) detail::refuse("derivatives", "orders", "0", "is empty");
}

template <class Real>
void basic_spline<Real>::evaluate(const abscissae<Real>& sites, const derivatives& orders,
                                  std::span<Real> out, result_order order) const {
  constexpr auto function = "spline::evaluate";
  const auto number = static_cast<std::size_t>(order);
  if (number >= std::size(order_rows))
    detail::refuse(function, "order", std::to_string(number),
                   "is " + std::to_string(number) + ", want a result_order");
  const order_row& row = order_rows[number];
  if (row.one_function && functions() != 1)
    detail::refuse(function, "order", std::to_string(functions()),
                   "is for one function, but there are " + std::to_string(functions()));
  write(function, *core_, outside_, sites, orders, out, row.hint);
}

template <class Real>
void basic_spline<Real>::operator()(const abscissae<Real>& sites, std::span<Real> out) const {
  write<Real>("spline::operator()", *core_, outside_, sites, {0}, out, order_rows[0].hint);
}

template <class Real>
Real basic_spline<Real>::operator()(Real site, int derivative) const {
  constexpr auto function = "spline::operator()";
  detail::check_one_function(function, functions());
  if (derivative < 0 || derivative > 15)
    detail::refuse(function, "derivative", std::to_string(derivative),
                   "is " + std::to_string(derivative) + ", want 0 to 15");
  Real result = 0;
  interpolate<Real>(function, *core_, outside_, std::span<const Real>(&site, 1), {&derivative, 1}, &result,
                    DF_FUNCTION_SITE_DERIVATIVE);
  return result;
}

template <class Real>
void basic_spline<Real>::cells(const abscissae<Real>& sites, std::span<std::int32_t> out) const {
  constexpr auto function = "spline::cells";
  check_sites(function, sites);
  detail::check_output(function, "out", out.data(), out.size(), sites.size());
  if (!sites.is_grid())
    detail::check_overlap(function, {"out", {out.data(), out.size()}, sizeof(std::int32_t)},
                          {"sites", {sites.array().data(), sites.size()}, sizeof(Real)}, false);
  if (sites.size() == 0) return;
  const detail::outside_rules<Real> carry_on{};
  const bool merged = merges(*core_, sites.size());
  const auto p = detail::prepare(*core_, carry_on, sites, {true, true});
  detail::check_fitting(function, detail::twin<Real>(tmk_df_kernel_dDFSearch1D, tmk_df_kernel_sDFSearch1D)(
                                      core_->task.get(), 0, static_cast<int64_t>(p.values.size()),
                                      p.values.data(), detail::site_hint(p.ascending && merged), nullptr,
                                      out.data(), nullptr, nullptr, detail::fitting_threads()));
  if (p.ascending && !std::isnan(p.values[0])) return;
  for (std::size_t i = 0; i < out.size(); ++i)
    if (std::isnan(p.values[i])) out[i] = -1;
}

template <class Real>
void basic_spline<Real>::cells(const abscissae<Real>& sites, std::span<std::int64_t> out) const {
  detail::check_output("spline::cells", "out", out.data(), out.size(), sites.size());
  std::vector<std::int32_t> narrow(out.size());
  cells(sites, std::span(narrow));
  std::copy(narrow.begin(), narrow.end(), out.begin());
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
