// SPDX-License-Identifier: Apache-2.0
#include "api/spline/outside.hpp"

#include <algorithm>
#include <limits>

namespace tmk::detail {

namespace {

template <class Real>
bool carried_on(const outside_rules<Real>& rules) {
  return rules[0].how == extrapolation::polynomial && !rules[0].function &&
         rules[1].how == extrapolation::polynomial && !rules[1].function;
}

// Where in [first, last] the site is found whole periods away, and how many.
template <class Real>
std::pair<Real, Real> wrap(const spline_core<Real>& core, Real site) {
  const Real period = core.last - core.first;
  const Real periods = std::floor((site - core.first) / period);
  return {std::clamp(site - periods * period, core.first, core.last), periods};
}

}  // namespace

template <class Real>
prepared_sites<Real> prepare(const spline_core<Real>& core, const outside_rules<Real>& rules,
                             const abscissae<Real>& sites, call_traits traits) {
  prepared_sites<Real> p{};
  if (sites.is_grid()) p.own = expand<Real>(sites.grid());
  p.values = sites.is_grid() ? std::span<const Real>(p.own) : sites.array();
  const bool free = traits.nan_spreads && carried_on(rules);
  if (free && !traits.order_helps) return p;
  site_order order = look_at(p.values, core.first, core.last, !free);
  if (!free && !order.inside) {
    if (!sites.is_grid()) p.own.assign(p.values.begin(), p.values.end());
    for (std::size_t i = 0; i < p.own.size(); ++i) {
      Real& t = p.own[i];
      if (t >= core.first && t <= core.last) continue;
      const bool right = t > core.last;
      const auto* rule = &rules[right ? 1 : 0];
      const bool periodic = rule->how == extrapolation::periodic && !rule->function;
      if (std::isnan(t) || (periodic && std::isinf(t))) {
        p.strays.push_back({i, t, nullptr, false, 0});
        t = core.first;
      } else if (periodic) {
        const auto [moved, periods] = wrap(core, t);
        p.strays.push_back({i, t, rule, right, periods});
        t = moved;
      } else if (rule->how != extrapolation::polynomial || rule->function) {
        p.strays.push_back({i, t, rule, right, 0});
        t = right ? core.last : core.first;
      }
    }
    p.values = p.own;
    order = look_at(p.values, core.first, core.last, false);
  }
  p.ascending = order.ascending;
  return p;
}

template <class Real>
Real outside_value(const spline_core<Real>& core, const stray_site<Real>& s, std::size_t f, int order,
                   Real at_place) {
  constexpr Real nan = std::numeric_limits<Real>::quiet_NaN();
  if (s.rule == nullptr) return nan;
  if (s.rule->function) return s.rule->function(s.site, f, order);
  const auto& terms = s.rule->terms;
  const Real distance = s.site - (s.right ? core.last : core.first);
  switch (s.rule->how) {
    case extrapolation::constant:
      return order == -1 ? distance * terms[2 * f] : order == 0 ? at_place : Real(0);
    case extrapolation::linear:
      return order == -1  ? distance * (terms[2 * f] + distance * terms[2 * f + 1] / 2)
             : order == 0 ? at_place + distance * terms[2 * f + 1]
             : order == 1 ? at_place
                          : Real(0);
    case extrapolation::periodic:
      return order == -1 ? s.periods * terms[2 * f] : at_place;
    case extrapolation::nan:
    case extrapolation::polynomial:
      break;
  }
  return nan;
}

template prepared_sites<double> prepare(const spline_core<double>&, const outside_rules<double>&,
                                        const abscissae<double>&, call_traits);
template prepared_sites<float> prepare(const spline_core<float>&, const outside_rules<float>&,
                                       const abscissae<float>&, call_traits);
template double outside_value(const spline_core<double>&, const stray_site<double>&, std::size_t, int,
                              double);
template float outside_value(const spline_core<float>&, const stray_site<float>&, std::size_t, int, float);

}  // namespace tmk::detail
