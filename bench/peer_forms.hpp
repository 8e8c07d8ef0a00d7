// SPDX-License-Identifier: Apache-2.0
// How peers are called: by registers, by a library's arrays, or element by element. For files that are
// compiled once per tier. The build renames the namespaces of Eigen and xsimd, because their inline functions
// have one name in all instruction sets; for the same reason nothing here may use inline functions of a
// library that the linker could merge.
#pragma once

#include <immintrin.h>
#include <math.h>
#include <sleef.h>
#include <string.h>

#include <Eigen/Core>
#include <unsupported/Eigen/SpecialFunctions>
#include <xsimd/xsimd.hpp>

#include "peers.hpp"

#if defined __AVX512F__
#define TMK_VECTOR_BYTES 64
#define TMK_SLEEF_single(base, error) Sleef_##base##f16_##error##avx512f
#define TMK_SLEEF_double(base, error) Sleef_##base##d8_##error##avx512f
#define TMK_LIBMVEC_single(arguments, base) _ZGVeN16##arguments##_##base##f
#define TMK_LIBMVEC_double(arguments, base) _ZGVeN8##arguments##_##base
#define TMK_PEERS(kind) kind##_peers_V4
#elif defined __AVX2__
#define TMK_VECTOR_BYTES 32
#define TMK_SLEEF_single(base, error) Sleef_##base##f8_##error##avx2
#define TMK_SLEEF_double(base, error) Sleef_##base##d4_##error##avx2
#define TMK_LIBMVEC_single(arguments, base) _ZGVdN8##arguments##_##base##f
#define TMK_LIBMVEC_double(arguments, base) _ZGVdN4##arguments##_##base
#define TMK_PEERS(kind) kind##_peers_V3
#else
#define TMK_VECTOR_BYTES 16
#define TMK_SLEEF_single(base, error) Sleef_##base##f4_##error##sse2
#define TMK_SLEEF_double(base, error) Sleef_##base##d2_##error##sse2
#define TMK_LIBMVEC_single(arguments, base) _ZGVbN4##arguments##_##base##f
#define TMK_LIBMVEC_double(arguments, base) _ZGVbN2##arguments##_##base
#define TMK_PEERS(kind) kind##_peers_W7
#endif

namespace {

// The register types of the intrinsics, which both libraries take.
typedef float f32 __attribute__((vector_size(TMK_VECTOR_BYTES), may_alias));
typedef double f64 __attribute__((vector_size(TMK_VECTOR_BYTES), may_alias));

template <class Real>
struct register_of {
  using type = f32;
};
template <>
struct register_of<double> {
  using type = f64;
};

// Two results of a number, as the libraries give those of a register.
template <class Real>
struct two_numbers {
  Real x, y;
};
template <class Value>
void put(const Value& y, Value& first, Value&) {
  first = y;
}
template <class Two, class Value>
void put(const Two& y, Value& first, Value& second) {
  memcpy(&first, &y.x, sizeof first);
  memcpy(&second, &y.y, sizeof second);
}

// Function()(x), or of x and y where it has two arguments, value by value: registers, xsimd's or numbers.
template <class Function, class Value>
void apply(const Value& x, const Value& y, Value& first, Value& second) {
  if constexpr (requires { Function()(x, y); })
    put(Function()(x, y), first, second);
  else
    put(Function()(x), first, second);
}

// Whole registers, then the rest through registers filled with the last element.
template <class Real, class Function, class Vector = typename register_of<Real>::type>
void by_registers(const tmk::bench::call& c) {
  constexpr int width = sizeof(Vector) / sizeof(Real);
  const Real *a = static_cast<const Real*>(c.a), *b = static_cast<const Real*>(c.b);
  Real *r = static_cast<Real*>(c.r), *r2 = static_cast<Real*>(c.r2);
  constexpr bool has_b = requires(Vector x) { Function()(x, x); };
  Vector x, y, first, second;
  const auto from = [&](const Real* p, const Real* q) {
    memcpy(&x, p, sizeof x);
    if constexpr (has_b) memcpy(&y, q, sizeof y);
    apply<Function>(x, y, first, second);
  };
  constexpr bool has_r2 = requires(Vector v) { Function()(v).x; };
  const auto to = [&](int32_t i, size_t size) {
    memcpy(r + i, &first, size);
    if constexpr (has_r2) memcpy(r2 + i, &second, size);
  };
  int32_t i = 0;
  for (; i + width <= c.n; i += width) {
    from(a + i, b + i);
    to(i, sizeof x);
  }
  if (i == c.n) return;
  Real last_a[width], last_b[width];
  for (int k = 0; k < width; ++k) {
    const int32_t at = i + k < c.n ? i + k : c.n - 1;
    last_a[k] = a[at];
    last_b[k] = has_b ? b[at] : 0;
  }
  from(last_a, last_b);
  to(i, (c.n - i) * sizeof(Real));
}

template <class Real, class Expression>
void by_eigen(const tmk::bench::call& c) {
  using array = Eigen::Array<Real, Eigen::Dynamic, 1>;
  const Eigen::Map<const array> x(static_cast<const Real*>(c.a), c.n), y(static_cast<const Real*>(c.b), c.n);
  Eigen::Map<array> r(static_cast<Real*>(c.r), c.n);
  if constexpr (requires { Expression()(x, y); })
    r = Expression()(x, y);
  else
    r = Expression()(x);
}

template <class Real, class Function>
void by_elements(const tmk::bench::call& c) {
  const Real *a = static_cast<const Real*>(c.a), *b = static_cast<const Real*>(c.b);
  Real *r = static_cast<Real*>(c.r), *r2 = static_cast<Real*>(c.r2), unused;
  constexpr bool has_r2 = requires(Real v) { Function()(v).x; };
  for (int32_t i = 0; i < c.n; ++i) apply<Function>(a[i], b[i], r[i], has_r2 ? r2[i] : unused);
}

template <class Vector>
Vector same(Vector x) {
  // Opaque, so that the compiler does not replace the loop by memcpy.
  asm("" : "+x"(x));
  return x;
}

template <class Real>
void by_memcpy(const tmk::bench::call& c) {
  memcpy(c.r, c.a, c.n * sizeof(Real));
}

}  // namespace

// Peers of both precisions: how they are called, and the function of registers, arrays or numbers.
#define TMK_PEER(stem, library, how, arguments_s, value_s, arguments_d, value_d)    \
  {"s" #stem, library, how<float, decltype([] arguments_s { return value_s; })>}, { \
    "d" #stem, library, how<double, decltype([] arguments_d { return value_d; })>   \
  }
