// SPDX-License-Identifier: Apache-2.0
// Calls of kernels: floating-point flags by their statuses, several threads, and the list of bad elements.
//
// NumPy reads the processor's flags after a loop. Kernels leave some that say nothing (an intermediate
// overflow), so the flags are put back and those of the reported statuses are added.
#include "kernels.hpp"

#include <immintrin.h>

#include <algorithm>
#include <atomic>

#include "tmk/abi/threading.h"

namespace tmk::python {

namespace {

constexpr std::ptrdiff_t most_at_once = 1 << 30;  // counts of kernels have 32 bits
constexpr std::ptrdiff_t worth_threads = 1 << 15;

thread_local int thread_count = 1;
thread_local collector* active = nullptr;
thread_local std::ptrdiff_t first_of_call = 0;

// Errors of this thread set their status and do nothing else. The extension is the one user of its copy of
// the library.
void set_up_thread() {
  thread_local const bool done = [] {
    tmk_vtm_kernel_SetMode(VTM_HA | VTM_ERRMODE_IGNORE);
    return true;
  }();
  static_cast<void>(done);
}

std::int32_t note(VtmErrorContext* context) {
  if (context->code > 0) active->found.push_back({first_of_call + context->index, context->code});
  return 1;
}

class flags_by_status {
 public:
  flags_by_status() : before_(_mm_getcsr()) {
    set_up_thread();
    tmk_clear_seen_statuses();
  }
  ~flags_by_status() {
    _mm_setcsr(before_ | (active != nullptr ? 0 : flags(seen_ | tmk_clear_seen_statuses())));
    std::uint16_t x87;
    asm volatile("fnstsw %0" : "=am"(x87));
    if ((x87 & 0x3f) != 0) asm volatile("fnclex");
  }
  flags_by_status(const flags_by_status&) = delete;
  flags_by_status& operator=(const flags_by_status&) = delete;
  void add(std::uint32_t statuses) { seen_ |= statuses; }

 private:
  static unsigned flags(std::uint32_t statuses) {
    constexpr unsigned by_status[] = {0, _MM_EXCEPT_INVALID, _MM_EXCEPT_DIV_ZERO, _MM_EXCEPT_OVERFLOW,
                                      _MM_EXCEPT_UNDERFLOW};
    unsigned r = 0;
    for (unsigned status = VTM_STATUS_DOMAIN; status <= VTM_STATUS_UNDERFLOW; ++status)
      if ((statuses >> status & 1) != 0) r |= by_status[status];
    return r;
  }

  unsigned before_;
  std::uint32_t seen_ = 0;
};

template <class Real>
void call_linear_fraction(VtmKernel f, std::int32_t n, char* const* p) {
  const auto at = [p](int k) { return *reinterpret_cast<const Real*>(p[k]); };
  reinterpret_cast<void (*)(std::int32_t, const void*, const void*, Real, Real, Real, Real, void*)>(f)(
      n, p[0], p[1], at(2), at(3), at(4), at(5), p[6]);
}

void call_once(const kernel& k, std::int32_t n, char* const* p) {
  const VtmKernel f = k.record->kernel[k.slot];
  if (k.scalars != 0)
    (k.sizes[0] == sizeof(double) ? call_linear_fraction<double> : call_linear_fraction<float>)(f, n, p);
  else if (k.results == 2)
    reinterpret_cast<void (*)(std::int32_t, const void*, void*, void*)>(f)(n, p[0], p[k.swapped ? 2 : 1],
                                                                           p[k.swapped ? 1 : 2]);
  else if (k.arguments == 2)
    reinterpret_cast<void (*)(std::int32_t, const void*, const void*, void*)>(f)(n, p[0], p[1], p[2]);
  else
    reinterpret_cast<void (*)(std::int32_t, const void*, void*)>(f)(n, p[0], p[1]);
}

// Elements [first, last) of a call.
void call_range(const kernel& k, std::ptrdiff_t first, std::ptrdiff_t last, char* const* operand) {
  for (std::ptrdiff_t from = first; from < last; from += most_at_once) {
    char* p[most_operands];
    for (int i = 0; i < k.operands(); ++i) {
      const bool single = i >= k.arguments - k.scalars && i < k.arguments;
      p[i] = operand[i] + (single ? 0 : from * k.sizes[i]);
    }
    first_of_call = from;
    call_once(k, static_cast<std::int32_t>(std::min(most_at_once, last - from)), p);
  }
}

struct shared_call {
  const kernel& k;
  std::ptrdiff_t n;
  char* const* operand;
  std::atomic<std::uint32_t> statuses{0};
};

// The range of one thread: whole cache lines, so that no two threads write to one.
void run_part(std::int32_t thread, std::int32_t, std::int32_t count, void* context) {
  constexpr std::ptrdiff_t line = 64;
  auto& call = *static_cast<shared_call*>(context);
  const std::ptrdiff_t part = (call.n / count + line) / line * line;
  const std::ptrdiff_t first = std::min(call.n, thread * part), last = std::min(call.n, first + part);
  if (first >= last) return;
  set_up_thread();
  tmk_clear_seen_statuses();
  call_range(call.k, first, last, call.operand);
  call.statuses |= tmk_clear_seen_statuses();
}

}  // namespace

void kernel::call(std::ptrdiff_t n, char* const* operand) const {
  flags_by_status flags;
  if (thread_count == 1 || n < worth_threads || active != nullptr) return call_range(*this, 0, n, operand);
  shared_call call{*this, n, operand};
  tmk_threading_pool()->ParallelRun(thread_count, &call, run_part);
  flags.add(call.statuses);
}

collector::collector() {
  set_up_thread();
  active = this;
  tmk_vtm_kernel_SetErrorCallBack(note);
  tmk_vtm_kernel_SetMode(VTM_ERRMODE_CALLBACK);
}

collector::~collector() {
  active = nullptr;
  tmk_vtm_kernel_ClearErrorCallBack();
  tmk_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
}

int set_threads(int threads) {
  const int before = thread_count;
  thread_count = threads;
  return before;
}

int threads() { return thread_count; }

}  // namespace tmk::python
