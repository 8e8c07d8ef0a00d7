// SPDX-License-Identifier: Apache-2.0
// Splines for the Python layer (tmk/interpolate.py), which shapes arrays and knows the names of SciPy.
#include "interpolate.hpp"

#include <array>
#include <tmk/scopes.hpp>
#include <tmk/spline.hpp>

#include "arrays.hpp"

namespace tmk::python {

namespace {

template <class Real>
using values = nb::ndarray<const Real, nb::ndim<1>, nb::c_contig, nb::device::cpu>;
template <class Real>
using functions =
    nb::ndarray<const Real, nb::ndim<2>, nb::device::cpu>;  // a function in each row, any strides

template <class Real>
std::span<const Real> span_of(const values<Real>& x) {
  return {x.data(), x.size()};
}

template <class Real>
function_set<Real> set_of(const functions<Real>& y) {
  return {y.data(), y.shape(0), y.shape(1), y.stride(0), y.stride(1)};
}

// An end's condition as the Python layer says it: none, or the order of the derivative that is given.
boundary end_of(const std::optional<std::pair<int, double>>& end) {
  if (!end) return {};
  return end->first == 1 ? boundary::first_derivative(end->second) : boundary::second_derivative(end->second);
}

template <class Real>
basic_spline<Real> make(const std::string& kind, const values<Real>& points, const functions<Real>& y,
                        const std::optional<std::pair<int, double>>& left,
                        const std::optional<std::pair<int, double>>& right,
                        const std::optional<functions<Real>>& slopes) {
  const abscissae<Real> x(span_of(points));
  const function_set<Real> f = set_of(y);
  const boundary a = end_of(left), b = end_of(right);
  if (kind == "linear") return spline_families::linear(x, f);
  if (kind == "step_left") return spline_families::step(x, f, side::left);
  if (kind == "step_right") return spline_families::step(x, f, side::right);
  if (kind == "quadratic") return spline_families::quadratic(x, f, a);
  if (kind == "subbotin") return spline_families::subbotin(x, f, a, b);
  if (kind == "natural") return spline_families::natural(x, f, a, b);
  if (kind == "not_a_knot") return spline_families::not_a_knot(x, f);
  if (kind == "periodic") return spline_families::periodic(x, f);
  if (kind == "hermite" && slopes) return spline_families::hermite(x, f, set_of(*slopes));
  if (kind == "bessel") return spline_families::bessel(x, f, a, b);
  if (kind == "akima") return spline_families::akima(x, f, a, b);
  if (kind == "hyman") return spline_families::hyman(x, f, a, b);
  throw nb::value_error("no such family of splines");
}

template <class Real>
using output = nb::ndarray<Real, nb::ndim<1>, nb::c_contig, nb::device::cpu>;

// One derivative at sites; all functions of a site lie together.
template <class Real>
void evaluate(const basic_spline<Real>& s, const values<Real>& sites, int order, const output<Real>& out,
              int threads) {
  const nb::gil_scoped_release release;
  const parallel_scope scope(threads);
  s.evaluate(span_of(sites), derivatives{order}, std::span<Real>(out.data(), out.size()),
             layout::site_function_derivative);
}

template <class Real>
void add_spline(nb::module_& m, const char* name) {
  using spline = basic_spline<Real>;
  nb::class_<spline> c(m, name);
  c.def_static("make", make<Real>, nb::arg(), nb::arg(), nb::arg(), nb::arg().none(), nb::arg().none(),
               nb::arg().none());
  c.def("evaluate", evaluate<Real>);
  c.def("integrate", [](const spline& s, const values<Real>& lo, const values<Real>& hi) {
    std::vector<Real> r(s.functions() * lo.size());
    s.integrate(span_of(lo), span_of(hi), std::span<Real>(r));
    return array_of(std::move(r), {s.functions(), lo.size()});
  });
  c.def("coefficients", [](const spline& s) {
    const std::span<const Real> all = s.coefficients();
    return array_of(std::vector<Real>(all.begin(), all.end()));
  });
  c.def("extrapolate", [](spline& s, bool right, int how) {
    s.extrapolate(right ? side::right : side::left, static_cast<extrapolation>(how));
  });
}

}  // namespace

void add_interpolate(nb::module_& m) {
  add_spline<double>(m, "Spline64");
  add_spline<float>(m, "Spline32");
}

}  // namespace tmk::python
