// SPDX-License-Identifier: Apache-2.0
// Function objects by shape of the arguments. Each overload packs its arguments into one `call`; the library
// checks and runs it.
#pragma once

#include <complex>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <tmk/matrix_view.hpp>
#include <tmk/scopes.hpp>
#include <type_traits>

namespace tmk::detail {

// Stems of the C interface's names. Compiled programs hold these numbers: a number never changes, and a new
// stem takes the next one, wherever it is listed.
enum class stem : std::uint8_t {
  // clang-format off
  Add = 0, Sub = 1, Mul = 2, MulByConj = 3, Div = 4, Sqr = 5, Abs = 6, Conj = 7, Arg = 8, LinearFrac = 9,
  Fmod = 10, Remainder = 11, Fdim = 12, Fmax = 13, Fmin = 14, MaxMag = 15, MinMag = 16, CopySign = 17,
  NextAfter = 18, Inv = 19, Sqrt = 20, InvSqrt = 21, Cbrt = 22, InvCbrt = 23, Pow = 24, Powx = 25,
  Powr = 26, Pow2o3 = 27, Pow3o2 = 28, Hypot = 29, Exp = 30, Exp2 = 31, Exp10 = 32, Expm1 = 33, Ln = 34,
  Log2 = 35, Log10 = 36, Log1p = 37, Logb = 38, Sin = 39, Cos = 40, SinCos = 41, Tan = 42, CIS = 43,
  Sinpi = 44, Cospi = 45, Tanpi = 46, Sind = 47, Cosd = 48, Tand = 49, Asin = 50, Acos = 51, Atan = 52,
  Atan2 = 53, Asinpi = 54, Acospi = 55, Atanpi = 56, Atan2pi = 57, Sinh = 58, Cosh = 59, Tanh = 60,
  Asinh = 61, Acosh = 62, Atanh = 63, Erf = 64, Erfc = 65, ErfInv = 66, ErfcInv = 67, CdfNorm = 68,
  CdfNormInv = 69, LGamma = 70, TGamma = 71, ExpInt1 = 72, Floor = 73, Ceil = 74, Trunc = 75, Round = 76,
  NearbyInt = 77, Rint = 78, Modf = 79, Frac = 80, PackI = 81, PackM = 82, PackV = 83, UnpackI = 84,
  UnpackM = 85, UnpackV = 86,
  // clang-format on
};
inline constexpr std::size_t stem_count = 87;

enum class precision : std::uint8_t { s = 0, d = 1, c = 2, z = 3 };

template <class T>
constexpr bool is_complex = !std::is_floating_point_v<T>;

template <class T>
constexpr bool is_double = std::is_same_v<T, double> || std::is_same_v<T, std::complex<double>>;

// The precision letter of a function between these element types: complex when either is.
template <class A, class R = A>
constexpr precision precision_of = static_cast<precision>(2 * (is_complex<A> || is_complex<R>)+is_double<A>);

struct array {
  const void* data = nullptr;
  std::size_t size = 0;
};

template <class T>
array describe(std::span<T> s) {
  return {s.data(), s.size()};
}

// Where the elements of a matrix are, in steps of one element; a call takes them row by row.
struct strides {
  std::size_t rows, cols;
  std::ptrdiff_t row, col;
};

template <class T>
strides layout_of(matrix_view<T> m) {
  return {m.rows(), m.cols(), m.row_stride(), m.col_stride()};
}
template <class T>
strides layout_of(std::span<T> s) {
  return {s.size(), 1, 1, 1};
}

template <class T>
array describe(matrix_view<T> m) {
  return {m.data(), m.rows() * m.cols()};
}

// One value for all elements of a call that is shaped as `like`.
inline strides repeated(const strides& like) { return {like.rows, like.cols, 0, 0}; }

// One call. A shape without b or r2 leaves them empty; scalars points to the values passed with the arrays.
struct call {
  stem function;
  precision letter;
  accuracy level;
  array a, b, r, r2;
  const void* scalars;
  const strides* layout = nullptr;  // of a, b, r and r2, where not all are plain arrays
};

void run(const call& c);

// A gather or scatter: the spread array is the one walked by stride, mask or index.
struct movement {
  stem function;
  precision letter;
  array a, y;
  array entries;  // mask or index
  bool wide;      // entries of 64 bits
  std::int64_t stride;
};

std::size_t run(const movement& m);

template <class... Overloads>
struct overload_set : Overloads... {
  using Overloads::operator()...;
};

// A view of elements of T, const or not: templates take it, so that vectors still convert to spans alone.
template <class View, class T>
concept view_of = std::same_as<View, matrix_view<T>> || std::same_as<View, matrix_view<const T>>;

template <stem Stem, class A, class R = A>
struct unary_call {
  void operator()(std::span<const A> a, std::span<R> r, accuracy level = accuracy::inherited) const {
    run(call{Stem, precision_of<A, R>, level, describe(a), {}, describe(r), {}, nullptr});
  }
  template <view_of<A> Argument>
  void operator()(Argument a, matrix_view<R> r, accuracy level = accuracy::inherited) const {
    const strides layout[] = {layout_of(a), {}, layout_of(r), {}};
    run(call{Stem, precision_of<A, R>, level, describe(a), {}, describe(r), {}, nullptr, layout});
  }
};

template <stem Stem, class T>
struct binary_call {
  void operator()(std::span<const T> a, std::span<const T> b, std::span<T> r,
                  accuracy level = accuracy::inherited) const {
    run(call{Stem, precision_of<T>, level, describe(a), describe(b), describe(r), {}, nullptr});
  }
  void operator()(std::span<const T> a, std::type_identity_t<T> b, std::span<T> r,
                  accuracy level = accuracy::inherited) const {
    run_with_one(a, b, r, level);
  }
  void operator()(std::type_identity_t<T> a, std::span<const T> b, std::span<T> r,
                  accuracy level = accuracy::inherited) const {
    run_one_with(a, b, r, level);
  }
  template <view_of<T> First, view_of<T> Second>
  void operator()(First a, Second b, matrix_view<T> r, accuracy level = accuracy::inherited) const {
    const strides layout[] = {layout_of(a), layout_of(b), layout_of(r), {}};
    run(call{Stem, precision_of<T>, level, describe(a), describe(b), describe(r), {}, nullptr, layout});
  }
  template <view_of<T> First>
  void operator()(First a, std::type_identity_t<T> b, matrix_view<T> r,
                  accuracy level = accuracy::inherited) const {
    run_with_one(a, b, r, level);
  }
  template <view_of<T> Second>
  void operator()(std::type_identity_t<T> a, Second b, matrix_view<T> r,
                  accuracy level = accuracy::inherited) const {
    run_one_with(a, b, r, level);
  }

 private:
  void run_with_one(auto a, const T& b, auto r, accuracy level) const {
    const strides layout[] = {layout_of(a), repeated(layout_of(a)), layout_of(r), {}};
    const array value{&b, describe(a).size};
    run(call{Stem, precision_of<T>, level, describe(a), value, describe(r), {}, nullptr, layout});
  }
  void run_one_with(const T& a, auto b, auto r, accuracy level) const {
    const strides layout[] = {repeated(layout_of(b)), layout_of(b), layout_of(r), {}};
    const array value{&a, describe(b).size};
    run(call{Stem, precision_of<T>, level, value, describe(b), describe(r), {}, nullptr, layout});
  }
};

template <stem Stem, class T>
struct scalar_exponent_call {
  void operator()(std::span<const T> a, std::type_identity_t<T> b, std::span<T> r,
                  accuracy level = accuracy::inherited) const {
    run(call{Stem, precision_of<T>, level, describe(a), {}, describe(r), {}, &b});
  }
  template <view_of<T> Argument>
  void operator()(Argument a, std::type_identity_t<T> b, matrix_view<T> r,
                  accuracy level = accuracy::inherited) const {
    const strides layout[] = {layout_of(a), {}, layout_of(r), {}};
    run(call{Stem, precision_of<T>, level, describe(a), {}, describe(r), {}, &b, layout});
  }
};

template <stem Stem, class T>
struct two_results_call {
  void operator()(std::span<const T> a, std::span<T> r1, std::span<T> r2,
                  accuracy level = accuracy::inherited) const {
    run(call{Stem, precision_of<T>, level, describe(a), {}, describe(r1), describe(r2), nullptr});
  }
  template <view_of<T> Argument>
  void operator()(Argument a, matrix_view<T> r1, matrix_view<T> r2,
                  accuracy level = accuracy::inherited) const {
    const strides layout[] = {layout_of(a), {}, layout_of(r1), layout_of(r2)};
    run(call{Stem, precision_of<T>, level, describe(a), {}, describe(r1), describe(r2), nullptr, layout});
  }
};

template <class T>
struct linear_frac_call {
  void operator()(std::span<const T> a, std::span<const T> b, T scalea, T shifta, T scaleb, T shiftb,
                  std::span<T> r, accuracy level = accuracy::inherited) const {
    const T scalars[] = {scalea, shifta, scaleb, shiftb};
    run(call{stem::LinearFrac, precision_of<T>, level, describe(a), describe(b), describe(r), {}, scalars});
  }
};

template <stem, class T>
struct pack_stride {
  void operator()(std::span<const T> a, std::int64_t stride, std::span<T> y) const {
    run(movement{stem::PackI, precision_of<T>, describe(a), describe(y), {}, true, stride});
  }
};

template <stem, class T>
struct unpack_stride {
  void operator()(std::span<const T> a, std::span<T> y, std::int64_t stride) const {
    run(movement{stem::UnpackI, precision_of<T>, describe(a), describe(y), {}, true, stride});
  }
};

template <stem Stem, class T, class Integer>
struct pack_call {
  std::size_t operator()(std::span<const T> a, std::span<const Integer> entries, std::span<T> y) const {
    return run(movement{Stem, precision_of<T>, describe(a), describe(y), describe(entries),
                        sizeof(Integer) == 8, 0});
  }
};

template <stem Stem, class T, class Integer>
struct unpack_call {
  std::size_t operator()(std::span<const T> a, std::span<T> y, std::span<const Integer> entries) const {
    return run(movement{Stem, precision_of<T>, describe(a), describe(y), describe(entries),
                        sizeof(Integer) == 8, 0});
  }
};

using single_complex = std::complex<float>;
using double_complex = std::complex<double>;

// A call shape over the real types, the complex types, or all four.
template <template <stem, class> class Call, stem Stem>
using over_reals = overload_set<Call<Stem, float>, Call<Stem, double>>;
template <template <stem, class> class Call, stem Stem>
using over_complex = overload_set<Call<Stem, single_complex>, Call<Stem, double_complex>>;
template <template <stem, class> class Call, stem Stem>
using over_all = overload_set<over_reals<Call, Stem>, over_complex<Call, Stem>>;

template <stem Stem, class T>
struct elementwise : unary_call<Stem, T> {};

template <stem Stem>
using real_unary = over_reals<elementwise, Stem>;
template <stem Stem>
using complex_unary = over_complex<elementwise, Stem>;
template <stem Stem>
using unary = over_all<elementwise, Stem>;
template <stem Stem>
using real_binary = over_reals<binary_call, Stem>;
template <stem Stem>
using complex_binary = over_complex<binary_call, Stem>;
template <stem Stem>
using binary = over_all<binary_call, Stem>;
template <stem Stem>
using scalar_exponent = over_all<scalar_exponent_call, Stem>;
template <stem Stem>
using two_results = over_reals<two_results_call, Stem>;
template <stem Stem>
using real_result =
    overload_set<unary_call<Stem, single_complex, float>, unary_call<Stem, double_complex, double>>;
template <stem Stem>
using real_argument =
    overload_set<unary_call<Stem, float, single_complex>, unary_call<Stem, double, double_complex>>;

// Kernels count in signed numbers: an unsigned entry past their range is refused as out of the array.
template <template <stem, class, class> class Call, stem Stem, class T>
struct over_integers
    : overload_set<Call<Stem, T, std::int32_t>, Call<Stem, T, std::int64_t>, Call<Stem, T, std::size_t>> {};
template <stem Stem, class T>
struct pack_entries : over_integers<pack_call, Stem, T> {};
template <stem Stem, class T>
struct unpack_entries : over_integers<unpack_call, Stem, T> {};

}  // namespace tmk::detail
