// SPDX-License-Identifier: Apache-2.0
// Normal vectors: the product of T with the very variates that the Gaussian draws, for every storage.
#include <cmath>
#include <random>

#include "random/plain_generators.hpp"

namespace {

int32_t draw_mv(int32_t method, VtsStreamHandle s, int32_t n, double* r, int32_t p, int32_t storage,
                const double* a, const double* t) {
  return _vtsdRngGaussianMV(method, s, n, r, p, storage, a, t);
}
int32_t draw_mv(int32_t method, VtsStreamHandle s, int32_t n, float* r, int32_t p, int32_t storage,
                const float* a, const float* t) {
  return _vtssRngGaussianMV(method, s, n, r, p, storage, a, t);
}
int32_t draw(int32_t method, VtsStreamHandle s, int32_t n, double* r) {
  return _vtsdRngGaussian(method, s, n, r, 0, 1);
}
int32_t draw(int32_t method, VtsStreamHandle s, int32_t n, float* r) {
  return _vtssRngGaussian(method, s, n, r, 0, 1);
}

// T in the three storages; what is above the diagonal is no number.
template <class Real>
struct factor {
  std::vector<Real> a, full, packed, diagonal;
  explicit factor(size_t p) : full(p * p, static_cast<Real>(NAN)) {
    std::mt19937 engine(3);
    const auto next = [&] { return static_cast<Real>(static_cast<double>(engine()) * 0x1p-31 - 1); };
    for (size_t i = 0; i < p; ++i) {
      a.push_back(next());
      for (size_t j = 0; j <= i; ++j) packed.push_back(full[i * p + j] = next());
      diagonal.push_back(full[i * p + i]);
    }
  }
  const Real* by(int32_t storage) const {
    return (storage == 0 ? full : storage == 1 ? packed : diagonal).data();
  }
};

template <class Real>
void expect_products(int32_t method, int32_t order, int32_t vectors, int32_t cut) {
  const auto p = static_cast<size_t>(order), n = static_cast<size_t>(vectors);
  const factor<Real> t(p);
  for (const int32_t storage : {0, 1, 2}) {
    SCOPED_TRACE(storage);
    const owned_stream g(VTS_BRNG_MT19937, {1}), h(VTS_BRNG_MT19937, {1});
    std::vector<Real> z(n * p), r(n * p);
    ASSERT_EQ(draw(method, g, vectors * order, z.data()), 0);
    ASSERT_EQ(draw_mv(method, h, cut, r.data(), order, storage, t.a.data(), t.by(storage)), 0);
    ASSERT_EQ(
        draw_mv(method, h, vectors - cut, r.data() + cut * order, order, storage, t.a.data(), t.by(storage)),
        0);
    const double bound = static_cast<double>(order) * 8 * std::numeric_limits<Real>::epsilon();
    for (size_t i = 0; i < n; ++i)
      for (size_t k = 0; k < p; ++k) {
        double sum = t.a[k];
        for (size_t j = storage == 2 ? k : 0; j <= k; ++j)
          sum += static_cast<double>(t.full[k * p + j]) * static_cast<double>(z[i * p + j]);
        ASSERT_NEAR(r[i * p + k], sum, bound) << i << " " << k;
      }
  }
}

TEST(gaussian_mv, is_the_product_with_the_sequence) {
  for (const int32_t method : {0, 1, 2, 3})
    for (const int32_t order : {1, 2, 3, 7, 8, 33}) {
      SCOPED_TRACE(order);
      const int32_t vectors = 40000 / order;  // more than a block
      expect_products<double>(method, order, vectors, 16);
      expect_products<float>(method, order, vectors, 16);
    }
  expect_products<double>(1, 5, 101, 7);  // partners are kept across a cut at an odd number
}

// Of each vector the sums run in one order, however many vectors a call has.
TEST(gaussian_mv, is_one_sequence_for_any_cut) {
  for (const int32_t order : {2, 8, 31, 100}) {
    const factor<double> t(static_cast<size_t>(order));
    const owned_stream whole(VTS_BRNG_PHILOX4X32X10, {1}), cut(VTS_BRNG_PHILOX4X32X10, {1});
    std::vector<double> x(static_cast<size_t>(700 * order)), y(x.size());
    ASSERT_EQ(draw_mv(3, whole, 700, x.data(), order, 1, t.a.data(), t.by(1)), 0);
    for (int32_t done = 0; const int32_t count : {7, 9, 1, 333, 350}) {
      ASSERT_EQ(draw_mv(3, cut, count, y.data() + done * order, order, 1, t.a.data(), t.by(1)), 0);
      done += count;
    }
    EXPECT_EQ(x, y) << order;
  }
}

TEST(gaussian_mv, statuses) {
  const double a[] = {0, 0}, t[] = {1, NAN, 1, 1}, bad[] = {1, 0, NAN, 1}, infinite[] = {0, INFINITY};
  const struct {
    int32_t method, dimen, storage;
    const double *a, *t;
    int32_t status;
  } rows[] = {{4, 0, 9, a, t, VTS_STATUS_BAD_METHOD},
              {-1, 2, 0, a, t, VTS_STATUS_BAD_METHOD},
              {0, 2, 3, a, t, VTS_STATUS_BAD_ARGUMENT},
              {0, 0, 0, a, t, VTS_STATUS_BAD_ARGUMENT},
              {0, 2, 0, nullptr, t, VTS_STATUS_BAD_ARGUMENT},
              {0, 2, 0, a, nullptr, VTS_STATUS_BAD_ARGUMENT},
              {0, 2, 0, a, bad, VTS_STATUS_BAD_ARGUMENT},
              {0, 2, 1, a, bad, VTS_STATUS_BAD_ARGUMENT},
              {0, 2, 0, infinite, t, VTS_STATUS_BAD_ARGUMENT},
              {0, 2, 2, a, t, VTS_STATUS_BAD_ARGUMENT},
              {0, 2, 0, a, t, 0}};
  const owned_stream g(VTS_BRNG_MCG59, {1});
  double r = -5;
  for (const auto& row : rows)
    EXPECT_EQ(_vtsdRngGaussianMV(row.method, g, 0, &r, row.dimen, row.storage, row.a, row.t), row.status);
  EXPECT_EQ(r, -5);
}

}  // namespace
