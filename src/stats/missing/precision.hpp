// SPDX-License-Identifier: Apache-2.0
// Holes given the observed values of their row, by the inverse K of the covariance: with h = K mean, and o
// and m the observed and the missing variables, x_m is normal of precision K_mm and mean K_mm^-1 (h_m - K_mo
// x_o). So a row costs no more than its holes times all variables, and only the small block K_mm is
// factorised: a pattern that one row has is no dearer than one of many.
#pragma once

#include <cmath>
#include <cstdint>

#include "stats/missing/data.hpp"

namespace tmk::stats::missing {

// The logarithm of a product, which is renewed before it overflows or underflows.
class log_product {
 public:
  void multiply(double x) {
    product_ *= x;
    if (!(product_ > 1e-150 && product_ < 1e150)) add(std::log(product_)), product_ = 1;
  }
  void add(double logarithm) { sum_ += logarithm; }
  double value() const { return sum_ + std::log(product_); }

 private:
  double product_ = 1, sum_ = 0;
};

class precision_model {
 public:
  explicit precision_model(ptrdiff_t p) : rows_(p), factor_(static_cast<size_t>(p * p)) {}

  // False where the covariance is not positive definite, by more than roundings.
  bool set(const square<double>& theta);

  // The row of variable j is (h_j, -K_j1, ..., -K_jp): times a row of data it is element j of h - K x.
  const square<double>& rows() const { return rows_; }
  double operator()(ptrdiff_t i, ptrdiff_t j) const { return -rows_[i][j]; }
  double log_determinant() const { return log_determinant_; }  // of the covariance

 private:
  square<double> rows_;
  std::vector<double> factor_;
  double log_determinant_ = 0;
};

// The rows of a pattern that lie between two places of the order.
struct stretch {
  ptrdiff_t pattern, first, count;
};

template <class Visit>
void for_each_stretch(const pattern_list& patterns, ptrdiff_t begin, ptrdiff_t end, const Visit& visit) {
  ptrdiff_t k =
      std::upper_bound(patterns.first.begin(), patterns.first.end(), begin) - patterns.first.begin() - 1;
  for (ptrdiff_t first = begin; first < end; ++k) {
    const ptrdiff_t next = std::min(end, patterns.first[static_cast<size_t>(k) + 1]);
    visit(stretch{k, first, next - first});
    first = next;
  }
}

// Fills the holes of rows by their expected values, or by draws.
class completion {
 public:
  // No more than `rows` rows at a time.
  completion(const data_rows<double>& data, ptrdiff_t rows)
      : data_(data),
        holes_(static_cast<size_t>(data.p)),
        factor_(static_cast<size_t>(data.p * data.p)),
        inverse_diagonal_(static_cast<size_t>(data.p)),
        column_(static_cast<size_t>(data.p)),
        values_(static_cast<size_t>(rows * data.p)) {}

  // Adds the rows' share of the sums of products with expected values, their residual covariance included, to
  // `half`, and log det K_mm of each row to `determinants`. False where a block is not positive definite.
  bool expect(const precision_model& model, ptrdiff_t begin, ptrdiff_t end, square<double>& half,
              log_product& determinants);

  // Adds the share of the sums of products with draws, for which `normals` has a variate for each hole, to
  // `half` unless that is null. keep(first, block, values) sees the draws of each stretch of rows.
  template <class Keep>
  bool draw(const precision_model& model, ptrdiff_t begin, ptrdiff_t end, const double* normals,
            square<double>* half, const Keep& keep);

 private:
  bool prepare(const precision_model& model, const stretch& s, row_block<double>& block);
  void solve(const row_block<double>& block, const double* normals);
  void add_residuals(const row_block<double>& block, square<double>& half);

  const data_rows<double>& data_;
  std::vector<int32_t> holes_;
  std::vector<double> factor_, inverse_diagonal_;  // of K_mm = L L', by rows of k
  std::vector<double> column_, values_;
};

template <class Keep>
bool completion::draw(const precision_model& model, ptrdiff_t begin, ptrdiff_t end, const double* normals,
                      square<double>* half, const Keep& keep) {
  const auto& kernels = row_kernels_now<double>();
  bool regular = true;
  for_each_stretch(data_.patterns, begin, end, [&](const stretch& s) {
    row_block<double> block;
    regular = regular && prepare(model, s, block);
    if (!regular || block.k == 0) return;
    solve(block, normals);
    normals += block.count * block.k;
    if (half != nullptr) kernels.accumulate(block, values_.data(), (*half)[0]);
    keep(s.first, block, values_.data());
  });
  return regular;
}

}  // namespace tmk::stats::missing
