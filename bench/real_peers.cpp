// SPDX-License-Identifier: Apache-2.0
// Peers of the real functions. Compiled once per tier.
#include "boost_peers.hpp"
#include "peer_forms.hpp"

// The vector functions of the C library have no header of their own.
#define TMK_DECLARE(base)                            \
  extern "C" f32 TMK_LIBMVEC_single(v, base)(f32 x); \
  extern "C" f64 TMK_LIBMVEC_double(v, base)(f64 x);
#define TMK_DECLARE_BINARY(base)                             \
  extern "C" f32 TMK_LIBMVEC_single(vv, base)(f32 x, f32 y); \
  extern "C" f64 TMK_LIBMVEC_double(vv, base)(f64 x, f64 y);
TMK_DECLARE(exp)
TMK_DECLARE(exp2)
TMK_DECLARE(exp10)
TMK_DECLARE(expm1)
TMK_DECLARE(log)
TMK_DECLARE(log2)
TMK_DECLARE(log10)
TMK_DECLARE(log1p)
TMK_DECLARE(sin)
TMK_DECLARE(cos)
TMK_DECLARE(tan)
TMK_DECLARE(asin)
TMK_DECLARE(acos)
TMK_DECLARE(atan)
TMK_DECLARE(sinh)
TMK_DECLARE(cosh)
TMK_DECLARE(tanh)
TMK_DECLARE(asinh)
TMK_DECLARE(acosh)
TMK_DECLARE(atanh)
TMK_DECLARE(erf)
TMK_DECLARE(erfc)
TMK_DECLARE(cbrt)
TMK_DECLARE_BINARY(atan2)
TMK_DECLARE_BINARY(hypot)
TMK_DECLARE_BINARY(pow)

namespace tmk::bench {
namespace {

#define TMK_LIBMVEC(stem, base)                                                             \
  TMK_PEER(stem, "libmvec", by_registers, (f32 x), TMK_LIBMVEC_single(v, base)(x), (f64 x), \
           TMK_LIBMVEC_double(v, base)(x))
#define TMK_LIBMVEC_BINARY(stem, base)                                                        \
  TMK_PEER(stem, "libmvec", by_registers, (f32 x, f32 y), TMK_LIBMVEC_single(vv, base)(x, y), \
           (f64 x, f64 y), TMK_LIBMVEC_double(vv, base)(x, y))
#define TMK_SLEEF(stem, base, error)                                                                \
  TMK_PEER(stem, "SLEEF " #error, by_registers, (f32 x), TMK_SLEEF_single(base, error)(x), (f64 x), \
           TMK_SLEEF_double(base, error)(x))
#define TMK_SLEEF_BINARY(stem, base, error)                                                          \
  TMK_PEER(stem, "SLEEF " #error, by_registers, (f32 x, f32 y), TMK_SLEEF_single(base, error)(x, y), \
           (f64 x, f64 y), TMK_SLEEF_double(base, error)(x, y))
#define TMK_EIGEN(stem, expression) \
  TMK_PEER(stem, "Eigen", by_eigen, (const auto& x), expression, (const auto& x), expression)
#define TMK_EIGEN_BINARY(stem, expression)                                      \
  TMK_PEER(stem, "Eigen", by_eigen, (const auto& x, const auto& y), expression, \
           (const auto& x, const auto& y), expression)
#define TMK_XSIMD(stem, base)                                                                            \
  TMK_PEER(stem, "xsimd", by_registers, (f32 x), f32(xsimd::base(xsimd::batch<float>(x)).data), (f64 x), \
           f64(xsimd::base(xsimd::batch<double>(x)).data))
#define TMK_XSIMD_BINARY(stem, base)                                                              \
  TMK_PEER(stem, "xsimd", by_registers, (f32 x, f32 y),                                           \
           f32(xsimd::base(xsimd::batch<float>(x), xsimd::batch<float>(y)).data), (f64 x, f64 y), \
           f64(xsimd::base(xsimd::batch<double>(x), xsimd::batch<double>(y)).data))
// One element after the other, as the compiler makes of the loop at this instruction set.
#define TMK_LOOP(stem, single, twice) \
  TMK_PEER(stem, "loop", by_elements, (float x), single, (double x), twice)
#define TMK_LOOP_BINARY(stem, single, twice) \
  TMK_PEER(stem, "loop", by_elements, (float x, float y), single, (double x, double y), twice)
#define TMK_COPY(stem)                                                         \
  TMK_PEER(stem, copy_name, by_registers, (f32 x), same(x), (f64 x), same(x)), \
      {"s" #stem, "memcpy", by_memcpy<float>}, {                               \
    "d" #stem, "memcpy", by_memcpy<double>                                     \
  }

struct two_f32 {
  f32 x, y;
};
struct two_f64 {
  f64 x, y;
};
two_f32 xsimd_sincos(f32 x) {
  const auto [sine, cosine] = xsimd::sincos(xsimd::batch<float>(x));
  return {f32(sine.data), f32(cosine.data)};
}
two_f64 xsimd_sincos(f64 x) {
  const auto [sine, cosine] = xsimd::sincos(xsimd::batch<double>(x));
  return {f64(sine.data), f64(cosine.data)};
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
    TMK_XSIMD(Sin, sin),
    TMK_LOOP(Cos, cosf(x), cos(x)),
    TMK_LIBMVEC(Cos, cos),
    TMK_SLEEF(Cos, cos, u10),
    TMK_SLEEF(Cos, cos, u35),
    TMK_EIGEN(Cos, x.cos()),
    TMK_XSIMD(Cos, cos),
    TMK_LOOP(Tan, tanf(x), tan(x)),
    TMK_LIBMVEC(Tan, tan),
    TMK_SLEEF(Tan, tan, u10),
    TMK_SLEEF(Tan, tan, u35),
    TMK_EIGEN(Tan, x.tan()),
    TMK_XSIMD(Tan, tan),
    TMK_PEER(SinCos, "loop", by_elements, (float x), (two_numbers<float>{sinf(x), cosf(x)}), (double x),
             (two_numbers<double>{sin(x), cos(x)})),
    TMK_SLEEF(SinCos, sincos, u10),
    TMK_SLEEF(SinCos, sincos, u35),
    TMK_PEER(SinCos, "xsimd", by_registers, (f32 x), xsimd_sincos(x), (f64 x), xsimd_sincos(x)),
    TMK_LOOP(Sinpi, sinf(x * 0x1.921fb6p1f), sin(x * 0x1.921fb54442d18p1)),
    TMK_SLEEF(Sinpi, sinpi, u05),
    TMK_LOOP(Cospi, cosf(x * 0x1.921fb6p1f), cos(x * 0x1.921fb54442d18p1)),
    TMK_SLEEF(Cospi, cospi, u05),
    TMK_LOOP(Tanpi, tanf(x * 0x1.921fb6p1f), tan(x * 0x1.921fb54442d18p1)),
    TMK_LOOP(Sind, sinf(x * 0x1.1df46ap-6f), sin(x * 0x1.1df46a2529d39p-6)),
    TMK_LOOP(Cosd, cosf(x * 0x1.1df46ap-6f), cos(x * 0x1.1df46a2529d39p-6)),
    TMK_LOOP(Tand, tanf(x * 0x1.1df46ap-6f), tan(x * 0x1.1df46a2529d39p-6)),

    TMK_LOOP(Asin, asinf(x), asin(x)),
    TMK_LIBMVEC(Asin, asin),
    TMK_SLEEF(Asin, asin, u10),
    TMK_SLEEF(Asin, asin, u35),
    TMK_EIGEN(Asin, x.asin()),
    TMK_XSIMD(Asin, asin),
    TMK_LOOP(Acos, acosf(x), acos(x)),
    TMK_LIBMVEC(Acos, acos),
    TMK_SLEEF(Acos, acos, u10),
    TMK_SLEEF(Acos, acos, u35),
    TMK_EIGEN(Acos, x.acos()),
    TMK_XSIMD(Acos, acos),
    TMK_LOOP(Atan, atanf(x), atan(x)),
    TMK_LIBMVEC(Atan, atan),
    TMK_SLEEF(Atan, atan, u10),
    TMK_SLEEF(Atan, atan, u35),
    TMK_EIGEN(Atan, x.atan()),
    TMK_XSIMD(Atan, atan),
    TMK_LOOP(Asinpi, asinf(x) * 0x1.45f306p-2f, asin(x) * 0x1.45f306dc9c883p-2),
    TMK_LOOP(Acospi, acosf(x) * 0x1.45f306p-2f, acos(x) * 0x1.45f306dc9c883p-2),
    TMK_LOOP(Atanpi, atanf(x) * 0x1.45f306p-2f, atan(x) * 0x1.45f306dc9c883p-2),
    TMK_LOOP_BINARY(Atan2, atan2f(x, y), atan2(x, y)),
    TMK_LIBMVEC_BINARY(Atan2, atan2),
    TMK_SLEEF_BINARY(Atan2, atan2, u10),
    TMK_SLEEF_BINARY(Atan2, atan2, u35),
    TMK_XSIMD_BINARY(Atan2, atan2),
    TMK_LOOP_BINARY(Atan2pi, atan2f(x, y) * 0x1.45f306p-2f, atan2(x, y) * 0x1.45f306dc9c883p-2),

    TMK_LOOP(Sinh, sinhf(x), sinh(x)),
    TMK_LIBMVEC(Sinh, sinh),
    TMK_SLEEF(Sinh, sinh, u10),
    TMK_SLEEF(Sinh, sinh, u35),
    TMK_EIGEN(Sinh, x.sinh()),
    TMK_XSIMD(Sinh, sinh),
    TMK_LOOP(Cosh, coshf(x), cosh(x)),
    TMK_LIBMVEC(Cosh, cosh),
    TMK_SLEEF(Cosh, cosh, u10),
    TMK_SLEEF(Cosh, cosh, u35),
    TMK_EIGEN(Cosh, x.cosh()),
    TMK_XSIMD(Cosh, cosh),
    TMK_LOOP(Tanh, tanhf(x), tanh(x)),
    TMK_LIBMVEC(Tanh, tanh),
    TMK_SLEEF(Tanh, tanh, u10),
    TMK_SLEEF(Tanh, tanh, u35),
    TMK_EIGEN(Tanh, x.tanh()),
    TMK_XSIMD(Tanh, tanh),
    TMK_LOOP(Asinh, asinhf(x), asinh(x)),
    TMK_LIBMVEC(Asinh, asinh),
    TMK_SLEEF(Asinh, asinh, u10),
    TMK_EIGEN(Asinh, x.asinh()),
    TMK_XSIMD(Asinh, asinh),
    TMK_LOOP(Acosh, acoshf(x), acosh(x)),
    TMK_LIBMVEC(Acosh, acosh),
    TMK_SLEEF(Acosh, acosh, u10),
    TMK_EIGEN(Acosh, x.acosh()),
    TMK_XSIMD(Acosh, acosh),
    TMK_LOOP(Atanh, atanhf(x), atanh(x)),
    TMK_LIBMVEC(Atanh, atanh),
    TMK_SLEEF(Atanh, atanh, u10),
    TMK_EIGEN(Atanh, x.atanh()),
    TMK_XSIMD(Atanh, atanh),

    TMK_LOOP_BINARY(Pow, powf(x, y), pow(x, y)),
    TMK_LIBMVEC_BINARY(Pow, pow),
    TMK_SLEEF_BINARY(Pow, pow, u10),
    TMK_XSIMD_BINARY(Pow, pow),
    TMK_LOOP_BINARY(Powr, powf(x, y), pow(x, y)),
    TMK_LIBMVEC_BINARY(Powr, pow),
    TMK_SLEEF_BINARY(Powr, pow, u10),
    TMK_LOOP_BINARY(Powx, powf(x, y), pow(x, y)),
    TMK_LIBMVEC_BINARY(Powx, pow),
    TMK_SLEEF_BINARY(Powx, pow, u10),
    TMK_LOOP(Pow2o3, cbrtf(x* x), cbrt(x* x)),
    TMK_LOOP(Pow3o2, x* sqrtf(x), x* sqrt(x)),
    TMK_LOOP(Cbrt, cbrtf(x), cbrt(x)),
    TMK_LIBMVEC(Cbrt, cbrt),
    TMK_SLEEF(Cbrt, cbrt, u10),
    TMK_SLEEF(Cbrt, cbrt, u35),
    TMK_XSIMD(Cbrt, cbrt),
    TMK_LOOP(InvCbrt, 1 / cbrtf(x), 1 / cbrt(x)),
    TMK_LOOP_BINARY(Hypot, hypotf(x, y), hypot(x, y)),
    TMK_LIBMVEC_BINARY(Hypot, hypot),
    TMK_SLEEF_BINARY(Hypot, hypot, u05),
    TMK_SLEEF_BINARY(Hypot, hypot, u35),
    TMK_XSIMD_BINARY(Hypot, hypot),

    TMK_LOOP(Erf, erff(x), erf(x)),
    TMK_LIBMVEC(Erf, erf),
    TMK_SLEEF(Erf, erf, u10),
    TMK_LOOP(Erfc, erfcf(x), erfc(x)),
    TMK_LIBMVEC(Erfc, erfc),
    TMK_SLEEF(Erfc, erfc, u15),
    TMK_LOOP(TGamma, tgammaf(x), tgamma(x)),
    TMK_SLEEF(TGamma, tgamma, u10),
    TMK_LOOP(LGamma, lgammaf(x), lgamma(x)),
    TMK_SLEEF(LGamma, lgamma, u10),
    TMK_PEER(ExpInt1, "Boost.Math", by_elements, (float x), boost_expint1(x), (double x), boost_expint1(x)),
    TMK_PEER(ExpInt1, "Boost.Math narrow", by_elements, (float x), boost_narrow_expint1(x), (double x),
             boost_narrow_expint1(x)),
    TMK_EIGEN(Erf, x.erf()),
    TMK_LOOP(CdfNorm, 0.5f * erfcf(-0x1.6a09e6p-1f * x), 0.5 * erfc(-0x1.6a09e667f3bcdp-1 * x)),
    TMK_EIGEN(CdfNormInv, x.ndtri()),
    TMK_PEER(ErfInv, "Boost.Math", by_elements, (float x), boost_erf_inv(x), (double x), boost_erf_inv(x)),
    TMK_PEER(ErfcInv, "Boost.Math", by_elements, (float x), boost_erfc_inv(x), (double x), boost_erfc_inv(x)),

    TMK_LOOP_BINARY(Add, x + y, x + y),
    TMK_EIGEN_BINARY(Add, x + y),
    TMK_LOOP_BINARY(Sub, x - y, x - y),
    TMK_EIGEN_BINARY(Sub, x - y),
    TMK_LOOP_BINARY(Mul, x* y, x* y),
    TMK_EIGEN_BINARY(Mul, x* y),
    TMK_LOOP_BINARY(Div, x / y, x / y),
    TMK_EIGEN_BINARY(Div, x / y),
    TMK_LOOP_BINARY(Fmax, fmaxf(x, y), fmax(x, y)),
    TMK_EIGEN_BINARY(Fmax, x.max(y)),
    TMK_LOOP_BINARY(Fmin, fminf(x, y), fmin(x, y)),
    TMK_EIGEN_BINARY(Fmin, x.min(y)),
    TMK_LOOP_BINARY(MaxMag, fabsf(x) < fabsf(y) ? y : x, fabs(x) < fabs(y) ? y : x),
    TMK_LOOP_BINARY(MinMag, fabsf(y) < fabsf(x) ? y : x, fabs(y) < fabs(x) ? y : x),
    TMK_LOOP_BINARY(Fdim, x <= y ? 0 : x - y, x <= y ? 0 : x - y),
    TMK_SLEEF_BINARY(Fdim, fdim, ),
    TMK_LOOP_BINARY(LinearFrac, (1.5f * x + 0.25f) / (0.75f * y + 20), (1.5 * x + 0.25) / (0.75 * y + 20)),
    TMK_LOOP_BINARY(CopySign, copysignf(x, y), copysign(x, y)),
    TMK_SLEEF_BINARY(NextAfter, nextafter, ),
    TMK_LOOP_BINARY(NextAfter, nextafterf(x, y), nextafter(x, y)),
    TMK_LOOP(Sqr, x* x, x* x),
    TMK_EIGEN(Sqr, x.square()),
    TMK_LOOP_BINARY(Fmod, fmodf(x, y), fmod(x, y)),
    TMK_SLEEF_BINARY(Fmod, fmod, ),
    TMK_LOOP_BINARY(Remainder, remainderf(x, y), remainder(x, y)),
    TMK_SLEEF_BINARY(Remainder, remainder, ),
    TMK_LOOP(Trunc, truncf(x), trunc(x)),
    TMK_SLEEF(Trunc, trunc, ),
    TMK_LOOP(NearbyInt, nearbyintf(x), nearbyint(x)),
    TMK_LOOP(Frac, x - truncf(x), x - trunc(x)),
    TMK_PEER(Modf, "loop", by_elements, (float x), (two_numbers<float>{truncf(x), x - truncf(x)}), (double x),
             (two_numbers<double>{trunc(x), x - trunc(x)})),
    TMK_LOOP(Floor, floorf(x), floor(x)),
    TMK_EIGEN(Floor, x.floor()),
    TMK_LOOP(Ceil, ceilf(x), ceil(x)),
    TMK_EIGEN(Ceil, x.ceil()),
    TMK_LOOP(Rint, rintf(x), rint(x)),
    TMK_EIGEN(Rint, x.rint()),
    TMK_LOOP(Round, roundf(x), round(x)),
    TMK_EIGEN(Round, x.round()),
};

}  // namespace

peer_list TMK_PEERS(real)() { return {rows, sizeof rows / sizeof rows[0]}; }

}  // namespace tmk::bench
