// SPDX-License-Identifier: Apache-2.0
// Peers of the complex functions. Compiled once per tier. The loop is over the language's own complex
// numbers, which are those of std::complex: its products and quotients recover infinities (ISO C, annex G),
// and the other functions are the C library's. Eigen's and xsimd's products and quotients have no special
// cases. xsimd's acosh has other branches, and is no peer.
#include <complex>

#include "peer_forms.hpp"

namespace {

typedef __complex__ float c8;
typedef __complex__ double c16;

// Function()(x), or of x and y where it has two arguments.
template <class Function, class Value>
auto apply_complex(const Value& x, const Value& y) {
  if constexpr (requires { Function()(x, y); })
    return Function()(x, y);
  else
    return Function()(x);
}

template <class Element, class Function>
void by_complex_elements(const tmk::bench::call& c) {
  const Element *a = static_cast<const Element*>(c.a), *b = static_cast<const Element*>(c.b);
  auto* r = static_cast<decltype(apply_complex<Function>(*a, *b))*>(c.r);
  for (int32_t i = 0; i < c.n; ++i) r[i] = apply_complex<Function>(a[i], b[i]);
}

template <class Element, class Function>
void by_complex_eigen(const tmk::bench::call& c) {
  using array = Eigen::Array<Element, Eigen::Dynamic, 1>;
  const Eigen::Map<const array> x(static_cast<const Element*>(c.a), c.n),
      y(static_cast<const Element*>(c.b), c.n);
  const auto expression = apply_complex<Function>(x, y);
  using result = typename decltype(expression)::Scalar;
  Eigen::Map<Eigen::Array<result, Eigen::Dynamic, 1>>(static_cast<result*>(c.r), c.n) = expression;
}

// Whole registers, then the rest through registers filled with the last element.
template <class Element, class Function>
void by_complex_registers(const tmk::bench::call& c) {
  using registers = xsimd::batch<Element>;
  constexpr int32_t width = registers::size;
  const Element *a = static_cast<const Element*>(c.a), *b = static_cast<const Element*>(c.b);
  const auto of = [](const Element* x, const Element* y) {
    return apply_complex<Function>(registers::load_unaligned(x), registers::load_unaligned(y));
  };
  using result = typename decltype(of(a, b))::value_type;
  result* r = static_cast<result*>(c.r);
  int32_t i = 0;
  for (; i + width <= c.n; i += width) of(a + i, b + i).store_unaligned(r + i);
  if (i == c.n) return;
  Element last_a[width], last_b[width];
  result last_r[width];
  for (int32_t k = 0; k < width; ++k) {
    last_a[k] = a[i + k < c.n ? i + k : c.n - 1];
    last_b[k] = b[i + k < c.n ? i + k : c.n - 1];
  }
  of(last_a, last_b).store_unaligned(last_r);
  memcpy(r + i, last_r, (c.n - i) * sizeof(result));
}

}  // namespace

namespace tmk::bench {
namespace {

#define TMK_COMPLEX_PEER(stem, library, how, element_s, element_d, arguments_s, value_s, arguments_d, \
                         value_d)                                                                     \
  {"c" #stem, library, how<element_s, decltype([] arguments_s { return value_s; })>}, {               \
    "z" #stem, library, how<element_d, decltype([] arguments_d { return value_d; })>                  \
  }
#define TMK_LOOP(stem, base)                                                                            \
  TMK_COMPLEX_PEER(stem, "loop", by_complex_elements, c8, c16, (c8 x), __builtin_##base##f(x), (c16 x), \
                   __builtin_##base(x))
#define TMK_LOOP_BINARY(stem, value) \
  TMK_COMPLEX_PEER(stem, "loop", by_complex_elements, c8, c16, (c8 x, c8 y), value, (c16 x, c16 y), value)
#define TMK_EIGEN(stem, arguments, value)                                                                 \
  TMK_COMPLEX_PEER(stem, "Eigen", by_complex_eigen, std::complex<float>, std::complex<double>, arguments, \
                   value, arguments, value)
#define TMK_XSIMD(stem, arguments, value)                                                          \
  TMK_COMPLEX_PEER(stem, "xsimd", by_complex_registers, std::complex<float>, std::complex<double>, \
                   arguments, value, arguments, value)
#define TMK_ONE (const auto& x)
#define TMK_TWO (const auto& x, const auto& y)

c8 cis(float x) {
  c8 z;
  __real__ z = cosf(x);
  __imag__ z = sinf(x);
  return z;
}
c16 cis(double x) {
  c16 z;
  __real__ z = cos(x);
  __imag__ z = sin(x);
  return z;
}
c8 c_pow(c8 x, c8 y) { return __builtin_cpowf(x, y); }
c16 c_pow(c16 x, c16 y) { return __builtin_cpow(x, y); }

// The exponent of Powx: one element for all.
template <class Element, class Function>
void by_complex_elements_and_exponent(const tmk::bench::call& c) {
  const Element *a = static_cast<const Element*>(c.a), *b = static_cast<const Element*>(c.b);
  Element* r = static_cast<Element*>(c.r);
  for (int32_t i = 0; i < c.n; ++i) r[i] = Function()(a[i], *b);
}

const peer rows[] = {
    TMK_LOOP_BINARY(Add, x + y),
    TMK_EIGEN(Add, TMK_TWO, x + y),
    TMK_LOOP_BINARY(Sub, x - y),
    TMK_EIGEN(Sub, TMK_TWO, x - y),
    TMK_LOOP_BINARY(Mul, x* y),
    TMK_EIGEN(Mul, TMK_TWO, x* y),
    TMK_XSIMD(Mul, TMK_TWO, x* y),
    TMK_LOOP_BINARY(MulByConj, x * ~y),
    TMK_EIGEN(MulByConj, TMK_TWO, x* y.conjugate()),
    TMK_XSIMD(MulByConj, TMK_TWO, x* xsimd::conj(y)),
    TMK_LOOP_BINARY(Div, x / y),
    TMK_EIGEN(Div, TMK_TWO, x / y),
    TMK_XSIMD(Div, TMK_TWO, x / y),
    TMK_LOOP(Abs, cabs),
    TMK_EIGEN(Abs, TMK_ONE, x.abs()),
    TMK_XSIMD(Abs, TMK_ONE, xsimd::abs(x)),
    TMK_LOOP(Conj, conj),
    TMK_LOOP(Arg, carg),
    TMK_XSIMD(Arg, TMK_ONE, xsimd::arg(x)),
    TMK_COMPLEX_PEER(CIS, "loop", by_complex_elements, float, double, (float x), cis(x), (double x), cis(x)),
    TMK_LOOP(Sqrt, csqrt),
    TMK_EIGEN(Sqrt, TMK_ONE, x.sqrt()),
    TMK_XSIMD(Sqrt, TMK_ONE, xsimd::sqrt(x)),
    TMK_LOOP(Exp, cexp),
    TMK_XSIMD(Exp, TMK_ONE, xsimd::exp(x)),
    TMK_LOOP(Ln, clog),
    TMK_XSIMD(Ln, TMK_ONE, xsimd::log(x)),
    TMK_LOOP(Log10, clog10),
    TMK_XSIMD(Log10, TMK_ONE, xsimd::log10(x)),
    TMK_LOOP_BINARY(Pow, c_pow(x, y)),
    TMK_COMPLEX_PEER(Powx, "loop", by_complex_elements_and_exponent, c8, c16, (c8 x, c8 y), c_pow(x, y),
                     (c16 x, c16 y), c_pow(x, y)),
    TMK_LOOP(Sin, csin),
    TMK_XSIMD(Sin, TMK_ONE, xsimd::sin(x)),
    TMK_LOOP(Cos, ccos),
    TMK_XSIMD(Cos, TMK_ONE, xsimd::cos(x)),
    TMK_LOOP(Tan, ctan),
    TMK_XSIMD(Tan, TMK_ONE, xsimd::tan(x)),
    TMK_LOOP(Asin, casin),
    TMK_XSIMD(Asin, TMK_ONE, xsimd::asin(x)),
    TMK_LOOP(Acos, cacos),
    TMK_XSIMD(Acos, TMK_ONE, xsimd::acos(x)),
    TMK_LOOP(Atan, catan),
    TMK_XSIMD(Atan, TMK_ONE, xsimd::atan(x)),
    TMK_LOOP(Sinh, csinh),
    TMK_XSIMD(Sinh, TMK_ONE, xsimd::sinh(x)),
    TMK_LOOP(Cosh, ccosh),
    TMK_XSIMD(Cosh, TMK_ONE, xsimd::cosh(x)),
    TMK_LOOP(Tanh, ctanh),
    TMK_XSIMD(Tanh, TMK_ONE, xsimd::tanh(x)),
    TMK_LOOP(Asinh, casinh),
    TMK_XSIMD(Asinh, TMK_ONE, xsimd::asinh(x)),
    TMK_LOOP(Acosh, cacosh),
    TMK_LOOP(Atanh, catanh),
    TMK_XSIMD(Atanh, TMK_ONE, xsimd::atanh(x)),
};

}  // namespace

peer_list TMK_PEERS(complex)() { return {rows, sizeof rows / sizeof rows[0]}; }

}  // namespace tmk::bench
