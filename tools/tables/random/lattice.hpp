// SPDX-License-Identifier: Apache-2.0
// Shortest vectors of lattices of few dimensions, with integers of 128 bits.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

using integer = __int128;
using basis = std::vector<std::vector<integer>>;  // rows
using real = long double;

// Gram-Schmidt coefficients and squared lengths. Their roundings choose the operations on a basis, never what
// it generates.
struct orthogonalised {
  std::vector<std::vector<real>> mu;
  std::vector<real> squared;

  explicit orthogonalised(const basis& b) : mu(b.size(), std::vector<real>(b.size())), squared(b.size()) {
    std::vector<std::vector<real>> star(b.size());
    for (size_t i = 0; i < b.size(); ++i) {
      star[i].assign(b[i].begin(), b[i].end());
      for (size_t j = 0; j < i; ++j) {
        mu[i][j] = product(star[i], star[j]) / squared[j];
        for (size_t k = 0; k < b.size(); ++k) star[i][k] -= mu[i][j] * star[j][k];
      }
      squared[i] = product(star[i], star[i]);
    }
  }

 private:
  static real product(const std::vector<real>& x, const std::vector<real>& y) {
    real sum = 0;
    for (size_t k = 0; k < x.size(); ++k) sum += x[k] * y[k];
    return sum;
  }
};

// A. Lenstra, H. Lenstra, L. Lovasz (1982). Where coefficients are too large for long double, a row is
// reduced again until nothing is left to do.
inline orthogonalised reduce(basis& b) {
  orthogonalised o(b);
  for (size_t k = 1; k < b.size();) {
    bool changed = false;
    for (size_t j = k; j-- > 0;) {
      if (o.mu[k][j] < 0.501 && o.mu[k][j] > -0.501) continue;  // a half would flip its sign for ever
      const auto q = static_cast<integer>(o.mu[k][j] + (o.mu[k][j] < 0 ? -0.5 : 0.5));
      changed = true;
      for (size_t c = 0; c < b.size(); ++c) b[k][c] -= q * b[j][c];
      for (size_t l = 0; l < j; ++l) o.mu[k][l] -= static_cast<real>(q) * o.mu[j][l];
      o.mu[k][j] -= static_cast<real>(q);
    }
    if (changed) {
      o = orthogonalised(b);
      continue;
    }
    if (o.squared[k] >= (0.99 - o.mu[k][k - 1] * o.mu[k][k - 1]) * o.squared[k - 1]) {
      ++k;
    } else {
      std::swap(b[k], b[k - 1]);
      o = orthogonalised(b);
      k = std::max<size_t>(k - 1, 1);
    }
  }
  return o;
}

// The squared length of a shortest vector: enumeration below the shortest row of the reduced basis.
class shortest_vector {
 public:
  explicit shortest_vector(basis b) : o_(reduce(b)), b_(std::move(b)), x_(b_.size()) {
    for (size_t i = 0; i < b_.size(); ++i) {
      x_[i] = 1;
      consider();
      x_[i] = 0;
    }
    enumerate(b_.size(), 0);
  }
  long double squared() const { return best_; }

 private:
  void consider() {
    long double sum = 0;
    for (size_t c = 0; c < b_.size(); ++c) {
      integer coordinate = 0;
      for (size_t k = 0; k < b_.size(); ++k) coordinate += static_cast<integer>(x_[k]) * b_[k][c];
      sum += static_cast<long double>(coordinate) * static_cast<long double>(coordinate);
    }
    if (sum > 0) best_ = std::min(best_, sum);
  }

  void enumerate(size_t undecided, long double length) {
    if (undecided == 0) return consider();
    const size_t i = undecided - 1;
    long double centre = 0;
    for (size_t j = undecided; j < b_.size(); ++j) centre -= static_cast<long double>(x_[j] * o_.mu[j][i]);
    const auto level = static_cast<long double>(o_.squared[i]);
    const long double left = best_ * (1 + 1e-9L) - length;
    const long double radius = left > 0 ? std::sqrt(left / level) : 0;
    for (auto z = std::ceil(centre - radius); z <= centre + radius; ++z) {
      x_[i] = static_cast<long long>(z);
      enumerate(i, length + (z - centre) * (z - centre) * level);
    }
    x_[i] = 0;
  }

  orthogonalised o_;
  basis b_;
  std::vector<long long> x_;
  long double best_ = HUGE_VALL;
};
