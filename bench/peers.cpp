// SPDX-License-Identifier: Apache-2.0
// Compiled once per tier. The build renames Eigen's namespace, because its inline functions have one name in
// all instruction sets; for the same reason nothing here may use inline functions of a library that the
// linker could merge.
#include "peers.hpp"

#include <immintrin.h>
#include <math.h>
#include <sleef.h>
#include <string.h>

#include <Eigen/Core>

#if defined __AVX512F__
#define TMK_VECTOR_BYTES 64
#define TMK_SLEEF_single(base, error) Sleef_##base##f16_##error##avx512f
#define TMK_SLEEF_double(base, error) Sleef_##base##d8_##error##avx512f
#define TMK_LIBMVEC_single(base) _ZGVeN16v_##base##f
#define TMK_LIBMVEC_double(base) _ZGVeN8v_##base
#define TMK_PEERS peers_V4
#elif defined __AVX2__
#define TMK_VECTOR_BYTES 32
#define TMK_SLEEF_single(base, error) Sleef_##base##f8_##error##avx2
#define TMK_SLEEF_double(base, error) Sleef_##base##d4_##error##avx2
#define TMK_LIBMVEC_single(base) _ZGVdN8v_##base##f
#define TMK_LIBMVEC_double(base) _ZGVdN4v_##base
#define TMK_PEERS peers_V3
#else
#define TMK_VECTOR_BYTES 16
#define TMK_SLEEF_single(base, error) Sleef_##base##f4_##error##sse2
#define TMK_SLEEF_double(base, error) Sleef_##base##d2_##error##sse2
#define TMK_LIBMVEC_single(base) _ZGVbN4v_##base##f
#define TMK_LIBMVEC_double(base) _ZGVbN2v_##base
#define TMK_PEERS peers_W7
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

// Whole registers, then the rest through a register filled with the last element.
template <class Real, auto Function>
void by_registers(int32_t n, const void* a, void* r) {
  using vector = typename register_of<Real>::type;
  constexpr int width = sizeof(vector) / sizeof(Real);
  const Real* from = static_cast<const Real*>(a);
  Real* to = static_cast<Real*>(r);
  int32_t i = 0;
  for (; i + width <= n; i += width) {
    vector x;
    memcpy(&x, from + i, sizeof x);
    x = Function(x);
    memcpy(to + i, &x, sizeof x);
  }
  if (i == n) return;
  vector x{};
  for (int k = 0; k < width; ++k) x[k] = from[i + k < n ? i + k : n - 1];
  x = Function(x);
  memcpy(to + i, &x, (n - i) * sizeof(Real));
}

template <class Real, class Expression>
void by_eigen(int32_t n, const void* a, void* r) {
  using array = Eigen::Array<Real, Eigen::Dynamic, 1>;
  const Eigen::Map<const array> x(static_cast<const Real*>(a), n);
  Eigen::Map<array>(static_cast<Real*>(r), n) = Expression()(x);
}

template <class Real, class Function>
void by_elements(int32_t n, const void* a, void* r) {
  const Real* from = static_cast<const Real*>(a);
  Real* to = static_cast<Real*>(r);
  for (int32_t i = 0; i < n; ++i) to[i] = Function()(from[i]);
}

template <class Vector>
Vector same(Vector x) {
  // Opaque, so that the compiler does not replace the loop by memcpy.
  asm("" : "+x"(x));
  return x;
}

template <class Real>
void by_memcpy(int32_t n, const void* a, void* r) {
  memcpy(r, a, n * sizeof(Real));
}

}  // namespace

// The vector functions of the C library have no header of their own.
#define TMK_DECLARE(base)                         \
  extern "C" f32 TMK_LIBMVEC_single(base)(f32 x); \
  extern "C" f64 TMK_LIBMVEC_double(base)(f64 x);
TMK_DECLARE(exp)
TMK_DECLARE(exp2)
TMK_DECLARE(exp10)
TMK_DECLARE(expm1)
TMK_DECLARE(log)
TMK_DECLARE(log2)
TMK_DECLARE(log10)
TMK_DECLARE(log1p)
TMK_DECLARE(sin)
TMK_DECLARE(tanh)
TMK_DECLARE(erf)
TMK_DECLARE(cbrt)

namespace tmk::bench {
namespace {

#define TMK_LIBMVEC(stem, base)                                            \
  {"s" #stem, "libmvec", by_registers<float, TMK_LIBMVEC_single(base)>}, { \
    "d" #stem, "libmvec", by_registers<double, TMK_LIBMVEC_double(base)>   \
  }
#define TMK_SLEEF(stem, base, error)                                                  \
  {"s" #stem, "SLEEF " #error, by_registers<float, TMK_SLEEF_single(base, error)>}, { \
    "d" #stem, "SLEEF " #error, by_registers<double, TMK_SLEEF_double(base, error)>   \
  }
#define TMK_EIGEN(stem, expression)                                                            \
  {"s" #stem, "Eigen", by_eigen<float, decltype([](const auto& x) { return expression; })>}, { \
    "d" #stem, "Eigen", by_eigen<double, decltype([](const auto& x) { return expression; })>   \
  }
// One element after the other, as the compiler makes of the loop at this instruction set.
#define TMK_LOOP(stem, single, twice)                                                  \
  {"s" #stem, "loop", by_elements<float, decltype([](float x) { return single; })>}, { \
    "d" #stem, "loop", by_elements<double, decltype([](double x) { return twice; })>   \
  }
#define TMK_COPY(stem)                                                                                    \
  {"s" #stem, copy_name, by_registers<float, same<f32>>},                                                 \
      {"d" #stem, copy_name, by_registers<double, same<f64>>}, {"s" #stem, "memcpy", by_memcpy<float>}, { \
    "d" #stem, "memcpy", by_memcpy<double>                                                                \
  }

const peer rows[] = {
    TMK_LOOP(Inv, 1 / x, 1 / x),
    TMK_EIGEN(Inv, x.inverse()),
    TMK_COPY(Inv),
    TMK_LOOP(Sqrt, sqrtf(x), sqrt(x)),
    TMK_EIGEN(Sqrt, x.sqrt()),
    TMK_SLEEF(Sqrt, sqrt, u05),
    TMK_SLEEF(Sqrt, sqrt, u35),
    TMK_COPY(Sqrt),
    TMK_LOOP(InvSqrt, 1 / sqrtf(x), 1 / sqrt(x)),
    TMK_EIGEN(InvSqrt, x.rsqrt()),
    TMK_COPY(InvSqrt),
    TMK_LOOP(Abs, fabsf(x), fabs(x)),
    TMK_EIGEN(Abs, x.abs()),
    TMK_COPY(Abs),

    TMK_LOOP(Exp, expf(x), exp(x)),
    TMK_LIBMVEC(Exp, exp),
    TMK_SLEEF(Exp, exp, u10),
    TMK_EIGEN(Exp, x.exp()),
    TMK_LOOP(Exp2, exp2f(x), exp2(x)),
    TMK_LIBMVEC(Exp2, exp2),
    TMK_SLEEF(Exp2, exp2, u10),
    TMK_SLEEF(Exp2, exp2, u35),
    TMK_LOOP(Exp10, exp10f(x), exp10(x)),
    TMK_LIBMVEC(Exp10, exp10),
    TMK_SLEEF(Exp10, exp10, u10),
    TMK_SLEEF(Exp10, exp10, u35),
    TMK_LOOP(Expm1, expm1f(x), expm1(x)),
    TMK_LIBMVEC(Expm1, expm1),
    TMK_SLEEF(Expm1, expm1, u10),
    TMK_EIGEN(Expm1, x.expm1()),
    TMK_LOOP(Ln, logf(x), log(x)),
    TMK_LIBMVEC(Ln, log),
    TMK_SLEEF(Ln, log, u10),
    TMK_SLEEF(Ln, log, u35),
    TMK_EIGEN(Ln, x.log()),
    TMK_LOOP(Log2, log2f(x), log2(x)),
    TMK_LIBMVEC(Log2, log2),
    TMK_SLEEF(Log2, log2, u10),
    TMK_SLEEF(Log2, log2, u35),
    TMK_EIGEN(Log2, x.log2()),
    TMK_LOOP(Log10, log10f(x), log10(x)),
    TMK_LIBMVEC(Log10, log10),
    TMK_SLEEF(Log10, log10, u10),
    TMK_EIGEN(Log10, x.log10()),
    TMK_LOOP(Log1p, log1pf(x), log1p(x)),
    TMK_LIBMVEC(Log1p, log1p),
    TMK_SLEEF(Log1p, log1p, u10),
    TMK_EIGEN(Log1p, x.log1p()),
    TMK_LOOP(Logb, logbf(x), logb(x)),

    TMK_LOOP(Sin, sinf(x), sin(x)),
    TMK_LIBMVEC(Sin, sin),
    TMK_SLEEF(Sin, sin, u10),
    TMK_SLEEF(Sin, sin, u35),
    TMK_EIGEN(Sin, x.sin()),
    TMK_LOOP(Tanh, tanhf(x), tanh(x)),
    TMK_LIBMVEC(Tanh, tanh),
    TMK_SLEEF(Tanh, tanh, u10),
    TMK_SLEEF(Tanh, tanh, u35),
    TMK_EIGEN(Tanh, x.tanh()),
    TMK_LOOP(Erf, erff(x), erf(x)),
    TMK_LIBMVEC(Erf, erf),
    TMK_SLEEF(Erf, erf, u10),
    TMK_LOOP(Cbrt, cbrtf(x), cbrt(x)),
    TMK_LIBMVEC(Cbrt, cbrt),
    TMK_SLEEF(Cbrt, cbrt, u10),
    TMK_SLEEF(Cbrt, cbrt, u35),
};

}  // namespace

peer_list TMK_PEERS() { return {rows, sizeof rows / sizeof rows[0]}; }

}  // namespace tmk::bench
