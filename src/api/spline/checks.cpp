// SPDX-License-Identifier: Apache-2.0
// The arguments of a spline, checked once, and those of its calls.
#include <algorithm>
#include <cmath>
#include <limits>

#include "api/spline/core.hpp"
#include "platform/first_where.hpp"

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
  if (!std::isfinite(first)) refuse_value(function, "x.first", number(grid.first), "a finite number");
  if (!(first < first + step && last - step < last && std::isfinite(last - first)))
    refuse_value(function, "x.last", number(grid.last),
                 std::to_string(grid.size) + " different points from " + number(grid.first));
}

// A number times 0 is 0, and an infinity or NaN times 0 is NaN. There are as many sums as fill two registers
// of 32 bytes.
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
  check_data(function, {"x", {x.data(), n}, sizeof(Real)});
  const auto falls = [&](std::size_t i) { return !(x[i] < x[i + 1]); };
  const auto endless = [&](std::size_t i) { return !std::isfinite(x[i]); };
  // An ascending array has no NaN, and infinities at its ends only.
  if (const std::size_t i = first_where<Real>(n - 1, falls);
      i != n - 1 && std::isfinite(x[i]) && std::isfinite(x[i + 1]))
    refuse(function, place("x", i + 1), number(x[i + 1]),
           "is " + number(x[i + 1]) + " after x[" + std::to_string(i) + "] = " + number(x[i]) +
               ", want strictly ascending numbers");
  else if (i != n - 1 || endless(0) || endless(n - 1)) {
    const std::size_t bad = first_where<Real>(n, endless);
    refuse_value(function, place("x", bad), number(x[bad]), "a finite number");
  }
  if (!std::isfinite(x[n - 1] - x[0]))
    refuse_value(function, place("x", n - 1), number(x[n - 1]),
                 "a finite distance from x[0] = " + number(x[0]));
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
  // Along the direction with the smaller stride.
  const bool across = std::abs(y.function_stride) < std::abs(y.point_stride);
  const std::size_t lines = across ? points : y.functions, length = across ? y.functions : points;
  const auto stride = across ? y.function_stride : y.point_stride;
  const auto search = [&](std::size_t k, const auto& value) {
    const auto endless = [&](std::size_t i) {
      return !(std::abs(value(i)) <= std::numeric_limits<Real>::max());
    };
    const std::size_t i = first_where<Real>(length, endless);
    if (i != length)
      refuse_value(function, across ? place_in(name, y, i, k) : place_in(name, y, k, i), number(value(i)),
                   "a finite number");
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
void check_conditions(const char* function, family kind, std::size_t points, const boundary& left,
                      const boundary& right) {
  using condition = boundary::condition;
  for (const auto& [argument, b] : {std::pair("left", left), std::pair("right", right)}) {
    const auto code = std::to_string(static_cast<int>(b.what));
    if (b.what < condition::usual || b.what > condition::periodic)
      refuse(function, argument, code, "holds condition " + code + ", want a boundary::condition");
    if (!std::isfinite(static_cast<Real>(b.value)))
      refuse(function, argument, number(b.value), "holds " + number(b.value) + ", want a finite number");
  }
  const auto both_ends = [](condition what) {
    return what == condition::not_a_knot || what == condition::periodic;
  };
  const bool both = both_ends(left.what) || both_ends(right.what);
  const std::string count = std::to_string(points);
  const struct {
    bool holds;
    const char* argument;
    std::string value;
    std::string complaint;
  } rows[] = {
      {both && left.what != right.what, "right", "",
       "is not the condition of argument left, and not_a_knot and periodic hold at both ends or at none"},
      {kind == family::quadratic && left.what != condition::usual && left.what != condition::first, "left",
       "", "is not a first derivative, the one condition that the family has"},
      {kind == family::subbotin && both, "left", "",
       "is neither a first nor a second derivative, the conditions that the family has"},
      {both && points < 3, "x", count, "has " + count + " points, want 3 or more"},
  };
  for (const auto& row : rows)
    if (row.holds) refuse(function, row.argument, row.value, row.complaint);
}

template <class Real>
void check_periodic(const char* function, const function_set<Real>& y) {
  const std::size_t last = y.points - 1;
  for (std::size_t f = 0; f < y.functions; ++f)
    if (y(f, 0) != y(f, last))
      refuse_value(function, place_in("y", y, f, last), number(y(f, last)),
                   number(y(f, 0)) + " as " + place_in("y", y, f, 0) + ", for the spline is periodic");
}

void check_one_function(const char* function, std::size_t functions) {
  if (functions != 1)
    refuse(function, "out", std::to_string(functions),
           "is missing, and there are " + std::to_string(functions) + " functions");
}

void check_side(const char* function, const char* name, side which) {
  const auto number = std::to_string(static_cast<int>(which));
  if (which != side::left && which != side::right)
    refuse_value(function, name, number, "side::left or side::right");
}

// Differences, reciprocal widths or their powers have left the range. In a cubic spline one such cell makes
// others infinite too, so the cell to name is the one with the largest terms, not the first one that is not
// finite.
template <class Real>
void check_coefficients(const spline_core<Real>& core, const abscissae<Real>& x,
                        const function_set<Real>& y) {
  const auto& p = core.properties;
  const auto row = static_cast<std::size_t>(p.row), n = static_cast<std::size_t>(p.nx);
  const Real* const c = p.coefficients;
  const std::size_t count = row * core.functions();
  if (all_finite(c, count)) return;
  const auto* const bad = std::find_if(c, c + count, [](Real v) { return !std::isfinite(v); });
  const std::size_t f = static_cast<std::size_t>(bad - c) / row;
  const auto point = [&](std::size_t i) {
    if (!x.is_grid()) return x.array()[i];
    return p.first + static_cast<Real>(i) * ((p.last - p.first) / static_cast<Real>(n - 1));
  };
  const auto widened = [&](std::size_t i) { return static_cast<long double>(point(i)); };
  std::size_t cell = 0;
  long double most = -1;
  for (std::size_t i = 0; i + 1 < n; ++i) {
    const long double h = widened(i + 1) - widened(i);
    const long double rise = std::abs(static_cast<long double>(y(f, i + 1)) - y(f, i));
    const long double size = std::max(1 / h, rise / std::pow(h, static_cast<int>(p.order) - 1));
    if (size > most) most = size, cell = i;
  }
  const auto end = [&](std::size_t i) { return "x[" + std::to_string(i) + "] = " + number(point(i)); };
  refuse(core.name, place_in("y", y, f, cell + 1), number(y(f, cell + 1)),
         "is " + number(y(f, cell + 1)) + ": in the cell from " + end(cell) + " to " + end(cell + 1) +
             " coefficients leave the range of " + (sizeof(Real) == 8 ? "double" : "float"));
}

#define TMK_INSTANTIATE(Real)                                                                               \
  template void check_points(const char*, const abscissae<Real>&, std::size_t);                             \
  template void check_functions(const char*, const char*, const function_set<Real>&, std::size_t,           \
                                std::size_t);                                                               \
  template void check_conditions<Real>(const char*, family, std::size_t, const boundary&, const boundary&); \
  template void check_periodic(const char*, const function_set<Real>&);                                     \
  template void check_coefficients(const spline_core<Real>&, const abscissae<Real>&,                        \
                                   const function_set<Real>&);
TMK_INSTANTIATE(double)
TMK_INSTANTIATE(float)
#undef TMK_INSTANTIATE

}  // namespace tmk::detail
