// SPDX-License-Identifier: Apache-2.0
// Each family of splines through the same points, and what one can compute with them.
#include <cstdio>
#include <tmk/spline.hpp>
#include <vector>

namespace {

void show(const char* name, const tmk::spline& s) {
  std::vector<double> values(9), slopes(2);
  s(tmk::uniform(0, 8, values.size()), values);
  s.evaluate(std::vector{0.0, 8.0}, {1}, slopes);
  std::printf("%-24s", name);
  for (const double v : values) std::printf("%7.3f", v);
  std::printf("   slopes at the ends %6.2f %6.2f, integral %6.3f\n", slopes[0], slopes[1], s.integrate(0, 8));
}

}  // namespace

int main() {
  const std::vector<double> x{0, 1, 2.5, 4, 5, 8}, y{1, 2, 2, 0, 1, 1};
  using tmk::boundary, tmk::spline;
  show("linear", spline::linear(x, y));
  show("step", spline::step(x, y));
  show("quadratic", spline::quadratic(x, y));
  show("subbotin", spline::subbotin(x, y));
  show("natural", spline::natural(x, y));
  show("natural, clamped", spline::natural(x, y, boundary::first_derivative(0)));
  show("natural, mixed",
       spline::natural(x, y, boundary::first_derivative(1), boundary::second_derivative(-1)));
  show("not_a_knot", spline::not_a_knot(x, y));
  show("periodic", spline::periodic(x, y));
  show("hermite", spline::hermite(x, y, std::vector<double>{1, 0, 0, 0, 0, 0}));
  show("bessel", spline::bessel(x, y));
  show("akima", spline::akima(x, y));
  show("akima, periodic", spline::akima(x, y, boundary::periodic()));
  show("hyman", spline::hyman(x, y));

  // Two functions over one grid, in single precision; each row of the result is a site.
  const std::vector<float> both{0, 1, 4, 9, 16, 0, 1, 8, 27, 64}, sites{0.5F, 3.5F};
  const tmk::matrix_view<const float> Y(both.data(), 2, 5);
  const auto m = spline::not_a_knot(tmk::uniform(0, 4, 5), tmk::rows(Y));
  std::vector<float> out(2 * 2 * 2);
  m.evaluate(sites, tmk::derivatives{0, 1}, out, tmk::layout::site_function_derivative);
  for (std::size_t i = 0; i < sites.size(); ++i)
    std::printf("at %g: t^2 %g, slope %g; t^3 %g, slope %g\n", sites[i], out[4 * i], out[4 * i + 1],
                out[4 * i + 2], out[4 * i + 3]);

  // Outside the points.
  auto s = spline::akima(x, y);
  s.extrapolate(tmk::side::left, tmk::extrapolation::constant);
  s.extrapolate(tmk::side::right, [](double t) { return 8 / t; });
  std::printf("outside: %g and %g\n", s(-1), s(16));

  try {
    show("points in disorder", spline::linear(std::vector<double>{0, 2, 1}, std::vector<double>{0, 0, 0}));
  } catch (const tmk::error& e) {
    std::puts(e.what());
  }
}
