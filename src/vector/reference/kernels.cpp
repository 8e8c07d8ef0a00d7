// SPDX-License-Identifier: Apache-2.0
// The extended-precision kernels: a loop over the reference scalars, one per reference row of functions.def.
// Complex functions run with the x87 unit at 64-bit precision whatever the caller has set.
#include <cerrno>
#include <complex>
#include <cstring>
#include <string_view>

#include "platform/controls.hpp"
#include "tmk/abi/vtm.h"
#include "vector/reference/complex/complex.hpp"
#include "vector/channel/error_channel.hpp"
#include "vector/registry/shapes.h"
#include "vector/reference/real/real.hpp"

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

// The floating-point flags of the caller. The C library's functions and exact sums raise others on the way,
// which are no news of the result: a status tells that.
class flags {
 public:
  void save() {
    asm volatile("fnstsw %0" : "=m"(x87_));
    sse_ = _mm_getcsr();
  }
  void restore() const {
    uint16_t x87;
    asm volatile("fnstsw %0" : "=m"(x87));
    if (((x87 ^ x87_) & all) != 0) {
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

// Runs scalar(i) for every element; scalar stores the results and returns the status.
template <class Argument, class Result, class Scalar>
void for_each_element(const char* name, int32_t n, const Argument* a1, const Argument* a2, Result* r1,
                      Result* r2, Scalar scalar) {
  const bool as_set = rounds_as_set(name);
  const control_scope controls(as_set ? control_class::a : control_class::c,
                               as_set ? sse_control::masks_only : sse_control::nearest);
  error_channel errors(name);
  flags found;
  found.save();
  int caller_errno = errno;  // the C library's functions set it, but only a report may
  for (int32_t i = 0; i < n; ++i) {
    const int32_t status = scalar(i);
    if (status == 0) continue;
    if (!errors.observed()) {
      errors.report(status, i, a1, a2, r1, r2);
      continue;
    }
    found.restore();
    errno = caller_errno;
    errors.report(status, i, a1, a2, r1, r2);
    found.save();
    caller_errno = errno;
  }
  found.restore();
  errno = caller_errno;
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

// One body per shape: F is the overload set of the row's stem.
#define TMK_BODY_unary(F)                                                                       \
  for_each_element(name, n, a, a, r, r, [=](int32_t i) {                                        \
    return store_result(r[i], [&](auto& result) { return reference::F(value(a[i]), result); }); \
  });
#define TMK_BODY_real_result TMK_BODY_unary
#define TMK_BODY_real_argument TMK_BODY_unary
#define TMK_BODY_binary(F)                                                                                   \
  for_each_element(name, n, a, b, r, r, [=](int32_t i) {                                                     \
    return store_result(r[i], [&](auto& result) { return reference::F(value(a[i]), value(b[i]), result); }); \
  });
#define TMK_BODY_scalar_exponent(F)                                                                       \
  for_each_element(name, n, a, a, r, r, [=](int32_t i) {                                                  \
    return store_result(r[i], [&](auto& result) { return reference::F(value(a[i]), value(b), result); }); \
  });
#define TMK_BODY_two_results(F)                                                                          \
  for_each_element(name, n, a, a, r1, r2, [=](int32_t i) {                                               \
    return store_result(r2[i], [&](auto& second) {                                                       \
      return store_result(r1[i], [&](auto& first) { return reference::F(value(a[i]), first, second); }); \
    });                                                                                                  \
  });
#define TMK_BODY_linear_fraction(F)                                            \
  for_each_element(name, n, a, b, r, r, [=](int32_t i) {                       \
    return store_result(r[i], [&](auto& result) {                              \
      return reference::F(a[i], b[i], scalea, shifta, scaleb, shiftb, result); \
    });                                                                        \
  });

#define TMK_DEFINE_plain(letter, stem, shape)                                                        \
  extern "C" void tmk_vtm_kernel_##letter##stem##_PXHAynn TMK_ROW_KERNEL_PARAMETERS(letter, shape) { \
    constexpr const char* name = "v" #letter #stem;                                                  \
    TMK_BODY_##shape(stem)                                                                           \
  }

#define TMK_DEFINE_unary TMK_DEFINE_plain
#define TMK_DEFINE_binary TMK_DEFINE_plain
#define TMK_DEFINE_scalar_exponent TMK_DEFINE_plain
#define TMK_DEFINE_two_results TMK_DEFINE_plain
#define TMK_DEFINE_linear_fraction TMK_DEFINE_plain
#define TMK_DEFINE_real_result TMK_DEFINE_plain
#define TMK_DEFINE_real_argument TMK_DEFINE_plain
#define TMK_DEFINE_pack_stride(letter, stem, shape)
#define TMK_DEFINE_pack_mask TMK_DEFINE_pack_stride
#define TMK_DEFINE_pack_index TMK_DEFINE_pack_stride
#define TMK_DEFINE_unpack_stride TMK_DEFINE_pack_stride
#define TMK_DEFINE_unpack_mask TMK_DEFINE_pack_stride
#define TMK_DEFINE_unpack_index TMK_DEFINE_pack_stride

// Worked functions have kernels of their own in every slot.
#define TMK_DEFINE_reference(letter, stem, shape) TMK_DEFINE_##shape(letter, stem, shape)
#define TMK_DEFINE_worked(letter, stem, shape)

#define TMK_FUNCTION(letter, stem, shape, slots, stage) TMK_DEFINE_##stage(letter, stem, shape)
#include "vector/registry/functions.def"
