// SPDX-License-Identifier: Apache-2.0
// xsimd, with the fused operations that its AVX-512 part lacks: it would round the product; and with the
// negation of AVX2 masks, which it compares with zero in halves, six instructions for one. Its interface
// finds them by qualified name, so they are declared before it is included.
#pragma once

#include <immintrin.h>

#include <concepts>
#include <xsimd/config/xsimd_arch.hpp>

#if XSIMD_WITH_AVX512F
namespace xsimd {
template <class T, class A>
class batch;
namespace kernel {
template <class A, std::floating_point T>
batch<T, A> fma(const batch<T, A>& x, const batch<T, A>& y, const batch<T, A>& z, const avx512f&) noexcept {
  if constexpr (sizeof(T) == 4)
    return _mm512_fmadd_ps(x, y, z);
  else
    return _mm512_fmadd_pd(x, y, z);
}
template <class A, std::floating_point T>
batch<T, A> fms(const batch<T, A>& x, const batch<T, A>& y, const batch<T, A>& z, const avx512f&) noexcept {
  if constexpr (sizeof(T) == 4)
    return _mm512_fmsub_ps(x, y, z);
  else
    return _mm512_fmsub_pd(x, y, z);
}
template <class A, std::floating_point T>
batch<T, A> fnma(const batch<T, A>& x, const batch<T, A>& y, const batch<T, A>& z, const avx512f&) noexcept {
  if constexpr (sizeof(T) == 4)
    return _mm512_fnmadd_ps(x, y, z);
  else
    return _mm512_fnmadd_pd(x, y, z);
}
template <class A, std::floating_point T>
batch<T, A> fnms(const batch<T, A>& x, const batch<T, A>& y, const batch<T, A>& z, const avx512f&) noexcept {
  if constexpr (sizeof(T) == 4)
    return _mm512_fnmsub_ps(x, y, z);
  else
    return _mm512_fnmsub_pd(x, y, z);
}
}  // namespace kernel
}  // namespace xsimd
#endif

#if XSIMD_WITH_FMA3_AVX2
namespace xsimd {
template <class T, class A>
class batch_bool;
namespace kernel {
template <class A>
batch_bool<float, A> eq(const batch_bool<float, A>& x, const batch_bool<float, A>& y,
                        const fma3<avx2>&) noexcept {
  return _mm256_xor_ps(_mm256_xor_ps(x, y), _mm256_castsi256_ps(_mm256_set1_epi32(-1)));
}
template <class A>
batch_bool<double, A> eq(const batch_bool<double, A>& x, const batch_bool<double, A>& y,
                         const fma3<avx2>&) noexcept {
  return _mm256_xor_pd(_mm256_xor_pd(x, y), _mm256_castsi256_pd(_mm256_set1_epi32(-1)));
}
}  // namespace kernel
}  // namespace xsimd
#endif

#include <xsimd/xsimd.hpp>
