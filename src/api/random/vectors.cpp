// SPDX-License-Identifier: Apache-2.0
// Laws of vectors, a row of the array each, and of elements with parameters of their own.
#include <tmk/abi/vts.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <tmk/random.hpp>

#include "api/call/refuse.hpp"
#include "api/random/laws.hpp"
#include "api/random/stream.hpp"
#include "platform/by_precision.hpp"

namespace tmk {

namespace {

using detail::number;
using detail::place;
using detail::refuse_value;

template <class T>
void check_array(const char* function, const char* name, std::span<T> values) {
  detail::check_data(function, {name, {values.data(), values.size()}, sizeof(T)});
}

// r in rows: how many they are.
template <class T>
std::size_t rows_of(const char* function, std::span<T> r, const char* width_name, std::size_t width) {
  check_array(function, "r", r);
  if (width == 0) refuse_value(function, width_name, "0", "1 or more");
  if (r.size() % width != 0)
    refuse_value(function, "r.size()", number(r.size()),
                 std::string("a multiple of ") + width_name + ", " + number(width));
  return r.size() / width;
}

// kernel(n, first row) for as many rows at a time as the C interface counts.
template <class Kernel>
void run_rows(const char* function, stream& g, std::size_t rows, std::size_t width, Kernel kernel) {
  constexpr std::size_t longest = 1 << 30;
  for (std::size_t done = 0, count; done < rows; done += count) {
    count = std::min(rows - done, longest);
    detail::check_status(function, g.handle(), kernel(static_cast<std::int32_t>(count), done * width));
  }
}

}  // namespace

void poisson_each(stream& g, std::span<std::int32_t> r, std::span<const double> means) {
  constexpr auto function = "poisson_each";
  detail::check_size(function, {"means", {means.data(), means.size()}, sizeof(double)}, r.size());
  check_array(function, "r", r);
  for (std::size_t i = 0; i < means.size(); ++i) detail::check_mean(function, place("means", i), means[i]);
  run_rows(function, g, r.size(), 1, [&](std::int32_t n, std::size_t first) {
    return _vtsiRngPoissonV(0, g.handle(), n, r.data() + first, means.data() + first);
  });
}

void multinomial(stream& g, std::span<std::int32_t> r, std::int32_t trials, std::span<const double> p) {
  constexpr auto function = "multinomial";
  detail::refuse_below(function, "trials", trials, 0);
  check_array(function, "p", p);
  const std::size_t rows = rows_of(function, r, "p.size()", p.size());
  double sum = 0;
  for (std::size_t k = 0; k < p.size(); sum += p[k++])
    detail::refuse_unless_in(function, place("p", k).c_str(), p[k], 0, 1);
  if (!(std::abs(sum - 1) <= 1e-9)) refuse_value(function, "the sum of p", number(sum), "1");
  run_rows(function, g, rows, p.size(), [&](std::int32_t n, std::size_t first) {
    return _vtsiRngMultinomial(0, g.handle(), n, r.data() + first, trials,
                               static_cast<std::int32_t>(p.size()), p.data());
  });
}

namespace {

// Where element (i, i) of a factor is, and how many elements the factor has.
std::size_t diagonal_of(factor_storage storage, std::size_t i, std::size_t p) {
  switch (storage) {
    case factor_storage::full:
      return i * p + i;
    case factor_storage::packed:
      return i * (i + 1) / 2 + i;
    default:
      return i;
  }
}

template <class T>
void check_factor(std::span<const T> factor, std::size_t p, factor_storage storage) {
  constexpr auto function = "gaussian_mv";
  detail::check_size(function, {"factor", {factor.data(), factor.size()}, sizeof(T)},
                     diagonal_of(storage, p - 1, p) + 1);
  check_array(function, "factor", factor);
  for (std::size_t i = 0; i < factor.size(); ++i)
    if (!std::isfinite(factor[i]))
      refuse_value(function, place("factor", i), number(factor[i]), "a finite number");
  for (std::size_t i = 0; i < p; ++i) {
    const std::size_t at = diagonal_of(storage, i, p);
    if (!(factor[at] > 0))
      refuse_value(function, place("factor", at), number(factor[at]), "a positive number on the diagonal");
    if (storage != factor_storage::full) continue;
    for (std::size_t k = at + 1; k < (i + 1) * p; ++k)
      if (factor[k] != 0)
        refuse_value(function, place("factor", k), number(factor[k]), "0 above the diagonal");
  }
}

template <class T>
void fill_vectors(stream& g, std::span<T> r, std::span<const T> mean, std::span<const T> factor,
                  const gaussian_mv_options& options) {
  constexpr auto function = "gaussian_mv";
  constexpr auto draw = by_precision<T>(&tmk_vtsdRngGaussianMV, &tmk_vtssRngGaussianMV);
  check_array(function, "mean", mean);
  const std::size_t rows = rows_of(function, r, "mean.size()", mean.size());
  for (std::size_t i = 0; i < mean.size(); ++i)
    if (!std::isfinite(mean[i])) refuse_value(function, place("mean", i), number(mean[i]), "a finite number");
  const auto storage = static_cast<std::int32_t>(options.storage),
             method = static_cast<std::int32_t>(options.method);
  detail::refuse_unless_in(function, "storage", storage, 0, 2);
  detail::refuse_unless_in(function, "method", method, 1, 3);
  check_factor(factor, mean.size(), options.storage);
  run_rows(function, g, rows, mean.size(), [&](std::int32_t n, std::size_t first) {
    return draw(method, g.handle(), n, r.data() + first, static_cast<std::int32_t>(mean.size()), storage,
                mean.data(), factor.data());
  });
}

}  // namespace

void gaussian_mv(stream& g, std::span<double> r, std::span<const double> mean, std::span<const double> factor,
                 const gaussian_mv_options& options) {
  fill_vectors(g, r, mean, factor, options);
}
void gaussian_mv(stream& g, std::span<float> r, std::span<const float> mean, std::span<const float> factor,
                 const gaussian_mv_options& options) {
  fill_vectors(g, r, mean, factor, options);
}

namespace {

// Below this all gamma variates of a row may underflow.
constexpr double least_gamma_shape = 0.1;

void divide_by_sums(std::span<double> r, std::size_t width) {
  for (auto row = r; !row.empty(); row = row.subspan(width)) {
    double sum = 0;
    for (const double x : row.first(width)) sum += x;
    for (double& x : row.first(width)) x /= sum;
  }
}

}  // namespace

// Gamma variates divided by their sum; of small shapes, what breaks off a stick again and again: the part of
// class k in what is left of it is beta with alpha[k] and the sum of those after it.
void dirichlet(stream& g, std::span<double> r, std::span<const double> alpha) {
  constexpr auto function = "dirichlet";
  check_array(function, "alpha", alpha);
  if (alpha.size() < 2) refuse_value(function, "alpha.size()", number(alpha.size()), "2 or more");
  const std::size_t width = alpha.size(), rows = rows_of(function, r, "alpha.size()", width);
  for (std::size_t k = 0; k < width; ++k)
    detail::refuse_unless_in(function, place("alpha", k).c_str(), alpha[k], detail::least_shape,
                             detail::greatest_shape);

  std::vector<double> column(rows), left(rows, 1.0);
  const auto for_column = [&](std::size_t k, auto f) {
    for (std::size_t i = 0; i < rows; ++i) r[i * width + k] = f(i);
  };
  if (*std::max_element(alpha.begin(), alpha.end()) >= least_gamma_shape) {
    for (std::size_t k = 0; k < width; ++k) {
      gamma(g, column, {.shape = alpha[k]});
      for_column(k, [&](std::size_t i) { return column[i]; });
    }
    return divide_by_sums(r, width);
  }
  double after = 0;
  for (const double a : alpha) after += a;
  for (std::size_t k = 0; k + 1 < width; ++k) {
    after -= alpha[k];
    beta(g, column, {.a = alpha[k], .b = std::max(after, alpha[k + 1])});
    for_column(k, [&](std::size_t i) {
      const double part = left[i] * column[i];
      left[i] -= part;
      return part;
    });
  }
  for_column(width - 1, [&](std::size_t i) { return left[i]; });
}

}  // namespace tmk
