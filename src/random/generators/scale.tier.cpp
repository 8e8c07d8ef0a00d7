// SPDX-License-Identifier: Apache-2.0
// Words to numbers of an interval.
#include "random/generators/scale.hpp"

#include <cstring>

#include "simd/integer.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

struct signed_words {
  static f64 load(const uint32_t* p) { return load_signed_words(p); }
  static double value(uint32_t word) { return static_cast<int32_t>(word); }
};
struct unsigned_words {
  static f64 load(const uint32_t* p) { return load_unsigned_words(p); }
  static double value(uint32_t word) { return word; }
};

void put(double* p, const f64& x) { store(p, x); }
void put(float* p, const f64& x) { store_singles(p, x); }

// Words are read before the results of their vector are written, which in-place use relies on; memcpy because
// they may lie in an array of Real.
template <class Words, class Real>
void scale(int32_t n, const uint32_t* w, Real* r, double k, double a) {
  constexpr int width = lanes<double>;
  int32_t i = 0;
  for (; n - i >= 2 * width; i += 2 * width) {
    const f64 first = Words::load(w + i), second = Words::load(w + i + width);
    put(r + i, first * k + a);
    put(r + i + width, second * k + a);
  }
  for (; i < n; ++i) {
    uint32_t word;
    std::memcpy(&word, w + i, sizeof word);
    r[i] = static_cast<Real>(Words::value(word) * k + a);
  }
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(scale_doubles) = {{scale<unsigned_words, double>, scale<signed_words, double>}};
TMK_DEFINE_TIER_KERNELS(scale_singles) = {{scale<unsigned_words, float>, scale<signed_words, float>}};

}  // namespace tmk::rng
