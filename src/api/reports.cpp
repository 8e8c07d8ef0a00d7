#include "api/reports.hpp"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <new>
#include <utility>

#include "api/state.hpp"

namespace tmk {

namespace detail {

namespace {

// What to hand to SetMode to go from one denormal field to another: zero leaves the field as it is.
uint32_t denormal_change(uint32_t from, uint32_t to) {
  const uint32_t own = from & VTM_DENORMALS_MASK, wanted = to & VTM_DENORMALS_MASK;
  return wanted == 0 && own != 0 ? uint32_t{VTM_DENORMALS_KEPT} : wanted;
}

}  // namespace

capture::capture(const row& f, part_reports& reports, uint32_t mode, bool keep)
    : f_(f),
      reports_(reports),
      keep_(keep),
      outer_(std::exchange(state.watching, this)),
      mode_(tmk_vtm_kernel_GetMode()),
      status_(tmk_vtm_kernel_GetErrStatus()),
      callback_(tmk_vtm_kernel_SetErrorCallBack(&capture::take)) {
  tmk_vtm_kernel_SetMode(VTM_ERRMODE_CALLBACK | denormal_change(mode_, mode));
  tmk_vtm_kernel_SetInterfInputVectorPointer(nullptr);
}

capture::~capture() {
  tmk_vtm_kernel_SetErrorCallBack(callback_);
  tmk_vtm_kernel_SetMode(mode_ | denormal_change(tmk_vtm_kernel_GetMode(), mode_));
  tmk_vtm_kernel_SetErrStatus(status_);
  state.watching = outer_;
}

// Not zero: the report ends here, before errno, messages, traps and the write-back.
int32_t capture::take(VtmErrorContext* context) {
  state.watching->take(*context);
  return 1;
}

void capture::take(const VtmErrorContext& context) {
  reports_.last_status = context.code;
  if (!keep_) return;
  const auto value = [&](double real, double imaginary) {
    return std::complex<double>(real, f_.a.complex || f_.r.complex ? imaginary : 0);
  };
  report bad{first_ + static_cast<std::size_t>(context.index), context.code,
             value(context.a1, context.a1_imaginary),          value(context.a2, context.a2_imaginary),
             value(context.r1, context.r1_imaginary),          value(context.r2, context.r2_imaginary)};
  // The C interface reads a real argument as if it were complex.
  if (f_.a.complex != f_.r.complex) bad.a1 = bad.a2 = f_.a.load(a_, static_cast<std::size_t>(context.index));
  try {
    reports_.kept.push_back(bad);
  } catch (const std::bad_alloc&) {
    reports_.out_of_memory = true;  // no exception may cross a kernel
  }
}

void set_index_base(const row& f, const std::byte* a, std::size_t first) {
  const std::size_t width = std::max(f.a.width(), f.r.width());
  const auto base = reinterpret_cast<std::uintptr_t>(a) - first * width;
  tmk_vtm_kernel_SetInterfInputVectorPointer(reinterpret_cast<const void*>(base));
}

namespace {

bool same_bits(const std::complex<double>& x, const std::complex<double>& y) {
  return std::memcmp(&x, &y, sizeof x) == 0;
}

// The scope that encloses a handler sees what the handler's own calls report.
class scope_exchange {
 public:
  explicit scope_exchange(error_scope* scope) : previous_(std::exchange(state.scope, scope)) {}
  ~scope_exchange() { state.scope = previous_; }

 private:
  error_scope* previous_;
};

}  // namespace

void hand_to_scope(error_scope& scope, const row& f, const operands& o, const report& bad) {
  math_error e{static_cast<math_status>(bad.code),
               static_cast<std::int64_t>(bad.index),
               f.name.data(),
               bad.a1,
               bad.a2,
               bad.r1,
               bad.r2};
  scope.handle(e);
  if (!same_bits(e.result, bad.r1)) f.r.store(o.r, bad.index, e.result);
  if (f.has_r2 && !same_bits(e.result2, bad.r2)) f.r.store(o.r2, bad.index, e.result2);
}

// The arguments travel as single elements, for an array in place has lost them.
void hand_to_channel(const row& f, const operands& o, const report& bad) {
  const element_type letter{f.a.complex || f.r.complex, f.a.wide};
  std::byte a1[sizeof bad.a1], a2[sizeof bad.a2];
  letter.store(a1, 0, bad.a1);
  letter.store(a2, 0, bad.a2);
  set_index_base(f, a1, bad.index);
  std::byte* const r1 = o.r + bad.index * f.r.width();
  std::byte* const r2 = f.has_r2 ? o.r2 + bad.index * f.r.width() : r1;
  f.report(bad.code, 0, a1, a2, r1, r2, f.c_name);
  tmk_vtm_kernel_SetInterfInputVectorPointer(nullptr);
}

}  // namespace detail

namespace {

std::string text_of(double value) {
  char buffer[32];
  return {buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr};
}

std::string text_of(const std::complex<double>& value) {
  if (value.imag() == 0) return text_of(value.real());
  return "(" + text_of(value.real()) + ", " + text_of(value.imag()) + ")";
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

error_scope::error_scope(on_error what) : previous_(std::exchange(detail::state.scope, this)) {
  if (what == on_error::raise)
    handler_ = [](math_error& e) { raise(e); };
  else
    handler_ = [this](math_error& e) { errors_.push_back(e); };
}

error_scope::error_scope(handler repair)
    : handler_(std::move(repair)), previous_(std::exchange(detail::state.scope, this)) {}

error_scope::~error_scope() { detail::state.scope = previous_; }

void error_scope::handle(math_error& e) {
  const detail::scope_exchange enclosing(previous_);
  handler_(e);
}

}  // namespace tmk
