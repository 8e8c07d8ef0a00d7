// SPDX-License-Identifier: Apache-2.0
// The functions in extended precision, for each row of functions.def: of one element, as the slow path of
// kernels, and as a kernel over arrays where not every tier has its own. Both compute with the x87 unit at
// 64-bit precision, whatever the caller has set.
#include <cerrno>
#include <complex>
#include <cstring>
#include <string_view>

#include "platform/controls.hpp"
#include "tmk/abi/vtm.h"
#include "vector/channel/error_channel.hpp"
#include "vector/reference/complex/complex.hpp"
#include "vector/reference/real/real.hpp"
#include "vector/registry/shapes.h"

namespace {

using namespace tmk;

// The value type a reference scalar takes for an element of an array.
template <class Element>
struct value_of {
  using type = Element;
};
template <>
struct value_of<tmk_complex8> {
  using type = std::complex<float>;
};
template <>
struct value_of<tmk_complex16> {
  using type = std::complex<double>;
};

template <class Element>
auto value(Element x) {
  return std::bit_cast<typename value_of<Element>::type>(x);
}

// Functions that round in the direction that the processor is set to.
constexpr bool rounds_as_set(std::string_view name) {
  return name.ends_with("Rint") || name.ends_with("NearbyInt");
}

// The kernel of cDiv computes in double precision, all others in that of the extended format.
constexpr control_class controls_of(std::string_view name) {
  return rounds_as_set(name) ? control_class::a : name == "vcDiv" ? control_class::b : control_class::c;
}

// The floating-point flags of the caller. The C library's functions and exact sums raise others on the way,
// which say nothing about the result: its status does.
class flags {
 public:
  void save() {
    asm volatile("fnstsw %0" : "=m"(x87_));
    sse_ = _mm_getcsr();
  }
  void restore() const {
    uint16_t x87;
    asm volatile("fnstsw %0" : "=m"(x87));
    if ((x87 & ~x87_ & all) != 0 && (x87_ & all) == 0) {
      asm volatile("fnclex");
    } else if (((x87 ^ x87_) & all) != 0) {
      uint32_t environment[7];
      asm volatile("fnstenv %0" : "=m"(environment));
      environment[1] = (environment[1] & ~all) | (x87_ & all);
      asm volatile("fldenv %0" : : "m"(environment));
    }
    const uint32_t sse = _mm_getcsr();
    if (((sse ^ sse_) & all) != 0) _mm_setcsr((sse & ~all) | (sse_ & all));
  }

 private:
  static constexpr uint32_t all = 0x3F;
  uint16_t x87_ = 0;
  uint32_t sse_ = 0;
};

// The controls that the functions need; what they leave in flags and errno on the way is undone.
class extended_scope {
 public:
  explicit extended_scope(std::string_view name)
      : controls_(controls_of(name), rounds_as_set(name) ? sse_control::masks_only : sse_control::nearest) {
    save();
  }
  ~extended_scope() { restore(); }
  void save() {
    found_.save();
    errno_ = errno;  // the C library's functions set it, but only a report may
  }
  void restore() const {
    found_.restore();
    errno = errno_;
  }

 private:
  control_scope controls_;
  flags found_;
  int errno_;
};

// Runs scalar(i) for every element; scalar stores the results and returns the status.
template <class Argument, class Result, class Scalar>
void for_each_element(const char* name, int32_t n, const Argument* a1, const Argument* a2, Result* r1,
                      Result* r2, Scalar scalar) {
  extended_scope scope(name);
  error_channel errors(name);
  for (int32_t i = 0; i < n; ++i) {
    const int32_t status = scalar(i);
    if (status == 0) continue;
    const bool flags_matter = errors.observed();
    if (flags_matter) scope.restore();
    errors.report(status, i, a1, a2, r1, r2);
    if (flags_matter) scope.save();
  }
}

// Computes into a value and stores its bits as an element.
template <class Element, class Function>
int32_t store_result(Element& r, Function function) {
  typename value_of<Element>::type result;
  const int32_t status = function(result);
  r = std::bit_cast<Element>(result);
  return status;
}

}  // namespace

// One element, per shape: F is the overload set of the row's stem.
#define TMK_BODY_unary(F) store_result(*r, [&](auto& result) { return reference::F(value(*a), result); })
#define TMK_BODY_real_result TMK_BODY_unary
#define TMK_BODY_real_argument TMK_BODY_unary
#define TMK_BODY_binary(F) \
  store_result(*r, [&](auto& result) { return reference::F(value(*a), value(*b), result); })
#define TMK_BODY_scalar_exponent(F) \
  store_result(*r, [&](auto& result) { return reference::F(value(*a), value(b), result); })
#define TMK_BODY_two_results(F)                                                                    \
  store_result(*r2, [&](auto& second) {                                                            \
    return store_result(*r1, [&](auto& first) { return reference::F(value(*a), first, second); }); \
  })
#define TMK_BODY_linear_fraction(F) \
  store_result(*r, [&](auto& result) { return reference::F(*a, *b, scalea, shifta, scaleb, shiftb, result); })

// The arguments at element i, and the arrays that a report names.
#define TMK_AT_unary(i) (a + i, r + i)
#define TMK_AT_real_result TMK_AT_unary
#define TMK_AT_real_argument TMK_AT_unary
#define TMK_AT_binary(i) (a + i, b + i, r + i)
#define TMK_AT_scalar_exponent(i) (a + i, b, r + i)
#define TMK_AT_two_results(i) (a + i, r1 + i, r2 + i)
#define TMK_AT_linear_fraction(i) (a + i, b + i, scalea, shifta, scaleb, shiftb, r + i)
#define TMK_REPORT_unary a, a, r, r
#define TMK_REPORT_real_result TMK_REPORT_unary
#define TMK_REPORT_real_argument TMK_REPORT_unary
#define TMK_REPORT_binary a, b, r, r
#define TMK_REPORT_scalar_exponent TMK_REPORT_unary
#define TMK_REPORT_two_results a, a, r1, r2
#define TMK_REPORT_linear_fraction TMK_REPORT_binary

#define TMK_DEFINE_plain(letter, stem, shape, slots, stage)                                           \
  namespace {                                                                                         \
  int32_t letter##stem TMK_ROW_REFERENCE_PARAMETERS(letter, shape) { return TMK_BODY_##shape(stem); } \
  }                                                                                                   \
  extern "C" int32_t tmk_vtm_reference_##letter##stem TMK_ROW_REFERENCE_PARAMETERS(letter, shape) {   \
    const extended_scope scope(#stem);                                                                \
    return letter##stem TMK_AT_##shape(0);                                                            \
  }                                                                                                   \
  TMK_KERNEL_##stage(letter, stem, shape, slots)

#define TMK_KERNEL_scalar(letter, stem, shape, slots)                                                \
  extern "C" void tmk_vtm_kernel_##letter##stem##_PXHAynn TMK_ROW_KERNEL_PARAMETERS(letter, shape) { \
    for_each_element("v" #letter #stem, n, TMK_REPORT_##shape,                                       \
                     [=](int32_t i) { return letter##stem TMK_AT_##shape(i); });                     \
  }
#define TMK_KERNEL_wide TMK_KERNEL_scalar
// Of the vectorized functions, those whose baseline has a kernel of level EP alone.
#define TMK_KERNEL_vectorized(letter, stem, shape, slots) TMK_EXTENDED_##slots(letter, stem, shape, slots)
#define TMK_EXTENDED_PPE TMK_KERNEL_scalar
#define TMK_EXTENDED_LPL(letter, stem, shape, slots)
#define TMK_EXTENDED_HHH TMK_EXTENDED_LPL
#define TMK_EXTENDED_LHL TMK_EXTENDED_LPL
#define TMK_EXTENDED_HHE TMK_EXTENDED_LPL
#define TMK_EXTENDED_LHE TMK_EXTENDED_LPL

#define TMK_DEFINE_unary TMK_DEFINE_plain
#define TMK_DEFINE_binary TMK_DEFINE_plain
#define TMK_DEFINE_scalar_exponent TMK_DEFINE_plain
#define TMK_DEFINE_two_results TMK_DEFINE_plain
#define TMK_DEFINE_linear_fraction TMK_DEFINE_plain
#define TMK_DEFINE_real_result TMK_DEFINE_plain
#define TMK_DEFINE_real_argument TMK_DEFINE_plain
// Gather and scatter move elements.
#define TMK_DEFINE_pack_stride(letter, stem, shape, slots, stage)
#define TMK_DEFINE_pack_mask TMK_DEFINE_pack_stride
#define TMK_DEFINE_pack_index TMK_DEFINE_pack_stride
#define TMK_DEFINE_unpack_stride TMK_DEFINE_pack_stride
#define TMK_DEFINE_unpack_mask TMK_DEFINE_pack_stride
#define TMK_DEFINE_unpack_index TMK_DEFINE_pack_stride

#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) \
  TMK_DEFINE_##shape(letter, stem, shape, slots, stage)
#include "vector/registry/functions.def"
