// SPDX-License-Identifier: Apache-2.0
// Values, derivatives and cells: kernels answer inside the partition, the rules of the sides outside it.
#include "fitting/textbook/evaluate.hpp"

#include <cmath>

#include "platform/checks.hpp"

namespace tmk::fitting::textbook {

namespace {

// Where the results of a site are.
struct result_strides {
  size_t function, site, derivative;
};
result_strides strides_of(int64_t hint, size_t functions, size_t sites, size_t orders) {
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

// Whether ascending sites are to be merged with the points: with fewer than one site to four points a search
// for each site costs no more, and on even points it never does.
template <class Real>
bool merges(const spline<Real>& s, size_t sites) {
  return !s.even && sites >= s.points / 4;
}

int32_t check_orders(int64_t count, const int32_t* orders) {
  if (count < 1 || count > most_order + 1 || orders == nullptr) return TMK_DF_BAD_ORDERS;
  for (int64_t k = 0; k < count; ++k)
    if (orders[k] < 0 || orders[k] > most_order || (k > 0 && orders[k] <= orders[k - 1]))
      return TMK_DF_BAD_ORDERS;
  return 0;
}

int32_t check_sites(const void* spline, int64_t count, const void* sites, const void* result) {
  return first_status({{spline == nullptr, DF_STATUS_NULL_TASK},
                       {count < 0 || (count > 0 && sites == nullptr), TMK_DF_BAD_SITES},
                       {count > 0 && result == nullptr, DF_STATUS_NULL_RESULT}});
}

template <class Real>
void find_cells(const spline<Real>& s, const given_sites<Real>& sites, std::span<int32_t> cells,
                const ThreadingService* threading) {
  const bool merged = merges(s, sites.count);
  const prepared_sites<Real> p = prepare<Real>(s, polynomials<Real>, sites, {true, true});
  require(by_precision<Real>(tmk_df_kernel_dDFSearch1D, tmk_df_kernel_sDFSearch1D)(
      s.task.get(), 0, static_cast<int64_t>(p.values.size()), p.values.data(),
      site_hint(p.ascending && merged), nullptr, cells.data(), nullptr, nullptr, threading));
  if (p.ascending && !std::isnan(p.values[0])) return;
  for (size_t i = 0; i < cells.size(); ++i)
    if (std::isnan(p.values[i])) cells[i] = -1;
}

}  // namespace

template <class Real>
void interpolate(const spline<Real>& s, outside_rules<Real> rules, const given_sites<Real>& sites,
                 std::span<const int32_t> orders, Real* result, int64_t layout,
                 const ThreadingService* threading) {
  int32_t wanted[most_order + 1] = {};
  for (const int32_t k : orders) wanted[k] = 1;
  const bool merged = merges(s, sites.count);
  // Below the polynomials' degree every result depends on the site, so that a NaN spreads by itself.
  const bool nan_spreads = orders.back() < static_cast<int32_t>(s.order) - 1;
  const prepared_sites<Real> p = prepare(s, rules, sites, {nan_spreads, merged});
  require(by_precision<Real>(tmk_df_kernel_dDFInterpolate1D, tmk_df_kernel_sDFInterpolate1D)(
      s.task.get(), DF_INTERPOLATE_VALUES, 0, static_cast<int64_t>(p.values.size()), p.values.data(),
      site_hint(p.ascending && merged), orders.back() + 1, 0, wanted, nullptr, result, layout, nullptr,
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, threading));
  const result_strides at = strides_of(layout, s.functions, p.values.size(), orders.size());
  for (const stray_site<Real>& stray : p.strays)
    for (size_t f = 0; f < s.functions; ++f)
      for (size_t k = 0; k < orders.size(); ++k) {
        Real& value = result[f * at.function + stray.index * at.site + k * at.derivative];
        value = outside_value(s, stray, f, orders[k], value);
      }
}

template void interpolate(const spline<double>&, outside_rules<double>, const given_sites<double>&,
                          std::span<const int32_t>, double*, int64_t, const ThreadingService*);
template void interpolate(const spline<float>&, outside_rules<float>, const given_sites<float>&,
                          std::span<const int32_t>, float*, int64_t, const ThreadingService*);

}  // namespace tmk::fitting::textbook

using namespace tmk::fitting::textbook;

#define TMK_DF_TEXTBOOK(letter, Real)                                                                        \
  int32_t tmk_df_textbook_##letter##evaluate(                                                                \
      const DF##letter##Spline* spline, const DF##letter##Rule* outside, int64_t nsite, const Real* site,    \
      int64_t site_hint, int64_t order_count, const int32_t* orders, Real* result, int64_t rhint,            \
      const ThreadingService* threading) {                                                                   \
    if (const int32_t bad = check_sites(spline, nsite, site, result); bad != 0) return bad;                  \
    if (const int32_t bad = check_orders(order_count, orders); bad != 0) return bad;                         \
    return tmk::guarded(DF_STATUS_NO_MEMORY, [&] {                                                           \
      const auto rules = rules_of<Real>(outside);                                                            \
      if (nsite != 0)                                                                                        \
        interpolate<Real>(*spline, rules, {site, static_cast<size_t>(nsite), site_hint == DF_SITES_UNIFORM}, \
                          {orders, static_cast<size_t>(order_count)}, result, rhint, threading);             \
      return 0;                                                                                              \
    });                                                                                                      \
  }                                                                                                          \
  int32_t tmk_df_textbook_##letter##cells(const DF##letter##Spline* spline, int64_t nsite, const Real* site, \
                                          int64_t site_hint, int32_t* cell,                                  \
                                          const ThreadingService* threading) {                               \
    if (const int32_t bad = check_sites(spline, nsite, site, cell); bad != 0) return bad;                    \
    const auto count = static_cast<size_t>(nsite);                                                           \
    return tmk::guarded(DF_STATUS_NO_MEMORY, [&] {                                                           \
      if (count != 0)                                                                                        \
        find_cells<Real>(*spline, {site, count, site_hint == DF_SITES_UNIFORM}, {cell, count}, threading);   \
      return 0;                                                                                              \
    });                                                                                                      \
  }
TMK_DF_TEXTBOOK(d, double)
TMK_DF_TEXTBOOK(s, float)
