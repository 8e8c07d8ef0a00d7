// Columns of numbers written as rows, by unpacking within the 128-bit parts of registers.
#pragma once

#include <concepts>
#include <utility>

#include "platform/simd.hpp"

TMK_TIER_OPEN

// 128 bits of a register.
template <int Part>
__m128d part_of(const f64& x) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  return _mm512_extractf64x2_pd(x, Part);
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  return _mm256_extractf128_pd(x, Part);
#else
  return x;
#endif
}

// work(constant) for 0 ... Count - 1.
template <int Count, class Work>
[[gnu::always_inline]] inline void for_each_constant(const Work& work) {
  [&]<int... I>(std::integer_sequence<int, I...>) { (work(std::integral_constant<int, I>{}), ...); }
  (std::make_integer_sequence<int, Count>{});
}

// Four columns as rows of four values behind p: x[0] y[0] z[0] w[0] x[1] ... Past the caches p is aligned to
// 16 bytes, and streaming_done() has to follow.
template <bool PastCaches, class T>
[[gnu::always_inline]] inline void store_interleaved(T* p, const batch<T>& x, const batch<T>& y,
                                                     const batch<T>& z, const batch<T>& w) {
  const batch<T> xy[] = {xsimd::zip_lo(x, y), xsimd::zip_hi(x, y)};
  const batch<T> zw[] = {xsimd::zip_lo(z, w), xsimd::zip_hi(z, w)};
  // Part P of unit k is what stands 16 (4 P + k) bytes behind p.
  f64 unit[4];
  for_each_constant<2>([&](auto k) {
    if constexpr (std::same_as<T, double>) {
      unit[2 * k] = xy[k];
      unit[2 * k + 1] = zw[k];
    } else {
      const f64 first = bits_as<double>(xy[k]), second = bits_as<double>(zw[k]);
      unit[2 * k] = xsimd::zip_lo(first, second);
      unit[2 * k + 1] = xsimd::zip_hi(first, second);
    }
  });
  double* to = reinterpret_cast<double*>(p);
#if TMK_TIER_NUMBER(TMK_TIER) >= 1
  // Two units that follow each other make a store of twice the width.
  if constexpr (!PastCaches) {
    for_each_constant<1 << (this_tier - 1)>([&](auto half) {
      for_each_constant<2>([&](auto k) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
        const __m256d first = _mm512_extractf64x4_pd(unit[2 * k], half);
        const __m256d second = _mm512_extractf64x4_pd(unit[2 * k + 1], half);
#else
        const __m256d first = unit[2 * k], second = unit[2 * k + 1];
#endif
        _mm256_storeu_pd(to + 16 * half + 4 * k, _mm256_permute2f128_pd(first, second, 0x20));
        _mm256_storeu_pd(to + 16 * half + 4 * k + 8, _mm256_permute2f128_pd(first, second, 0x31));
      });
    });
    return;
  }
#endif
  for_each_constant<1 << this_tier>([&](auto part) {
    for_each_constant<4>([&](auto k) {
      if constexpr (PastCaches)
        _mm_stream_pd(to + 8 * part + 2 * k, part_of<part>(unit[k]));
      else
        _mm_storeu_pd(to + 8 * part + 2 * k, part_of<part>(unit[k]));
    });
  });
}

TMK_TIER_CLOSE
