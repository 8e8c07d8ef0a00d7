// SPDX-License-Identifier: Apache-2.0
#include "splines_peers.hpp"

#include <gsl/gsl_spline.h>
#include <libalglib/interpolation.h>

#include <boost/math/interpolators/cardinal_cubic_b_spline.hpp>
#include <boost/math/interpolators/makima.hpp>
#include <boost/math/interpolators/pchip.hpp>
#include <memory>
#include <optional>

namespace tmk::bench {
namespace {

using values = std::vector<double>;

template <class At>
void each(const values& sites, double* results, At at) {
  for (const double t : sites) *results++ = at(t);
}

peer_spline of_gsl(const char* name, const gsl_interp_type* type, size_t n) {
  const std::shared_ptr<gsl_spline> s(gsl_spline_alloc(type, n), gsl_spline_free);
  const std::shared_ptr<gsl_interp_accel> a(gsl_interp_accel_alloc(), gsl_interp_accel_free);
  return {name,
          [s](const values& x, const values& y) { gsl_spline_init(s.get(), x.data(), y.data(), x.size()); },
          [s, a](const values& sites, double* r) {
            each(sites, r, [&](double t) { return gsl_spline_eval(s.get(), t, a.get()); });
          },
          [s, a](const values& sites, double* r) {
            for (const double t : sites) {
              *r++ = gsl_spline_eval(s.get(), t, a.get());
              *r++ = gsl_spline_eval_deriv(s.get(), t, a.get());
              *r++ = gsl_spline_eval_deriv2(s.get(), t, a.get());
            }
          },
          [s, a](double from, double to) { return gsl_spline_eval_integ(s.get(), from, to, a.get()); }};
}

template <class Build>
peer_spline of_alglib(Build build) {
  const auto s = std::make_shared<alglib::spline1dinterpolant>();
  return {"ALGLIB",
          [s, build](const values& x, const values& y) {
            alglib::real_1d_array ax, ay;
            ax.setcontent(static_cast<alglib::ae_int_t>(x.size()), x.data());
            ay.setcontent(static_cast<alglib::ae_int_t>(y.size()), y.data());
            build(ax, ay, *s);
          },
          [s](const values& sites, double* r) {
            each(sites, r, [&](double t) { return alglib::spline1dcalc(*s, t); });
          },
          [s](const values& sites, double* r) {
            for (const double t : sites) {
              alglib::spline1ddiff(*s, t, r[0], r[1], r[2]);
              r += 3;
            }
          },
          [s](double from, double to) {
            return alglib::spline1dintegrate(*s, to) - alglib::spline1dintegrate(*s, from);
          }};
}

template <class Spline>
peer_spline of_boost(const char* name) {
  const auto s = std::make_shared<std::optional<Spline>>();
  return {name, [s](const values& x, const values& y) { s->emplace(values(x), values(y)); },
          [s](const values& sites, double* r) { each(sites, r, [&](double t) { return (**s)(t); }); },
          nullptr, nullptr};
}

peer_spline of_boost_cardinal() {
  using spline = boost::math::interpolators::cardinal_cubic_b_spline<double>;
  const auto s = std::make_shared<std::optional<spline>>();
  return {"Boost B-spline",
          [s](const values& x, const values& y) { s->emplace(y.data(), y.size(), x[0], x[1] - x[0]); },
          [s](const values& sites, double* r) { each(sites, r, [&](double t) { return (**s)(t); }); },
          [s](const values& sites, double* r) {
            for (const double t : sites) {
              *r++ = (**s)(t);
              *r++ = (**s).prime(t);
              *r++ = (**s).double_prime(t);
            }
          },
          nullptr};
}

}  // namespace

std::vector<peer_spline> peers_of(family wanted, size_t n, bool uniform) {
  using boost::math::interpolators::makima, boost::math::interpolators::pchip;
  std::vector<peer_spline> peers;
  switch (wanted) {
    case family::natural:
      peers.push_back(of_gsl("GSL", gsl_interp_cspline, n));
      peers.push_back(of_alglib([](const auto& x, const auto& y, auto& s) {
        alglib::spline1dbuildcubic(x, y, x.length(), 2, 0.0, 2, 0.0, s);  // second derivative 0 at both ends
      }));
      if (uniform) peers.push_back(of_boost_cardinal());
      break;
    case family::akima:
      peers.push_back(of_gsl("GSL", gsl_interp_akima, n));
      peers.push_back(of_alglib(
          [](const auto& x, const auto& y, auto& s) { alglib::spline1dbuildakima(x, y, x.length(), s); }));
      peers.push_back(of_boost<makima<values>>("Boost makima"));
      break;
    case family::monotone:
      peers.push_back(of_gsl("GSL Steffen", gsl_interp_steffen, n));
      peers.push_back(of_boost<pchip<values>>("Boost pchip"));
      break;
  }
  return peers;
}

}  // namespace tmk::bench
