// SPDX-License-Identifier: Apache-2.0
// Vector math: element-wise functions over arrays that you own.
//
//   tmk::exp(x, y);                        y[i] = e^x[i], at the thread's accuracy
//   tmk::exp(x, y, tmk::accuracy::fast);   half the bits
//   tmk::hypot(a, b, r);  tmk::powx(a, 2.5, r);  tmk::sin_cos(a, r1, r2);
//   tmk::mul(x, 2.0, y);  tmk::div(1.0, x, y);  tmk::fmax(x, 0.0, y);     one value for all elements
//   tmk::sqrt(tmk::matrix_view(p, rows, cols, stride, 1), m);              rows of a larger matrix
//   tmk::ln(tmk::real_parts(z), tmk::real_parts(z));                       parts of complex numbers
//
// Arguments are spans of const elements, results spans: vectors and arrays convert. Elements are float,
// double, std::complex of either ("real" below: the first two alone). All arrays of a call have the size of
// the first. A result may be the same array as an argument of the same element type, but may not overlap one
// otherwise, nor the other result. A call that breaks a rule throws tmk::error before anything is written.
//
// A tmk::matrix_view may take the place of each span: elements count row by row, every view has the shape of
// the first, and a result may take the place of an argument with the same strides. The elements pass through
// a small buffer. Functions of two arguments take a single value for either of them.
//
// The statuses named below are for bad elements (math_status): what becomes of them the innermost error_scope
// decides. The result is NaN for domain, infinite for singularity and overflow, tiny or 0 for underflow.
// NaN arguments give NaN, and infinities their limits, without a status.
#pragma once

#include <tmk/detail/shapes.hpp>
#include <tmk/scopes.hpp>

namespace tmk {

// Arithmetic

/// a + b. Complex: overflow.
inline constexpr detail::binary<detail::stem::Add> add;

/// a - b. Complex: overflow.
inline constexpr detail::binary<detail::stem::Sub> sub;

/// a b. Overflow, underflow; domain: 0 times infinity.
inline constexpr detail::binary<detail::stem::Mul> mul;

/// a conj(b), complex only. Overflow.
inline constexpr detail::complex_binary<detail::stem::MulByConj> mul_by_conj;

/// a / b. Real: singularity at b = 0, domain at 0 / 0, overflow, underflow. Complex: overflow.
inline constexpr detail::binary<detail::stem::Div> div;

/// a^2. Overflow, underflow.
inline constexpr detail::real_unary<detail::stem::Sqr> sqr;

/// Magnitude; complex arrays give real ones.
inline constexpr detail::overload_set<detail::real_unary<detail::stem::Abs>,
                                      detail::real_result<detail::stem::Abs>>
    abs;

/// Complex conjugate.
inline constexpr detail::complex_unary<detail::stem::Conj> conj;

/// Argument of a complex number, in [-pi, pi]; real results.
inline constexpr detail::real_result<detail::stem::Arg> arg;

/// (scalea a + shifta) / (scaleb b + shiftb), four scalars. Singularity at a zero divisor, domain at 0 / 0.
inline constexpr detail::overload_set<detail::linear_frac_call<float>, detail::linear_frac_call<double>>
    linear_frac;

/// Remainder of a / b with the sign of a. Domain: b = 0 or a infinite.
inline constexpr detail::real_binary<detail::stem::Fmod> fmod;

/// a - b n with n the integer nearest to a / b. Domain: b = 0 or a infinite.
inline constexpr detail::real_binary<detail::stem::Remainder> remainder;

/// a - b where a > b, else +0.
inline constexpr detail::real_binary<detail::stem::Fdim> fdim;

/// The larger; a NaN loses.
inline constexpr detail::real_binary<detail::stem::Fmax> fmax;

/// The smaller; a NaN loses.
inline constexpr detail::real_binary<detail::stem::Fmin> fmin;

/// The one of larger magnitude.
inline constexpr detail::real_binary<detail::stem::MaxMag> max_mag;

/// The one of smaller magnitude.
inline constexpr detail::real_binary<detail::stem::MinMag> min_mag;

/// a with the sign of b.
inline constexpr detail::real_binary<detail::stem::CopySign> copy_sign;

/// The neighbour of a towards b. Overflow past the largest number; underflow at subnormals.
inline constexpr detail::real_binary<detail::stem::NextAfter> next_after;

// Powers and roots

/// 1 / a. Singularity at +-0: +-infinity.
inline constexpr detail::real_unary<detail::stem::Inv> inv;

/// Square root. Real: domain below 0; -0 stays -0. Complex: right half plane.
inline constexpr detail::unary<detail::stem::Sqrt> sqrt;

/// 1 / sqrt(a). Domain below 0, singularity at +-0.
inline constexpr detail::real_unary<detail::stem::InvSqrt> inv_sqrt;

/// Cube root, of negative numbers as well.
inline constexpr detail::real_unary<detail::stem::Cbrt> cbrt;

/// 1 / cbrt(a). Singularity at +-0.
inline constexpr detail::real_unary<detail::stem::InvCbrt> inv_cbrt;

/// a^b. Domain: a < 0 with b no integer; singularity: 0 to a negative power; overflow, underflow. Complex:
/// principal value.
inline constexpr detail::binary<detail::stem::Pow> pow;

/// a^b with one b for all elements, as pow.
inline constexpr detail::scalar_exponent<detail::stem::Powx> powx;

/// a^b as exp(b ln a), a >= 0. Domain: a < 0, 0^0, infinity^0, 1^infinity; else as pow.
inline constexpr detail::real_binary<detail::stem::Powr> powr;

/// a^(2/3), of negative numbers as well. Underflow.
inline constexpr detail::real_unary<detail::stem::Pow2o3> pow2o3;

/// a^(3/2). Domain below 0; overflow, underflow.
inline constexpr detail::real_unary<detail::stem::Pow3o2> pow3o2;

/// sqrt(a^2 + b^2) without overflow on the way. Overflow.
inline constexpr detail::real_binary<detail::stem::Hypot> hypot;

// Exponentials and logarithms

/// e^a. Overflow, underflow; exp(-infinity) = 0.
inline constexpr detail::unary<detail::stem::Exp> exp;

/// 2^a. Overflow, underflow.
inline constexpr detail::real_unary<detail::stem::Exp2> exp2;

/// 10^a. Overflow, underflow.
inline constexpr detail::real_unary<detail::stem::Exp10> exp10;

/// e^a - 1 without cancellation near 0. Overflow.
inline constexpr detail::real_unary<detail::stem::Expm1> expm1;

/// Natural logarithm. Singularity at +-0; real: domain below 0; complex: imaginary part in [-pi, pi].
inline constexpr detail::unary<detail::stem::Ln> ln;

/// Binary logarithm. Singularity at +-0, domain below 0.
inline constexpr detail::real_unary<detail::stem::Log2> log2;

/// Decimal logarithm, as ln.
inline constexpr detail::unary<detail::stem::Log10> log10;

/// ln(1 + a) without cancellation near 0. Singularity at -1, domain below.
inline constexpr detail::real_unary<detail::stem::Log1p> log1p;

/// Exponent of a as a floating-point number, of subnormals the true one. Singularity at +-0.
inline constexpr detail::real_unary<detail::stem::Logb> logb;

// Trigonometric functions of radians, half turns (pi) and degrees (d)

/// Sine. Real: domain at infinities. Complex: overflow.
inline constexpr detail::unary<detail::stem::Sin> sin;

/// Cosine. Real: domain at infinities. Complex: overflow.
inline constexpr detail::unary<detail::stem::Cos> cos;

/// Tangent. Domain at real infinities.
inline constexpr detail::unary<detail::stem::Tan> tan;

/// Sine to r1, cosine to r2. Domain at infinities.
inline constexpr detail::two_results<detail::stem::SinCos> sin_cos;

/// cos a + i sin a; complex results of real arguments. Domain at infinities.
inline constexpr detail::real_argument<detail::stem::CIS> cis;

/// sin(pi a). Domain at infinities; exact at multiples of 1/2.
inline constexpr detail::real_unary<detail::stem::Sinpi> sinpi;

/// cos(pi a). Domain at infinities; exact at multiples of 1/2.
inline constexpr detail::real_unary<detail::stem::Cospi> cospi;

/// tan(pi a). Domain at infinities, singularity at odd halves.
inline constexpr detail::real_unary<detail::stem::Tanpi> tanpi;

/// sin of degrees. Domain at infinities; exact at multiples of 90.
inline constexpr detail::real_unary<detail::stem::Sind> sind;

/// cos of degrees. Domain at infinities; exact at multiples of 90.
inline constexpr detail::real_unary<detail::stem::Cosd> cosd;

/// tan of degrees. Domain at infinities, singularity at odd multiples of 90.
inline constexpr detail::real_unary<detail::stem::Tand> tand;

// Inverse trigonometric functions

/// Arc sine in [-pi/2, pi/2]. Real: domain |a| > 1. Complex: cuts along the real axis outside [-1, 1].
inline constexpr detail::unary<detail::stem::Asin> asin;

/// Arc cosine in [0, pi]. Domain and cuts as asin.
inline constexpr detail::unary<detail::stem::Acos> acos;

/// Arc tangent. Complex: cuts along the imaginary axis outside [-i, i], singularity at +-i.
inline constexpr detail::unary<detail::stem::Atan> atan;

/// Angle of the point (b, a), in [-pi, pi].
inline constexpr detail::real_binary<detail::stem::Atan2> atan2;

/// asin(a) / pi. Domain |a| > 1.
inline constexpr detail::real_unary<detail::stem::Asinpi> asinpi;

/// acos(a) / pi. Domain |a| > 1.
inline constexpr detail::real_unary<detail::stem::Acospi> acospi;

/// atan(a) / pi.
inline constexpr detail::real_unary<detail::stem::Atanpi> atanpi;

/// atan2(a, b) / pi.
inline constexpr detail::real_binary<detail::stem::Atan2pi> atan2pi;

// Hyperbolic functions and their inverses

/// Hyperbolic sine. Overflow.
inline constexpr detail::unary<detail::stem::Sinh> sinh;

/// Hyperbolic cosine. Overflow.
inline constexpr detail::unary<detail::stem::Cosh> cosh;

/// Hyperbolic tangent.
inline constexpr detail::unary<detail::stem::Tanh> tanh;

/// Inverse hyperbolic sine. Complex: cuts as atan.
inline constexpr detail::unary<detail::stem::Asinh> asinh;

/// Inverse hyperbolic cosine. Real: domain a < 1. Complex: cut along the real axis below 1.
inline constexpr detail::unary<detail::stem::Acosh> acosh;

/// Inverse hyperbolic tangent. Singularity at +-1; real: domain |a| > 1.
inline constexpr detail::unary<detail::stem::Atanh> atanh;

// Special functions

/// Error function.
inline constexpr detail::real_unary<detail::stem::Erf> erf;

/// 1 - erf(a). Underflow.
inline constexpr detail::real_unary<detail::stem::Erfc> erfc;

/// Inverse of erf. Domain |a| > 1, singularity at +-1.
inline constexpr detail::real_unary<detail::stem::ErfInv> erf_inv;

/// Inverse of erfc. Domain outside [0, 2], singularity at 0 and 2.
inline constexpr detail::real_unary<detail::stem::ErfcInv> erfc_inv;

/// Standard normal distribution function. Underflow.
inline constexpr detail::real_unary<detail::stem::CdfNorm> cdf_norm;

/// Quantile of the standard normal distribution. Domain outside [0, 1], singularity at 0 and 1.
inline constexpr detail::real_unary<detail::stem::CdfNormInv> cdf_norm_inv;

/// ln |gamma(a)|. Singularity at 0, -1, -2, ...; overflow.
inline constexpr detail::real_unary<detail::stem::LGamma> lgamma;

/// Gamma function. Singularity at +-0, domain at -1, -2, ...; overflow, underflow.
inline constexpr detail::real_unary<detail::stem::TGamma> tgamma;

/// Exponential integral E1, a > 0. Domain below 0, singularity at 0, underflow.
inline constexpr detail::real_unary<detail::stem::ExpInt1> exp_int1;

// Rounding to integers

/// Down.
inline constexpr detail::real_unary<detail::stem::Floor> floor;

/// Up.
inline constexpr detail::real_unary<detail::stem::Ceil> ceil;

/// Towards zero.
inline constexpr detail::real_unary<detail::stem::Trunc> trunc;

/// To the nearest, halves away from zero.
inline constexpr detail::real_unary<detail::stem::Round> round;

/// In the direction that the processor rounds.
inline constexpr detail::real_unary<detail::stem::NearbyInt> nearby_int;

/// As nearby_int.
inline constexpr detail::real_unary<detail::stem::Rint> rint;

/// Integer part to r1, fraction to r2, both with the sign of a.
inline constexpr detail::two_results<detail::stem::Modf> modf;

/// The fraction, with the sign of a.
inline constexpr detail::real_unary<detail::stem::Frac> frac;

// Gather and scatter of any element type, bits unchanged. The arrays of a call must not overlap. Masks and
// indices are arrays of std::int32_t or std::int64_t.

/// y[i] = a[i stride] for every i of y. A negative stride walks towards the beginning of a and ends there.
inline constexpr detail::over_all<detail::pack_stride, detail::stem::PackI> pack_strided;

/// The elements of a whose mask is not zero, in order, to the beginning of y. Returns their number.
inline constexpr detail::over_all<detail::pack_entries, detail::stem::PackM> pack_masked;

/// y[i] = a[index[i]]. An index outside a raises tmk::error.
inline constexpr detail::over_all<detail::pack_entries, detail::stem::PackV> pack_indexed;

/// y[i stride] = a[i] for every i of a. A negative stride walks towards the beginning of y and ends there.
inline constexpr detail::over_all<detail::unpack_stride, detail::stem::UnpackI> unpack_strided;

/// The elements of a, in order, to the places of y whose mask is not zero; the other places stay. Returns
/// their number.
inline constexpr detail::over_all<detail::unpack_entries, detail::stem::UnpackM> unpack_masked;

/// y[index[i]] = a[i]; of equal indices the last counts. An index outside y raises tmk::error.
inline constexpr detail::over_all<detail::unpack_entries, detail::stem::UnpackV> unpack_indexed;

}  // namespace tmk
