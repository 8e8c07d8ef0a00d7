// SPDX-License-Identifier: Apache-2.0
// xsimd, with the fused operations that its AVX-512 part lacks: it would round the product. Its interface
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

#include <xsimd/xsimd.hpp>
