// SPDX-License-Identifier: Apache-2.0
// Sums and products of arrays that stay in a near cache, where tests of lanes take as long as the rest: none
// is tested, and the processor's sticky flags say afterwards whether any result may carry a status. If so,
// the call is computed once more with tests. It needs the arguments unchanged, and every status to raise a
// flag: an infinity that comes in does not, nor does an exact subnormal result, but these have none.
//
// A description with `static constexpr bool by_flags = true` has, besides fast(), in_order(), whose operands
// keep their order: it says which of two NaNs is the result.
#pragma once

#include "simd/in_order.hpp"
#include "vector/walk/walk.hpp"

TMK_TIER_OPEN
namespace {

// What the processor says of the instructions since its construction; what it said before comes back in the
// end.
class watched_flags {
 public:
  watched_flags() : before_(read()) {
    if ((before_ & mask) != 0) write(before_ & ~mask);
  }
  ~watched_flags() {
    if ((before_ & mask) != 0) write(read() | (before_ & mask));
  }
  watched_flags(const watched_flags&) = delete;
  watched_flags& operator=(const watched_flags&) = delete;
  static bool raised() { return (read() & mask) != 0; }

 private:
  static constexpr uint32_t mask =
      _MM_EXCEPT_INVALID | _MM_EXCEPT_DIV_ZERO | _MM_EXCEPT_OVERFLOW | _MM_EXCEPT_UNDERFLOW;
  // No load or store of an array moves across.
  static uint32_t read() {
    uint32_t r;
    asm volatile("stmxcsr %0" : "=m"(r) : : "memory");
    return r;
  }
  static void write(uint32_t r) { asm volatile("ldmxcsr %0" : : "m"(r) : "memory"); }

  uint32_t before_;
};

template <class Kernel>
struct without_tests : description<typename Kernel::real> {
  using value = typename Kernel::value;
  static constexpr int group = Kernel::group;
  static constexpr bool streams = true;
  template <class... Values>
  static auto fast(const Values&... x) {
    return Kernel::in_order(x...);
  }
};

template <class Kernel>
struct with_tests : Kernel {
  static constexpr bool by_flags = false;
};

template <class Kernel>
concept settled_by_flags = Kernel::by_flags;

template <class A, class R>
bool apart(const A* a, const R* r, int32_t n) {
  const auto from = reinterpret_cast<uintptr_t>(a), to = reinterpret_cast<uintptr_t>(r);
  return from + static_cast<size_t>(n) * sizeof(A) <= to || to + static_cast<size_t>(n) * sizeof(R) <= from;
}

}  // namespace

// The call of such a kernel.
template <settled_by_flags Kernel, class Reference, class In, class Out>
[[gnu::flatten]] inline void run(const char* name, Reference reference, int32_t n, In in, Out out) {
  // The flags take as long as a few dozen registers; beyond a near cache, tests cost nothing.
  constexpr int32_t least = 128, most = 8192;
  const bool separate = in.apply([&](const auto*... a) { return (apart(a, out.first, n) && ...); });
  if (n >= least && n <= most && separate) {
    const control_scope controls(Kernel::controls, Kernel::sse);
    if (!subnormals_are_flushed()) {
      const watched_flags flags;
      error_channel errors(name);
      const auto none = [](const auto*...) { return [](auto*...) { return 0; }; };
      walk_masked<without_tests<Kernel>>(method<without_tests<Kernel>, decltype(none)>{{}, none}, n, in, out,
                                         errors);
      if (!watched_flags::raised()) return;
    }
  }
  run<with_tests<Kernel>>(name, reference, n, in, out);
}

TMK_TIER_CLOSE
