// SPDX-License-Identifier: Apache-2.0
// Values, derivatives and cells.
#include <algorithm>
#include <iterator>

#include "api/spline/core.hpp"

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

// Sites as the C interface takes them, checked.
template <class Real>
struct c_sites {
  Real ends[2];
  const Real* values;
  int64_t count, hint;

  c_sites(const char* function, const abscissae<Real>& sites)
      : ends{static_cast<Real>(sites.grid().first), static_cast<Real>(sites.grid().last)},
        values(sites.is_grid() ? ends : sites.array().data()),
        count(static_cast<int64_t>(sites.size())),
        hint(sites.is_grid() ? DF_SITES_UNIFORM : DF_SITES_UNKNOWN) {
    if (!sites.is_grid()) detail::check_array(function, "sites", sites.array(), sites.size());
    if (sites.is_grid() && count > INT32_MAX)
      detail::refuse(function, "sites", std::to_string(count),
                     "has " + std::to_string(count) + " points, want at most 2147483647");
  }
  c_sites(const c_sites&) = delete;
};

template <class Real>
void interpolate(const char* function, const detail::spline_core<Real>& core,
                 const detail::outside_rules<Real>& rules, const abscissae<Real>& sites,
                 std::span<const std::int32_t> orders, std::span<Real> out, int64_t layout) {
  const c_sites<Real> at(function, sites);
  detail::check_array(function, "out", out, core.functions() * sites.size() * orders.size());
  if (!sites.is_grid()) detail::check_apart(function, "out", out, "sites", sites.array());
  detail::check_status(
      function, detail::textbook<Real>::evaluate(core.handle.get(), detail::c_rules(rules).data(), at.count,
                                                 at.values, at.hint, static_cast<int64_t>(orders.size()),
                                                 orders.data(), out.data(), layout, detail::call_threads()));
}

}  // namespace

derivatives::derivatives(std::initializer_list<int> orders) {
  int previous = -1;
  for (const int order : orders) {
    if (order <= previous || order > 15)
      detail::refuse_value("derivatives", detail::place("orders", count_), detail::number(order),
                           "ascending orders from 0 to 15");
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
    detail::refuse_value(function, "order", detail::number(number), "a result_order");
  const order_row& row = order_rows[number];
  if (row.one_function && functions() != 1)
    detail::refuse(function, "order", std::to_string(functions()),
                   "is for one function, but there are " + std::to_string(functions()));
  interpolate(function, *core_, outside_, sites, orders.orders(), out, row.hint);
}

template <class Real>
void basic_spline<Real>::operator()(const abscissae<Real>& sites, std::span<Real> out) const {
  constexpr std::int32_t value = 0;
  interpolate("spline::operator()", *core_, outside_, sites, {&value, 1}, out, order_rows[0].hint);
}

template <class Real>
Real basic_spline<Real>::operator()(Real site, int derivative) const {
  constexpr auto function = "spline::operator()";
  detail::check_one_function(function, functions());
  detail::refuse_unless_in(function, "derivative", derivative, 0, 15);
  Real result = 0;
  detail::check_status(
      function, detail::textbook<Real>::evaluate(core_->handle.get(), detail::c_rules(outside_).data(), 1,
                                                 &site, DF_SITES_UNKNOWN, 1, &derivative, &result,
                                                 DF_FUNCTION_SITE_DERIVATIVE, detail::call_threads()));
  return result;
}

template <class Real>
void basic_spline<Real>::cells(const abscissae<Real>& sites, std::span<std::int32_t> out) const {
  constexpr auto function = "spline::cells";
  const c_sites<Real> at(function, sites);
  detail::check_array(function, "out", out, sites.size());
  if (!sites.is_grid()) detail::check_apart(function, "out", out, "sites", sites.array());
  detail::check_status(function, detail::textbook<Real>::cells(core_->handle.get(), at.count, at.values,
                                                               at.hint, out.data(), detail::call_threads()));
}

template <class Real>
void basic_spline<Real>::cells(const abscissae<Real>& sites, std::span<std::int64_t> out) const {
  detail::check_array("spline::cells", "out", out, sites.size());
  std::vector<std::int32_t> narrow(out.size());
  cells(sites, std::span(narrow));
  std::copy(narrow.begin(), narrow.end(), out.begin());
}

template class basic_spline<double>;
template class basic_spline<float>;

}  // namespace tmk
