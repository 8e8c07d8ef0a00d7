// SPDX-License-Identifier: Apache-2.0
// The nearest correlation matrix in the Frobenius norm: Newton's method on the dual problem (Qi and Sun, A
// quadratically convergent Newton method for computing the nearest correlation matrix, 2006).
//
// With G of unit diagonal and C+ the part of C of positive eigenvalues, X = (G + Diag(y))+ where y makes the
// diagonal of X one; that diagonal minus one is the gradient of
//   theta(y) = |(G + Diag(y))+|^2 / 2 - sum y,
// which is convex. Its generalized Hessian is applied by products with the eigenvectors, and a step is found
// by conjugate gradients.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "linalg/blas.hpp"
#include "platform/guarded.hpp"
#include "tmk/abi/ss.h"

namespace tmk::stats {
namespace {

using vector = std::vector<double>;

double dot(const vector& a, const vector& b) {
  return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}
double norm(const vector& a) { return std::sqrt(dot(a, a)); }

// theta, its gradient and what its Hessian needs, at one y.
class dual_point {
 public:
  explicit dual_point(int p)
      : p_(p),
        size_(static_cast<size_t>(p)),
        vectors_(size_ * size_),
        values_(size_),
        share_(size_ * size_),
        gradient_(size_) {}

  // G in the lower triangle by rows. False where the eigenvalues are not found.
  bool move_to(const double* g, const vector& y) {
    std::copy_n(g, size_ * size_, vectors_.begin());
    for (size_t i = 0; i < size_; ++i) vectors_[i * (size_ + 1)] = 1 + y[i];
    vector work(50 * size_);
    int info = 0;
    const int lwork = static_cast<int>(work.size());
    linalg::serial<double>::syev("V", "U", &p_, vectors_.data(), &p_, values_.data(), work.data(), &lwork,
                                 &info);
    if (info != 0) return false;
    theta_ = -std::accumulate(y.begin(), y.end(), 0.0);
    std::fill(gradient_.begin(), gradient_.end(), -1.0);
    for (size_t k = 0; k < size_; ++k) {
      const double value = std::max(values_[k], 0.0);
      theta_ += value * value / 2;
      for (size_t i = 0; i < size_; ++i) gradient_[i] += value * vector_of(k)[i] * vector_of(k)[i];
    }
    return std::isfinite(theta_);
  }

  double theta() const { return theta_; }
  const vector& gradient() const { return gradient_; }

  // What hessian_times and diagonal need: how the positive part moves along products of eigenvectors k and l.
  void prepare_hessian() {
    for (size_t k = 0; k < size_; ++k)
      for (size_t l = 0; l < size_; ++l) {
        const double a = values_[k], b = values_[l];
        share_[k * size_ + l] = a > 0 && b > 0 ? 1 : a <= 0 && b <= 0 ? 0 : std::max(a, b) / std::abs(a - b);
      }
  }

  // diag(P (share o (P' Diag(h) P)) P')
  vector hessian_times(const vector& h) const {
    vector scaled(size_ * size_), inner(size_ * size_), r(size_);
    for (size_t k = 0; k < size_; ++k)
      for (size_t i = 0; i < size_; ++i) scaled[k * size_ + i] = h[i] * vector_of(k)[i];
    multiply("T", vectors_, scaled, inner);
    std::transform(inner.begin(), inner.end(), share_.begin(), inner.begin(), std::multiplies<>());
    multiply("N", vectors_, inner, scaled);
    for (size_t k = 0; k < size_; ++k)
      for (size_t i = 0; i < size_; ++i) r[i] += scaled[k * size_ + i] * vector_of(k)[i];
    return r;
  }

  vector hessian_diagonal() const {
    vector squares(vectors_), product(size_ * size_), r(size_);
    for (double& v : squares) v *= v;
    multiply("N", squares, share_, product);
    for (size_t k = 0; k < size_; ++k)
      for (size_t i = 0; i < size_; ++i) r[i] += product[k * size_ + i] * squares[k * size_ + i];
    return r;
  }

  // The positive part with a unit diagonal, whole.
  void write(double* result) const {
    vector scaled(vectors_), root(size_);
    for (size_t k = 0; k < size_; ++k)
      for (size_t i = 0; i < size_; ++i) scaled[k * size_ + i] *= std::sqrt(std::max(values_[k], 0.0));
    const double one = 1, zero = 0;
    linalg::serial<double>::syrk("U", "N", &p_, &p_, &one, scaled.data(), &p_, &zero, result, &p_);
    for (size_t i = 0; i < size_; ++i) root[i] = std::sqrt(result[i * (size_ + 1)]);
    for (size_t i = 0; i < size_; ++i) {
      for (size_t j = 0; j < i; ++j)
        result[i * size_ + j] = result[j * size_ + i] =
            std::clamp(result[i * size_ + j] / (root[i] * root[j]), -1.0, 1.0);
      result[i * (size_ + 1)] = 1;
    }
  }

  bool is_semidefinite() const { return values_.front() >= 0; }

 private:
  const double* vector_of(size_t k) const { return vectors_.data() + k * size_; }
  void multiply(const char* trans, const vector& a, const vector& b, vector& r) const {
    const double one = 1, zero = 0;
    linalg::serial<double>::gemm(trans, "N", &p_, &p_, &p_, &one, a.data(), &p_, b.data(), &p_, &zero,
                                 r.data(), &p_);
  }

  int p_;
  size_t size_;
  vector vectors_, values_, share_, gradient_;
  double theta_ = 0;
};

// d with V d = -gradient, V the Hessian, to a tenth of the gradient's norm or better.
vector newton_step(const dual_point& at) {
  const vector& gradient = at.gradient();
  const size_t p = gradient.size();
  const double target = std::min(0.1, norm(gradient)) * norm(gradient);
  vector scale = at.hessian_diagonal(), d(p), residual(p), z(p);
  for (double& s : scale) s = std::max(s, 1e-8);
  for (size_t i = 0; i < p; ++i) residual[i] = -gradient[i], z[i] = residual[i] / scale[i];
  vector direction = z;
  double rz = dot(residual, z);
  for (int round = 0; round < 200 && norm(residual) > target; ++round) {
    const vector image = at.hessian_times(direction);
    const double curvature = dot(direction, image);
    if (!(curvature > 0)) break;
    const double step = rz / curvature;
    for (size_t i = 0; i < p; ++i) {
      d[i] += step * direction[i];
      residual[i] -= step * image[i];
      z[i] = residual[i] / scale[i];
    }
    const double next = dot(residual, z);
    for (size_t i = 0; i < p; ++i) direction[i] = z[i] + next / rz * direction[i];
    rz = next;
  }
  return d;
}

// Moves along d as far as theta falls enough. False where no step is found: y is as good as rounding allows.
bool search_line(const double* g, const vector& d, vector& y, dual_point& at) {
  const double theta = at.theta(), slope = dot(at.gradient(), d);
  const vector start = y;
  const double before = norm(at.gradient());
  double step = 1;
  for (int halving = 0; halving < 30; ++halving, step /= 2) {
    for (size_t i = 0; i < y.size(); ++i) y[i] = start[i] + step * d[i];
    if (!at.move_to(g, y)) break;
    // Near the minimum theta no longer tells steps apart; the gradient does.
    if (at.theta() <= theta + 1e-4 * step * slope || norm(at.gradient()) < 0.5 * before) return true;
  }
  y = start;
  at.move_to(g, y);
  return false;
}

int32_t nearest_correlation(int p, const double* g, double* result) {
  const auto size = static_cast<size_t>(p);
  const double rounding = 1e-15 * static_cast<double>(p), tolerable = 1e-9 * static_cast<double>(p);
  vector y(size);
  dual_point at(p);
  if (!at.move_to(g, y)) return VTS_STATUS_SS_COR_EIGEN_FAILED;
  if (at.is_semidefinite()) {
    for (size_t i = 0; i < size; ++i)
      for (size_t j = 0; j <= i; ++j)
        result[i * size + j] = result[j * size + i] = i == j ? 1 : g[i * size + j];
    return 0;
  }
  for (int round = 0; round < 100 && norm(at.gradient()) > rounding; ++round) {
    at.prepare_hessian();
    if (!search_line(g, newton_step(at), y, at)) break;
  }
  if (!(norm(at.gradient()) <= tolerable)) return VTS_STATUS_SS_COR_PARAM_FAILED;
  at.write(result);
  return 0;
}

}  // namespace
}  // namespace tmk::stats

int32_t tmk_ss_nearest_correlation(int32_t p, const double* matrix, double* result) {
  if (p < 1) return VTS_STATUS_SS_BAD_DIMENSION;
  if (matrix == nullptr) return VTS_STATUS_SS_COR_NULL;
  if (result == nullptr) return VTS_STATUS_SS_COR_PARAM_NULL;
  return tmk::guarded(VTS_STATUS_SS_MEMORY,
                      [&] { return tmk::stats::nearest_correlation(p, matrix, result); });
}
