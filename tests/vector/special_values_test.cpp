// SPDX-License-Identifier: Apache-2.0
// Every kernel of every tier at special arguments, element by element against the extended-precision
// function: values, statuses, the order of reports, and results that a callback replaces.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "oracle/batch.hpp"
#include "tools/common/kernels.hpp"
#include "vector/reference/complex/complex.hpp"
#include "vector/reference/real/real.hpp"
#include "vector/registry/shapes.h"

namespace {

using namespace tmk;
using namespace tmk::accuracy;
using namespace tmk::tools;

struct outcome {
  std::array<double, 2> parts;  // as batch::result has them
  int32_t status;
};

template <class Value>
Value as(std::complex<double> x) {
  if constexpr (std::is_floating_point_v<Value>)
    return static_cast<Value>(x.real());
  else
    return Value(x);
}
template <class Real>
std::array<double, 2> parts(Real x) {
  return {x, 0};
}
template <class Real>
std::array<double, 2> parts(std::complex<Real> x) {
  return {x.real(), x.imag()};
}

// The extended-precision functions of all shapes under one signature; R is the real type, V that of an
// element.
using reference_function = outcome (*)(const arguments& x);
#define CASE(Result, ...)               \
  [](const arguments& x) -> outcome {   \
    Result r;                           \
    const int32_t status = __VA_ARGS__; \
    return {parts(r), status};          \
  }
#define CASE_unary(R, V, F) CASE(V, reference::F(as<V>(x.a), r))
#define CASE_binary(R, V, F) CASE(V, reference::F(as<V>(x.a), as<V>(x.b), r))
#define CASE_scalar_exponent CASE_binary
#define CASE_real_result(R, V, F) CASE(R, reference::F(as<V>(x.a), r))
#define CASE_real_argument(R, V, F) CASE(V, reference::F(as<R>(x.a), r))
#define CASE_linear_fraction(R, V, F) \
  CASE(V, reference::F(as<V>(x.a), as<V>(x.b), V(x.scalea), V(x.shifta), V(x.scaleb), V(x.shiftb), r))
#define CASE_two_results(R, V, F)                            \
  [](const arguments& x) -> outcome {                        \
    V r1, r2;                                                \
    const int32_t status = reference::F(as<V>(x.a), r1, r2); \
    return {{r1, r2}, status};                               \
  }
#define CASE_none(R, V, F) nullptr
#define CASE_pack_stride CASE_none
#define CASE_pack_mask CASE_none
#define CASE_pack_index CASE_none
#define CASE_unpack_stride CASE_none
#define CASE_unpack_mask CASE_none
#define CASE_unpack_index CASE_none
#define TYPES_s float, float
#define TYPES_d double, double
#define TYPES_c float, std::complex<float>
#define TYPES_z double, std::complex<double>
#define EXPAND(macro, ...) macro(__VA_ARGS__)
const std::map<std::string_view, reference_function> references = {
#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) \
  {#letter #stem, EXPAND(CASE_##shape, TYPES_##letter, stem)},
#include "vector/registry/functions.def"
};

// Zeros, ends of the format and of the domains, subnormals, integers and halves, and numbers far away.
template <class Real>
std::vector<double> special_numbers() {
  using limits = std::numeric_limits<Real>;
  std::vector<double> v = {0,
                           limits::infinity(),
                           limits::max(),
                           limits::min(),
                           limits::min() / 2,
                           limits::denorm_min(),
                           3 * double{limits::denorm_min()},
                           0.5,
                           1,
                           1.5,
                           2,
                           3,
                           10,
                           40,
                           81,
                           720,
                           1 - double{limits::epsilon()} / 2,
                           1 + double{limits::epsilon()}};
  for (size_t i = 0, n = v.size(); i < n; ++i) v.push_back(-v[i]);
  v.push_back(limits::quiet_NaN());
  return v;
}

// All pairs of numbers, for functions of one complex or two real arguments; all numbers for those of one.
template <class Real>
std::vector<arguments> special_arguments(const vector_function& f) {
  const auto numbers = special_numbers<Real>();
  const bool is_complex = f.is_complex() && f.shape != call_shape::real_argument;
  const bool has_two = f.shape == call_shape::binary || f.shape == call_shape::linear_fraction;
  std::vector<arguments> all;
  for (const double a : numbers) {
    if (!is_complex && !has_two) all.push_back({a});
    if (is_complex || has_two)
      for (const double b : numbers) all.push_back(is_complex ? arguments{{a, b}, {b, -2}} : arguments{a, b});
  }
  return all;
}

struct report {
  int32_t index, code;
  bool operator==(const report&) const = default;
};
std::vector<report> reports;
constexpr double replacement = 77;

int32_t note_and_replace(VtmErrorContext* context) {
  reports.push_back({context->index, context->code});
  context->r1 = replacement;
  return 0;
}

// A special result has its own bits (NaNs any); a number may be as far off as the coarsest level allows.
template <class Real>
bool is_alike(double got, double want) {
  constexpr double bits = sizeof(Real) == 4 ? 0x1p-11 : 0x1p-26;
  if (std::isnan(want)) return std::isnan(got);
  if (want == 0 || std::isinf(want)) return got == want && std::signbit(got) == std::signbit(want);
  return std::abs(got - want) <= bits * std::abs(want) ||
         std::abs(got - want) <= double{std::numeric_limits<Real>::denorm_min()};
}

constexpr int32_t batch_size = 256;

template <class Real>
void expect_reference(const vector_function& f, const kernel& k, std::span<const arguments> x) {
  const auto sample = std::make_unique<batch<Real, batch_size>>(f, x);
  std::vector<outcome> want;
  std::vector<report> want_reports;
  for (const arguments& one : sample->inputs()) {
    want.push_back(references.at(f.name)(one));
    // Reciprocals of the smallest numbers are infinite without a report, as defined.
    if (f.stem == "Inv" && want.back().status == VTM_STATUS_OVERFLOW) want.back().status = 0;
    if (want.back().status != 0)
      want_reports.push_back({static_cast<int32_t>(want.size()) - 1, want.back().status});
  }
  reports.clear();
  sample->run(k.address);
  const auto where = [&](size_t i) {
    std::ostringstream text;
    text << std::hexfloat << f.name << x[i].a << x[i].b << " slot " << k.uses[0].slot << " on "
         << tmk_tier_name(k.uses[0].tier);
    return text.str();
  };
  for (size_t i = 0; i < want.size(); ++i) {
    const auto [first, second] = sample->result(static_cast<int32_t>(i));
    const report got = [&] {
      for (const report& r : reports)
        if (r.index == static_cast<int32_t>(i)) return r;
      return report{static_cast<int32_t>(i), 0};
    }();
    EXPECT_EQ(got.code, want[i].status) << where(i) << " = " << first << ", " << second;
    if (got.code != 0) {
      EXPECT_EQ(first, replacement) << where(i);
      continue;
    }
    EXPECT_TRUE(is_alike<Real>(first, want[i].parts[0]) && is_alike<Real>(second, want[i].parts[1]))
        << where(i) << " = " << first << ", " << second << ", not " << want[i].parts[0] << ", "
        << want[i].parts[1];
  }
  EXPECT_TRUE(reports == want_reports) << where(0);
}

template <class Real>
void expect_reference(const vector_function& f, const kernel& k) {
  const auto all = special_arguments<Real>(f);
  if (f.shape == call_shape::scalar_exponent)
    for (const double b : {0.0, -0.5, 2.5, 3.0, HUGE_VAL, double{NAN}}) {
      auto with_exponent = all;
      for (arguments& x : with_exponent) x.b = b;
      for (size_t i = 0; i < all.size(); i += batch_size)
        expect_reference<Real>(f, k, std::span(with_exponent).subspan(i));
    }
  else
    for (size_t i = 0; i < all.size(); i += batch_size)
      expect_reference<Real>(f, k, std::span(all).subspan(i));
}

// Complex arithmetic of level EP looks at nothing but cancellation; complex_arithmetic_test.cpp has its
// cases.
bool is_plain_arithmetic(const vector_function& f, const kernel& k) {
  constexpr std::string_view stems[] = {"Add", "Sub", "Mul", "MulByConj", "Div"};
  return f.is_complex() && k.uses[0].slot == TMK_SLOT_EP && std::ranges::count(stems, f.stem) != 0;
}

TEST(special_arguments, have_the_values_and_reports_of_the_reference) {
  const uint32_t mode = tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT | VTM_ERRMODE_CALLBACK);
  tmk_vtm_kernel_SetErrorCallBack(note_and_replace);
  for (const vector_function& f : functions_with_value())
    for (const kernel& k : distinct_kernels(f, available_tiers(), {TMK_SLOT_LA, TMK_SLOT_HA, TMK_SLOT_EP}))
      if (!is_plain_arithmetic(f, k))
        f.is_single() ? expect_reference<float>(f, k) : expect_reference<double>(f, k);
  tmk_vtm_kernel_ClearErrorCallBack();
  if (mode != 0) tmk_vtm_kernel_SetMode(mode);
  tmk_select_tier(TMK_TIER_WIDEST);
}

}  // namespace
