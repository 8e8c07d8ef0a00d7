// SPDX-License-Identifier: Apache-2.0
#include "api/math/reports.hpp"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "api/call/refuse.hpp"
#include "api/call/state.hpp"
#include "vector/channel/error_channel.hpp"

namespace tmk {

namespace detail {

namespace {

// What to hand to SetMode to go from one denormal field to another: zero leaves the field as it is.
uint32_t denormal_change(uint32_t from, uint32_t to) {
  const uint32_t own = from & VTM_DENORMALS_MASK, wanted = to & VTM_DENORMALS_MASK;
  return wanted == 0 && own != 0 ? uint32_t{VTM_DENORMALS_KEPT} : wanted;
}

}  // namespace

part_channel::part_channel(uint32_t error_mode, uint32_t callers_mode)
    : mode_(tmk_vtm_kernel_GetMode()),
      callback_(tmk_vtm_kernel_GetErrorCallBack()),
      found_{tmk_vtm_kernel_ClearErrStatus(), tmk_clear_seen_statuses()} {
  tmk_vtm_kernel_SetErrorCallBack(nullptr);
  tmk_vtm_kernel_SetMode(error_mode | denormal_change(mode_, callers_mode));
  tmk_vtm_kernel_SetInterfInputVectorPointer(nullptr);
}

part_channel::~part_channel() {
  tmk_vtm_kernel_SetErrorCallBack(callback_);
  tmk_vtm_kernel_SetMode(mode_ | denormal_change(tmk_vtm_kernel_GetMode(), mode_));
  tmk_vtm_kernel_SetErrStatus(found_.last);
  tmk_clear_seen_statuses();
  tmk_vtm_add_seen_statuses(found_.seen);
}

reported_statuses part_channel::statuses() const {
  return {tmk_vtm_kernel_GetErrStatus(), tmk_seen_statuses()};
}

void keep(const reported_statuses& statuses) {
  if (statuses.last != 0) tmk_vtm_kernel_SetErrStatus(statuses.last);
  tmk_vtm_add_seen_statuses(statuses.seen);
}

capture::capture(const function_row& f, part_reports& reports, bool first_only)
    : f_(f),
      reports_(reports),
      first_only_(first_only),
      outer_(std::exchange(state.watching, this)),
      callback_(tmk_vtm_kernel_SetErrorCallBack(&capture::take)) {}

capture::~capture() {
  tmk_vtm_kernel_SetErrorCallBack(callback_);
  state.watching = outer_;
}

// Not zero: the report ends here, before errno, messages, traps and the write-back.
int32_t capture::take(VtmErrorContext* context) {
  state.watching->take(*context);
  return 1;
}

void capture::take(const VtmErrorContext& context) {
  if (first_only_ && !reports_.kept.empty()) return;
  try {
    reports_.kept.push_back({first_ + static_cast<std::size_t>(context.index),
                             context.code,
                             {context.a1, context.a1_imaginary},
                             {context.a2, context.a2_imaginary},
                             {context.r1, context.r1_imaginary},
                             {context.r2, context.r2_imaginary}});
  } catch (const std::bad_alloc&) {
    reports_.out_of_memory = true;  // no exception may cross a kernel
  }
}

void set_index_base(const function_row& f, const std::byte* a, std::size_t first) {
  const auto base = reinterpret_cast<std::uintptr_t>(a) - first * f.a.width();
  tmk_vtm_kernel_SetInterfInputVectorPointer(reinterpret_cast<const void*>(base));
}

namespace {

bool same_bits(const std::complex<double>& x, const std::complex<double>& y) {
  return std::memcmp(&x, &y, sizeof x) == 0;
}

// The scope that encloses a handler receives what the handler's own calls report.
class scope_exchange {
 public:
  explicit scope_exchange(error_scope* scope) : previous_(std::exchange(state.scope, scope)) {}
  ~scope_exchange() { state.scope = previous_; }

 private:
  error_scope* previous_;
};

}  // namespace

void hand_to_scope(error_scope& scope, const function_row& f, std::byte* r, std::byte* r2,
                   const report& bad) {
  math_error e{static_cast<math_status>(bad.code),
               static_cast<std::int64_t>(bad.index),
               f.name.data(),
               bad.a1,
               bad.a2,
               bad.r1,
               bad.r2};
  scope.handle(e);
  if (!same_bits(e.result, bad.r1)) f.r.store(r, 0, e.result);
  if (r2 != nullptr && !same_bits(e.result2, bad.r2)) f.r.store(r2, 0, e.result2);
}

}  // namespace detail

namespace {

std::string text_of(const std::complex<double>& value) {
  if (value.imag() == 0) return detail::number(value.real());
  return "(" + detail::number(value.real()) + ", " + detail::number(value.imag()) + ")";
}

[[noreturn]] void raise(const math_error& e) {
  constexpr const char* words[] = {"outside the domain", "a singularity", "overflow", "underflow"};
  const std::string place = "[" + std::to_string(e.index) + "]", value = text_of(e.a1);
  const bool two_arguments = std::memcmp(&e.a1, &e.a2, sizeof e.a1) != 0;
  throw error(static_cast<int>(e.code), e.function, "a" + place, value,
              "is " + value + (two_arguments ? ", b" + place + " is " + text_of(e.a2) : "") + ": " +
                  words[static_cast<int>(e.code) - 1]);
}

}  // namespace

error_scope::error_scope(on_error what) : what_(what), previous_(detail::state.scope) {
  switch (what) {
    case on_error::collect:
    case on_error::raise:
      detail::state.scope = this;
      return;
    case on_error::ignore:
      mode_ = tmk_vtm_kernel_SetMode(VTM_ERRMODE_NOERR);
      detail::state.scope = nullptr;
      return;
  }
  const std::string value = std::to_string(static_cast<int>(what));
  detail::refuse_value("error_scope", "what", value, "collect, raise or ignore");
}

error_scope::error_scope(handler repair) : handler_(std::move(repair)), previous_(detail::state.scope) {
  if (!handler_) detail::refuse("error_scope", "repair", "null", "is null, want a function");
  detail::state.scope = this;
}

error_scope::~error_scope() {
  if (what_ == on_error::ignore) tmk_vtm_kernel_SetMode(mode_ & VTM_ERRMODE_MASK);
  detail::state.scope = previous_;
}

void error_scope::handle(math_error& e) {
  const detail::scope_exchange enclosing(previous_);
  if (handler_)
    handler_(e);
  else if (what_ == on_error::raise)
    raise(e);
  else
    errors_.push_back(e);
}

}  // namespace tmk
