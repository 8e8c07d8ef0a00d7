// SPDX-License-Identifier: Apache-2.0
// What a spline is made of, checked once; and what a call brings.
#include <algorithm>
#include <limits>

#include "api/call/first_where.hpp"
#include "api/spline/core.hpp"

namespace tmk::detail {

namespace {

// "y[i]" of one function, "y(f, i)" of several.
template <class Real>
std::string place_in(const char* name, const function_set<Real>& y, std::size_t f, std::size_t i) {
  return y.functions == 1 ? place(name, i)
                          : std::string(name) + '(' + std::to_string(f) + ", " + std::to_string(i) + ')';
}

template <class Real>
void check_grid(const char* function, const uniform_grid& grid) {
  const Real first = static_cast<Real>(grid.first), last = static_cast<Real>(grid.last);
  const Real step = (last - first) / static_cast<Real>(grid.size - 1);
  if (!std::isfinite(first))
    refuse(function, "x.first", number(grid.first), "is " + number(grid.first) + ", want a finite number");
  if (!(first < first + step && last - step < last && std::isfinite(last - first)))
    refuse(function, "x.last", number(grid.last),
           "is " + number(grid.last) + ", want " + std::to_string(grid.size) + " different points from " +
               number(grid.first));
}

// Zero times anything else is no zero; in as many sums as two registers of 32 bytes hold.
template <class Real>
bool all_finite(const Real* values, std::size_t n) {
  constexpr std::size_t sums = 64 / sizeof(Real);
  Real sum[sums] = {};
  std::size_t i = 0;
  for (; i + sums <= n; i += sums)
    for (std::size_t k = 0; k < sums; ++k) sum[k] += values[i + k] * 0;
  for (; i < n; ++i) sum[0] += values[i] * 0;
  return std::all_of(sum, sum + sums, [](Real s) { return s == 0; });
}

template <class Real>
void check_array(const char* function, std::span<const Real> x) {
  const std::size_t n = x.size();
  if (x.data() == nullptr) refuse(function, "x", "null", "is null, want " + std::to_string(n) + " elements");
  const auto falls = [&](std::size_t i) { return !(x[i] < x[i + 1]); };
  const auto endless = [&](std::size_t i) { return !std::isfinite(x[i]); };
  // What ascends holds no NaN, and an infinity at the ends only.
  if (const std::size_t i = first_where<Real>(n - 1, falls);
      i != n - 1 && std::isfinite(x[i]) && std::isfinite(x[i + 1]))
    refuse(function, place("x", i + 1), number(x[i + 1]),
           "is " + number(x[i + 1]) + " after x[" + std::to_string(i) + "] = " + number(x[i]) +
               ", want strictly ascending numbers");
  else if (i != n - 1 || endless(0) || endless(n - 1)) {
    const std::size_t bad = first_where<Real>(n, endless);
    refuse(function, place("x", bad), number(x[bad]), "is " + number(x[bad]) + ", want a finite number");
  }
  if (!std::isfinite(x[n - 1] - x[0]))
    refuse(function, place("x", n - 1), number(x[n - 1]),
           "is " + number(x[n - 1]) + ", want a finite distance from x[0] = " + number(x[0]));
}

}  // namespace

template <class Real>
void check_points(const char* function, const abscissae<Real>& x, std::size_t least) {
  const std::string size = std::to_string(x.size());
  if (x.size() < least)
    refuse(function, "x", size, "has " + size + " points, want " + std::to_string(least) + " or more");
  if (x.size() > INT32_MAX - 1)
    refuse(function, "x", size, "has " + size + " points, want at most 2147483646");
  if (x.is_grid())
    check_grid<Real>(function, x.grid());
  else
    check_array(function, x.array());
}

template <class Real>
void check_functions(const char* function, const char* name, const function_set<Real>& y, std::size_t points,
                     std::size_t functions) {
  const auto mismatch = [&](const char* what, std::size_t has, std::size_t want) {
    refuse(function, name, std::to_string(has),
           "has " + std::to_string(has) + what + ", want " + std::to_string(want));
  };
  if (y.functions == 0 || y.functions > INT32_MAX)
    refuse(function, name, std::to_string(y.functions),
           "has " + std::to_string(y.functions) + " functions, want 1 to 2147483647");
  if (y.functions != functions) mismatch(" functions", y.functions, functions);
  if (y.points != points) mismatch(" points", y.points, points);
  if (y.data == nullptr)
    refuse(function, name, "null",
           "is null, want " + std::to_string(y.functions) + " by " + std::to_string(points));
  // Along the direction in which values are nearer to each other.
  const bool across = std::abs(y.function_stride) < std::abs(y.point_stride);
  const std::size_t lines = across ? points : y.functions, length = across ? y.functions : points;
  const auto stride = across ? y.function_stride : y.point_stride;
  const auto search = [&](std::size_t k, const auto& value) {
    const auto endless = [&](std::size_t i) {
      return !(std::abs(value(i)) <= std::numeric_limits<Real>::max());
    };
    const std::size_t i = first_where<Real>(length, endless);
    if (i != length)
      refuse(function, across ? place_in(name, y, i, k) : place_in(name, y, k, i), number(value(i)),
             "is " + number(value(i)) + ", want a finite number");
  };
  for (std::size_t k = 0; k < lines; ++k) {
    const Real* line = across ? &y.data[static_cast<std::ptrdiff_t>(k) * y.point_stride]
                              : &y.data[static_cast<std::ptrdiff_t>(k) * y.function_stride];
    if (stride == 1)
      search(k, [=](std::size_t i) { return line[i]; });
    else
      search(k, [=](std::size_t i) { return line[static_cast<std::ptrdiff_t>(i) * stride]; });
  }
}

template <class Real>
void check_periodic(const char* function, const function_set<Real>& y) {
  const std::size_t last = y.points - 1;
  for (std::size_t f = 0; f < y.functions; ++f)
    if (y(f, 0) != y(f, last))
      refuse(function, place_in("y", y, f, last), number(y(f, last)),
             "is " + number(y(f, last)) + ", want " + number(y(f, 0)) + " as " + place_in("y", y, f, 0) +
                 ", for the spline is periodic");
}

void check_one_function(const char* function, std::size_t functions) {
  if (functions != 1)
    refuse(function, "out", std::to_string(functions),
           "is missing, and there are " + std::to_string(functions) + " functions");
}

void check_side(const char* function, const char* name, side which) {
  const auto number = std::to_string(static_cast<int>(which));
  if (which != side::left && which != side::right)
    refuse(function, name, number, "is " + number + ", want side::left or side::right");
}

// Differences, reciprocal widths or their powers have left the range. In a cubic spline one such cell spoils
// others, so the cell to name is the one that asks for most, not the first that holds no number.
template <class Real>
void check_coefficients(const spline_core<Real>& core, const function_set<Real>& y) {
  const auto* c = core.coefficients.get();
  const std::size_t count = core.row * core.functions;
  if (all_finite(c, count)) return;
  const auto* const bad = std::find_if(c, c + count, [](Real v) { return !std::isfinite(v); });
  const std::size_t f = static_cast<std::size_t>(bad - c) / core.row;
  const auto x = [&](std::size_t i) { return static_cast<long double>(core.point(i)); };
  std::size_t cell = 0;
  long double most = -1;
  for (std::size_t i = 0; i + 1 < core.points; ++i) {
    const long double h = x(i + 1) - x(i), rise = std::abs(static_cast<long double>(y(f, i + 1)) - y(f, i));
    const long double size = std::max(1 / h, rise / std::pow(h, core.order - 1));
    if (size > most) most = size, cell = i;
  }
  const auto end = [&](std::size_t i) { return "x[" + std::to_string(i) + "] = " + number(core.point(i)); };
  refuse(core.name, place_in("y", y, f, cell + 1), number(y(f, cell + 1)),
         "is " + number(y(f, cell + 1)) + ": in the cell from " + end(cell) + " to " + end(cell + 1) +
             " coefficients leave the range of " + (sizeof(Real) == 8 ? "double" : "float"));
}

void check_output(const char* function, const char* name, const void* data, std::size_t size,
                  std::size_t want) {
  if (size != want)
    refuse(function, name, std::to_string(size),
           "has size " + std::to_string(size) + ", want " + std::to_string(want));
  if (data == nullptr && want != 0)
    refuse(function, name, "null", "is null, want " + std::to_string(want) + " elements");
}

template void check_points(const char*, const abscissae<double>&, std::size_t);
template void check_points(const char*, const abscissae<float>&, std::size_t);
template void check_functions(const char*, const char*, const function_set<double>&, std::size_t,
                              std::size_t);
template void check_functions(const char*, const char*, const function_set<float>&, std::size_t, std::size_t);
template void check_coefficients(const spline_core<double>&, const function_set<double>&);
template void check_coefficients(const spline_core<float>&, const function_set<float>&);
template void check_periodic(const char*, const function_set<double>&);
template void check_periodic(const char*, const function_set<float>&);

}  // namespace tmk::detail
