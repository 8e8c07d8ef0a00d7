// SPDX-License-Identifier: Apache-2.0
#include "stats/missing/precision.hpp"

#include "stats/missing/factor.hpp"

namespace tmk::stats::missing {
namespace {

// The share of a variable's variance that others must leave: roundings leave 1e-14 of one that depends on
// them.
constexpr double least_residual = 1e-12;

}  // namespace

bool precision_model::set(const square<double>& theta) {
  const ptrdiff_t p = theta.p();
  const int order = static_cast<int>(p);
  double* const k = factor_.data();
  for (ptrdiff_t i = 0; i < p; ++i) std::copy_n(theta[i + 1] + 1, p, k + i * p);
  int info = 0;
  if (!factorise("U", p, k)) return false;
  log_product diagonal;
  for (ptrdiff_t i = 0; i < p; ++i) {
    const double pivot = k[i * p + i];
    if (!(pivot * pivot >= least_residual * theta[i + 1][i + 1])) return false;
    diagonal.multiply(pivot);
  }
  log_determinant_ = 2 * diagonal.value();
  if (!std::isfinite(log_determinant_)) return false;
  linalg::serial<double>::potri("U", &order, k, &order, &info);
  if (info != 0) return false;
  for (ptrdiff_t i = 0; i < p; ++i)
    for (ptrdiff_t j = 0; j <= i; ++j) rows_[i + 1][j + 1] = rows_[j + 1][i + 1] = -k[i * p + j];
  for (ptrdiff_t i = 1; i <= p; ++i) {
    double h = 0;
    for (ptrdiff_t j = 1; j <= p; ++j) h -= rows_[i][j] * theta[0][j];
    rows_[i][0] = h;
  }
  return true;
}

// Lists the holes of the stretch, whose expected values' right-hand sides go to values_, and factorises K_mm.
bool completion::prepare(const precision_model& model, const stretch& s, row_block<double>& block) {
  const ptrdiff_t k = list_missing(data_.patterns[s.pattern], data_.p, holes_.data());
  block = {data_.width, s.count, data_.row(s.first), k, holes_.data()};
  if (k == 0) return true;
  row_kernels_now<double>().products(block, model.rows()[0], values_.data());
  double *const l = factor_.data(), *const inverse = inverse_diagonal_.data();
  for (ptrdiff_t i = 0; i < k; ++i)
    for (ptrdiff_t j = 0; j <= i; ++j) {
      double sum = model(holes_[static_cast<size_t>(i)], holes_[static_cast<size_t>(j)]);
      for (ptrdiff_t c = 0; c < j; ++c) sum -= l[i * k + c] * l[j * k + c];
      if (i != j) {
        l[i * k + j] = sum * inverse[j];
      } else {
        if (!(sum > 0)) return false;
        l[i * k + i] = std::sqrt(sum);
        inverse[i] = 1 / l[i * k + i];
      }
    }
  return true;
}

namespace {

// a[i] less the products of a row of L, or of a column below its diagonal, with a.
double less_row(ptrdiff_t k, const double* l, const double* a, ptrdiff_t i, ptrdiff_t first) {
  double sum = a[i];
  for (ptrdiff_t j = first; j < i; ++j) sum -= l[i * k + j] * a[j];
  return sum;
}
double less_column(ptrdiff_t k, const double* l, const double* a, ptrdiff_t i) {
  double sum = a[i];
  for (ptrdiff_t j = i + 1; j < k; ++j) sum -= l[j * k + i] * a[j];
  return sum;
}

}  // namespace

// L'^-1 (L^-1 q + z) in the place of each row's q; z is 0 without variates.
void completion::solve(const row_block<double>& block, const double* normals) {
  const ptrdiff_t k = block.k;
  const double *const l = factor_.data(), *const inverse = inverse_diagonal_.data();
  double* x = values_.data();
  for (ptrdiff_t row = 0; row < block.count; ++row, x += k) {
    for (ptrdiff_t i = 0; i < k; ++i) x[i] = less_row(k, l, x, i, 0) * inverse[i];
    if (normals != nullptr)
      for (ptrdiff_t i = 0; i < k; ++i) x[i] += *normals++;
    for (ptrdiff_t i = k - 1; i >= 0; --i) x[i] = less_column(k, l, x, i) * inverse[i];
  }
}

// K_mm^-1 for each row, column by column from the diagonal down. `half` takes half of it: of what is not on
// the diagonal one of two.
void completion::add_residuals(const row_block<double>& block, square<double>& half) {
  const ptrdiff_t k = block.k;
  const double *const l = factor_.data(), *const inverse = inverse_diagonal_.data();
  double* const x = column_.data();
  const auto share = static_cast<double>(block.count);
  for (ptrdiff_t column = 0; column < k; ++column) {
    for (ptrdiff_t i = column; i < k; ++i) {
      x[i] = i == column ? 1 : 0;
      x[i] = less_row(k, l, x, i, column) * inverse[i];
    }
    for (ptrdiff_t i = k - 1; i >= column; --i) {
      x[i] = less_column(k, l, x, i) * inverse[i];
      half[block.holes[i]][block.holes[column]] += (i == column ? share / 2 : share) * x[i];
    }
  }
}

bool completion::expect(const precision_model& model, ptrdiff_t begin, ptrdiff_t end, square<double>& half,
                        log_product& determinants) {
  const auto& kernels = row_kernels_now<double>();
  bool regular = true;
  for_each_stretch(data_.patterns, begin, end, [&](const stretch& s) {
    row_block<double> block;
    regular = regular && prepare(model, s, block);
    if (!regular || block.k == 0) return;
    solve(block, nullptr);
    kernels.accumulate(block, values_.data(), half[0]);
    add_residuals(block, half);
    for (ptrdiff_t i = 0; i < block.k; ++i) {
      const double pivot = factor_[static_cast<size_t>(i * block.k + i)];
      if (block.count == 1)
        determinants.multiply(pivot * pivot);
      else
        determinants.add(2 * static_cast<double>(block.count) * std::log(pivot));
    }
  });
  return regular;
}

}  // namespace tmk::stats::missing
