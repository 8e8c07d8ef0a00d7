// SPDX-License-Identifier: Apache-2.0
#include "api/math/function_rows.hpp"

#include <cstring>
#include <string_view>

#include "vector/channel/error_channel.hpp"
#include "vector/registry/shapes.h"

namespace tmk::detail {

namespace {

template <class Real>
std::complex<double> load_as(const std::byte* from, bool complex) {
  Real parts[2] = {};
  std::memcpy(parts, from, complex ? sizeof parts : sizeof(Real));
  return {parts[0], parts[1]};
}

template <class Real>
void store_as(std::byte* to, bool complex, std::complex<double> value) {
  const Real parts[] = {static_cast<Real>(value.real()), static_cast<Real>(value.imag())};
  std::memcpy(to, parts, complex ? sizeof parts : sizeof(Real));
}

template <class T>
const T* in(const std::byte* p) {
  return reinterpret_cast<const T*>(p);
}
template <class T>
T* out(std::byte* p) {
  return reinterpret_cast<T*>(p);
}

enum class shape {
  // clang-format off
  unary, binary, scalar_exponent, two_results, linear_fraction, real_result, real_argument,
  pack_stride, pack_mask, pack_index, unpack_stride, unpack_mask, unpack_index
  // clang-format on
};

// One caller per shape: E is the element type, R its real part's.
template <class E, class R>
struct caller {
  static void unary(VtmKernel kernel, const operands& o, int32_t n) {
    reinterpret_cast<void (*)(int32_t, const E*, E*)>(kernel)(n, in<E>(o.a), out<E>(o.r));
  }
  static void binary(VtmKernel kernel, const operands& o, int32_t n) {
    reinterpret_cast<void (*)(int32_t, const E*, const E*, E*)>(kernel)(n, in<E>(o.a), in<E>(o.b),
                                                                        out<E>(o.r));
  }
  static void scalar_exponent(VtmKernel kernel, const operands& o, int32_t n) {
    const E b = *static_cast<const E*>(o.scalars);
    reinterpret_cast<void (*)(int32_t, const E*, E, E*)>(kernel)(n, in<E>(o.a), b, out<E>(o.r));
  }
  static void two_results(VtmKernel kernel, const operands& o, int32_t n) {
    reinterpret_cast<void (*)(int32_t, const E*, E*, E*)>(kernel)(n, in<E>(o.a), out<E>(o.r), out<E>(o.r2));
  }
  static void linear_fraction(VtmKernel kernel, const operands& o, int32_t n) {
    const E* s = static_cast<const E*>(o.scalars);
    reinterpret_cast<void (*)(int32_t, const E*, const E*, E, E, E, E, E*)>(kernel)(
        n, in<E>(o.a), in<E>(o.b), s[0], s[1], s[2], s[3], out<E>(o.r));
  }
  static void real_result(VtmKernel kernel, const operands& o, int32_t n) {
    reinterpret_cast<void (*)(int32_t, const E*, R*)>(kernel)(n, in<E>(o.a), out<R>(o.r));
  }
  static void real_argument(VtmKernel kernel, const operands& o, int32_t n) {
    reinterpret_cast<void (*)(int32_t, const R*, E*)>(kernel)(n, in<R>(o.a), out<E>(o.r));
  }
  static constexpr reporter* report_of(shape s) {
    if (s == shape::real_result) return element_report<E, R>;
    if (s == shape::real_argument) return element_report<R, E>;
    return element_report<E, E>;
  }
  static constexpr decltype(&unary) pack_stride = nullptr, pack_mask = nullptr, pack_index = nullptr,
                                    unpack_stride = nullptr, unpack_mask = nullptr, unpack_index = nullptr;
};

// InvSqrt is inv_sqrt, LGamma is lgamma: a capital begins a word unless it follows another capital.
constexpr std::array<char, 16> snake_case(std::string_view stem) {
  const auto is_capital = [](char c) { return c >= 'A' && c <= 'Z'; };
  std::array<char, 16> name{};
  std::size_t length = 0;
  for (std::size_t i = 0; i < stem.size(); ++i) {
    if (is_capital(stem[i]) && i > 0 && !is_capital(stem[i - 1])) name[length++] = '_';
    name[length++] = is_capital(stem[i]) ? static_cast<char>(stem[i] - 'A' + 'a') : stem[i];
  }
  return name;
}

using table = std::array<std::array<function_row, 4>, stem_count>;

constexpr table make_rows() {
  table rows{};
#define TMK_FUNCTION(letter, stem_, shape_, slots, wide, stage)                                \
  {                                                                                            \
    constexpr precision p = precision::letter;                                                 \
    constexpr stem function = stem::stem_;                                                     \
    constexpr bool complex = p >= precision::c, wide = p == precision::d || p == precision::z; \
    rows[static_cast<std::size_t>(function)][static_cast<std::size_t>(p)] = {                  \
        .c_name = "v" #letter #stem_,                                                          \
        .name = snake_case(#stem_),                                                            \
        .record = &tmk_vtm_kernel_##letter##stem_##_ttab,                                      \
        .cost = &tmk_vtm_kernel_##letter##stem_##_ctab,                                        \
        .invoke = caller<TMK_TYPE_##letter, TMK_REAL_##letter>::shape_,                        \
        .report = caller<TMK_TYPE_##letter, TMK_REAL_##letter>::report_of(shape::shape_),      \
        .a = {complex && shape::shape_ != shape::real_argument, wide},                         \
        .r = {complex && shape::shape_ != shape::real_result, wide},                           \
        .has_b = shape::shape_ == shape::binary || shape::shape_ == shape::linear_fraction,    \
        .has_r2 = shape::shape_ == shape::two_results};                                        \
  }
#include "vector/registry/functions.def"
  return rows;
}

constinit const table rows = make_rows();

}  // namespace

std::complex<double> element_type::load(const std::byte* array, std::size_t i) const {
  return (wide ? load_as<double> : load_as<float>)(array + i * width(), complex);
}

void element_type::store(std::byte* array, std::size_t i, std::complex<double> value) const {
  (wide ? store_as<double> : store_as<float>)(array + i * width(), complex, value);
}

const function_row& function_row_of(stem function, precision letter) {
  return rows[static_cast<std::size_t>(function)][static_cast<std::size_t>(letter)];
}

}  // namespace tmk::detail
