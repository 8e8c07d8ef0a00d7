// SPDX-License-Identifier: Apache-2.0
#include "fitting/textbook/outside.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tmk::fitting::textbook {

namespace {

// Where in the partition the site is found whole periods away, and how many.
template <class Real>
std::pair<Real, Real> wrap(const spline<Real>& s, Real site) {
  const Real period = s.last - s.first;
  const Real periods = std::floor((site - s.first) / period);
  return {std::clamp(site - periods * period, s.first, s.last), periods};
}

constexpr bool needs_terms(int32_t rule) {
  return rule == TMK_DF_OUTSIDE_CONSTANT || rule == TMK_DF_OUTSIDE_LINEAR || rule == TMK_DF_OUTSIDE_PERIODIC;
}

}  // namespace

template <class Real>
outside_rules<Real> rules_of(outside_rules<Real> outside) {
  if (outside == nullptr) return polynomials<Real>;
  for (const auto& r : std::span(outside, 2))
    if (r.rule < TMK_DF_OUTSIDE_POLYNOMIAL || r.rule > TMK_DF_OUTSIDE_FUNCTION ||
        (needs_terms(r.rule) && r.terms == nullptr) ||
        (r.rule == TMK_DF_OUTSIDE_FUNCTION && r.function == nullptr))
      throw failed{TMK_DF_BAD_RULE};
  return outside;
}

template <class Real>
prepared_sites<Real> prepare(const spline<Real>& s, outside_rules<Real> rules, const given_sites<Real>& sites,
                             call_traits traits) {
  prepared_sites<Real> p{};
  if (sites.even) p.own = expand(sites.values[0], sites.values[1], sites.count);
  p.values = sites.even ? std::span<const Real>(p.own) : std::span(sites.values, sites.count);
  const bool free = traits.nan_spreads && rules[0].rule == TMK_DF_OUTSIDE_POLYNOMIAL &&
                    rules[1].rule == TMK_DF_OUTSIDE_POLYNOMIAL;
  if (free && !traits.order_helps) return p;
  site_order order = order_of(p.values, s.first, s.last, !free);
  if (!free && !order.inside) {
    if (!sites.even) p.own.assign(p.values.begin(), p.values.end());
    for (size_t i = 0; i < p.own.size(); ++i) {
      Real& t = p.own[i];
      if (t >= s.first && t <= s.last) continue;
      const bool right = t > s.last;
      const auto* rule = &rules[right ? 1 : 0];
      const bool periodic = rule->rule == TMK_DF_OUTSIDE_PERIODIC;
      if (std::isnan(t) || (periodic && std::isinf(t))) {
        p.strays.push_back({i, t, nullptr, false, 0});
        t = s.first;
      } else if (periodic) {
        const auto [moved, periods] = wrap(s, t);
        p.strays.push_back({i, t, rule, right, periods});
        t = moved;
      } else if (rule->rule != TMK_DF_OUTSIDE_POLYNOMIAL) {
        p.strays.push_back({i, t, rule, right, 0});
        t = right ? s.last : s.first;
      }
    }
    p.values = p.own;
    order = order_of(p.values, s.first, s.last, false);
  }
  p.ascending = order.ascending;
  return p;
}

template <class Real>
Real outside_value(const spline<Real>& s, const stray_site<Real>& stray, size_t f, int order, Real at_place) {
  constexpr Real nan = std::numeric_limits<Real>::quiet_NaN();
  if (stray.rule == nullptr) return nan;
  const Real* const terms = stray.rule->terms;
  const Real distance = stray.site - (stray.right ? s.last : s.first);
  switch (stray.rule->rule) {
    case TMK_DF_OUTSIDE_FUNCTION:
      return stray.rule->function(stray.site, static_cast<int64_t>(f), order, stray.rule->parameter);
    case TMK_DF_OUTSIDE_CONSTANT:
      return order == -1 ? distance * terms[2 * f] : order == 0 ? at_place : Real(0);
    case TMK_DF_OUTSIDE_LINEAR:
      return order == -1  ? distance * (terms[2 * f] + distance * terms[2 * f + 1] / 2)
             : order == 0 ? at_place + distance * terms[2 * f + 1]
             : order == 1 ? at_place
                          : Real(0);
    case TMK_DF_OUTSIDE_PERIODIC:
      return order == -1 ? stray.periods * terms[2 * f] : at_place;
    default:
      return nan;
  }
}

#define TMK_INSTANTIATE(Real)                                                                               \
  template outside_rules<Real> rules_of<Real>(outside_rules<Real>);                                         \
  template prepared_sites<Real> prepare(const spline<Real>&, outside_rules<Real>, const given_sites<Real>&, \
                                        call_traits);                                                       \
  template Real outside_value(const spline<Real>&, const stray_site<Real>&, size_t, int, Real);
TMK_INSTANTIATE(double)
TMK_INSTANTIATE(float)
#undef TMK_INSTANTIATE

}  // namespace tmk::fitting::textbook
