// SPDX-License-Identifier: Apache-2.0
// What holds for every function, level and tier: a caller's floating-point controls change no result that is
// not defined by them, no argument raises flags or traps that its result does not call for, and a kernel
// keeps to its arrays.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "platform/fp.hpp"
#include "tmk/abi/vtm.h"
#include "tools/common/kernels.hpp"

namespace {

using tmk::tools::call_shape;
using tmk::tools::vector_function;

const std::vector<vector_function> functions = tmk::tools::functions_with_value();

// Arguments and results of n elements. Arrays hold two numbers an element, so that any shape finds room.
template <class Real>
struct arrays {
  std::vector<Real> a, b, r;
  explicit arrays(size_t n) : a(2 * n), b(2 * n), r(4 * n) {}

  size_t size() const { return a.size() / 2; }

  // Numbers in an element of the arguments, and of a result array.
  static size_t argument_width(const vector_function& f) {
    return f.is_complex() && f.shape != call_shape::real_argument ? 2 : 1;
  }
  static size_t result_width(const vector_function& f) {
    return f.is_complex() && f.shape != call_shape::real_result ? 2 : 1;
  }

  void run(const vector_function& f, int slot) {
    run(f, slot, size(), a.data(), b.data(), r.data(), &r[2 * size()]);
  }

  // The kernel on other arrays, with the scalars of these.
  void run(const vector_function& f, int slot, size_t count, const Real* x, const Real* y, Real* r1,
           Real* r2) {
    const VtmKernel k = f.record->kernel[slot];
    const int32_t n = static_cast<int32_t>(count);
    const auto call = [&](auto... arguments) {
      reinterpret_cast<void (*)(int32_t, decltype(arguments)...)>(k)(n, arguments...);
    };
    using complex = std::conditional_t<sizeof(Real) == 4, tmk_complex8, tmk_complex16>;
    switch (f.shape) {
      case call_shape::binary:
        return call(x, y, r1);
      case call_shape::scalar_exponent:
        return f.is_complex() ? call(x, complex{b[0], b[1]}, r1) : call(x, b[0], r1);
      case call_shape::two_results:
        return call(x, r1, r2);
      case call_shape::linear_fraction:
        return call(x, y, Real(3), Real(1), Real(2), Real(5), r1);
      default:
        return call(x, r1);
    }
  }
};

// Ordinary and special arguments, some of them far from the function's domain.
template <class Real>
std::vector<Real> values() {
  using limits = std::numeric_limits<Real>;
  std::vector<Real> v = {0,
                         limits::infinity(),
                         limits::quiet_NaN(),
                         limits::max(),
                         limits::min(),
                         limits::min() / 2,
                         3 * limits::denorm_min(),
                         1,
                         1.5,
                         2,
                         3,
                         0.5,
                         0.25,
                         Real(1e-10),
                         0.75,
                         Real(0x1.3p-36),
                         Real(0.1),
                         10,
                         80,
                         -Real(0)};
  if (sizeof(Real) == 8) v.insert(v.end(), {Real(1e-100), Real(1e100), 700});
  for (size_t i = 0, n = v.size(); i < n; ++i) v.push_back(-v[i]);
  return v;
}

// Every pair of values; functions of one argument read the first.
template <class Real>
arrays<Real> pairs() {
  const auto v = values<Real>();
  arrays<Real> x(v.size() * v.size());
  for (size_t i = 0; i < x.a.size(); ++i) {
    x.a[i] = v[i / v.size() % v.size()];
    x.b[i] = v[i % v.size()];
  }
  return x;
}

class every_row : public testing::TestWithParam<int32_t> {
 protected:
  void SetUp() override {
    if (tmk_select_tier(GetParam()) != GetParam())
      GTEST_SKIP() << "this processor, build or TMK_TIER has no " << tmk_tier_name(GetParam());
    mode_ = tmk_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE | VTM_DENORMALS_KEPT);
  }
  void TearDown() override {
    std::fesetenv(FE_DFL_ENV);
    if (mode_ != 0) tmk_vtm_kernel_SetMode(mode_);
    tmk_select_tier(TMK_TIER_WIDEST);
  }

  // check(function, slot, arrays of all pairs of values) for every function and slot.
  template <class Check>
  static void for_each_slot(Check check) {
    auto singles = pairs<float>();
    auto doubles = pairs<double>();
    for (const vector_function& f : functions)
      for (int slot = 0; slot < 3; ++slot) {
        const auto& kernel = f.record->kernel;
        if (std::find(kernel, kernel + slot, kernel[slot]) != kernel + slot) continue;
        f.is_single() ? check(f, slot, singles) : check(f, slot, doubles);
      }
  }

 private:
  uint32_t mode_ = 0;
};
INSTANTIATE_TEST_SUITE_P(tiers, every_row, testing::Values(TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4),
                         [](const auto& info) { return tmk_tier_name(info.param); });

template <class Real>
bool same_bits(const std::vector<Real>& x, const std::vector<Real>& y) {
  return std::memcmp(x.data(), y.data(), x.size() * sizeof(Real)) == 0;
}

bool rounds_as_set(const vector_function& f) { return f.stem == "Rint" || f.stem == "NearbyInt"; }

TEST_P(every_row, results_do_not_depend_on_the_rounding_mode) {
  for_each_slot([](const vector_function& f, int slot, auto& x) {
    if (rounds_as_set(f)) return;
    x.run(f, slot);
    const auto nearest = x.r;
    for (const int direction : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
      std::fesetround(direction);
      x.run(f, slot);
      const int after = std::fegetround();
      std::fesetround(FE_TONEAREST);
      EXPECT_EQ(after, direction) << f.name;
      EXPECT_TRUE(same_bits(x.r, nearest)) << f.name << " slot " << slot << " direction " << direction;
    }
  });
}

// An array cut anywhere, its parts off the alignment of registers, and in place where the shape
// allows it.
TEST_P(every_row, results_do_not_depend_on_place_cut_and_alignment) {
  for_each_slot([](const vector_function& f, int slot, auto& x) {
    using Real = std::remove_reference_t<decltype(x.a[0])>;
    x.run(f, slot);
    const size_t from = x.argument_width(f), to = x.result_width(f), second = 2 * x.size();
    const bool in_place = from == to && f.shape != call_shape::two_results;
    constexpr size_t longest = 60, beyond = 4;
    std::vector<Real> memory[4];  // a, b and two results
    for (auto& m : memory) m.resize(2 * longest + beyond + 1);
    const auto place = [&](int which) { return memory[which].data() + 1; };
    std::mt19937 random(5);
    for (size_t i = 0, n; i < x.size(); i += n) {
      n = std::min<size_t>(1 + random() % longest, x.size() - i);
      std::memcpy(place(0), &x.a[i * from], n * from * sizeof(Real));
      std::memcpy(place(1), &x.b[i * from], n * from * sizeof(Real));
      Real* const r = place(in_place && i % 2 == 0 ? 0 : 2);
      char end[beyond * sizeof(Real)];
      std::memcpy(end, r + n * to, sizeof end);
      x.run(f, slot, n, place(0), place(1), r, place(3));
      const bool same = std::memcmp(r, &x.r[i * to], n * to * sizeof(Real)) == 0 &&
                        (f.shape != call_shape::two_results ||
                         std::memcmp(place(3), &x.r[second + i], n * sizeof(Real)) == 0);
      ASSERT_TRUE(same) << f.name << " slot " << slot << ", " << n << " elements at " << i;
      ASSERT_EQ(std::memcmp(end, r + n * to, sizeof end), 0) << f.name << " slot " << slot << " past " << n;
    }
  });
}

// The C library's: what the compiler makes of a plain call rounds magnitudes.
double (*volatile const library_rint)(double) = nearbyint;

TEST_P(every_row, rint_rounds_as_the_processor_does) {
  for_each_slot([](const vector_function& f, int slot, auto& x) {
    if (!rounds_as_set(f)) return;
    for (const int direction : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO, FE_TONEAREST}) {
      std::fesetround(direction);
      x.run(f, slot);
      auto want = x.r;
      for (size_t i = 0; i < x.a.size() / 2; ++i)
        want[i] = static_cast<std::remove_reference_t<decltype(want[i])>>(library_rint(x.a[i]));
      std::fesetround(FE_TONEAREST);
      EXPECT_TRUE(same_bits(x.r, want)) << f.name << " slot " << slot << " direction " << direction;
    }
  });
}

// Subnormal arguments have their own values, or with subnormal results those of a flushing unit: 0. Of
// complex functions the baseline's are as its contract has them.
TEST_P(every_row, flushed_subnormals_give_values_or_zero) {
  for_each_slot([tier = GetParam()](const vector_function& f, int slot, auto& x) {
    if (f.shape != call_shape::unary || (f.is_complex() && tier == TMK_TIER_W7)) return;
    using Real = std::remove_reference_t<decltype(x.a[0])>;
    using limits = std::numeric_limits<Real>;
    arrays<Real> tiny(64);
    for (size_t i = 0; i < tiny.a.size(); ++i)
      tiny.a[i] = (i % 2 ? -1 : 1) * limits::denorm_min() * std::exp2(Real(i % 22)) * Real(1 + i % 3);
    for (size_t i = 0; i < 16; ++i) tiny.a[i] = limits::min() * (Real(0.5) + Real(i) / 32);
    if (f.is_complex())
      for (size_t i = 2; i < tiny.a.size(); i += 3) {  // next to numbers, of either part
        tiny.a[i - 1] = Real(1 + i % 7) / 2;
        tiny.a[i] = limits::min() * Real(1 + i);
      }
    tiny.run(f, slot);
    const auto kept = tiny.r;
    tmk_vtm_kernel_SetMode(VTM_DENORMALS_FLUSHED);
    tiny.run(f, slot);
    tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT);
    for (size_t i = 0; i < tiny.a.size() / (f.is_complex() ? 1 : 2); ++i) {
      const bool may_vanish = std::fabs(kept[i]) < limits::min();
      if (may_vanish && tiny.r[i] == 0) continue;
      EXPECT_EQ(tmk::to_bits(tiny.r[i]), tmk::to_bits(kept[i]))
          << f.name << " slot " << slot << " of " << tiny.a[i] << ": " << tiny.r[i] << ", kept " << kept[i];
    }
  });
}

// With every exception unmasked a kernel still runs to its end. In a child, which a trap would kill.
TEST_P(every_row, unmasked_traps_do_not_fire_inside) {
  const auto run = [] {
    feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW);
    for_each_slot([](const vector_function& f, int slot, auto& x) {
      std::fprintf(stderr, "%s slot %d\n", f.name.data(), slot);
      x.run(f, slot);
      asm volatile("fwait");  // where the x87 unit traps for a flag that a kernel left
    });
    _exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

uint16_t x87_flags() {
  uint16_t status;
  asm volatile("fnstsw %0" : "=m"(status));
  return status & 0x0D;  // invalid, division by zero, overflow
}

// An infinite or NaN argument is no invalid operation where a number comes out, or a NaN that was passed in.
// A flag left in the x87 unit would trap at the next instruction of a caller who unmasks it.
TEST_P(every_row, special_arguments_raise_no_spurious_flags) {
  tmk_vtm_kernel_SetMode(VTM_ERRMODE_NOERR);
  for_each_slot([](const vector_function& f, int slot, auto& all) {
    using Real = std::remove_reference_t<decltype(all.a[0])>;
    for (const Real a : values<Real>())
      for (const Real b : {Real(2), std::numeric_limits<Real>::quiet_NaN()}) {
        if (std::isfinite(a) || f.is_complex()) continue;
        arrays<Real> x(1);
        x.a[0] = x.a[1] = a;
        x.b[0] = x.b[1] = b;
        std::feclearexcept(FE_ALL_EXCEPT);
        x.run(f, slot);
        const int raised = x87_flags();
        std::feclearexcept(FE_ALL_EXCEPT);
        const bool new_nan = std::isnan(x.r[0]) && !std::isnan(a) && !std::isnan(b);
        EXPECT_EQ(new_nan ? 0 : raised, 0) << f.name << " slot " << slot << " of " << a << ", " << b;
      }
  });
}

// Missing values among good ones: quieted, payload kept, their neighbours untouched.
TEST_P(every_row, nans_pass_through_and_leave_their_neighbours) {
  for_each_slot([](const vector_function& f, int slot, auto& all) {
    using Real = std::remove_reference_t<decltype(all.a[0])>;
    if (f.is_complex() || f.shape != call_shape::unary || f.stem == "Abs")
      return;  // |x| changes the sign alone
    arrays<Real> good(150), holed(150);
    for (size_t i = 0; i < good.a.size(); ++i) good.a[i] = Real(0.5) + Real(i % 97) / 256;
    holed.a = good.a;
    const Real signalling = tmk::from_bits<Real>(tmk::format<Real>::infinity | 77);
    const Real quieted = tmk::from_bits<Real>(tmk::format<Real>::quiet_nan | 77);
    for (size_t i = 0; i < holed.a.size(); i += 3 + i % 7)
      std::memcpy(&holed.a[i], &signalling, sizeof signalling);
    good.run(f, slot);
    holed.run(f, slot);
    for (size_t i = 0; i < good.a.size() / 2; ++i) {
      const bool hole = std::isnan(holed.a[i]);
      EXPECT_EQ(tmk::to_bits(holed.r[i]), tmk::to_bits(hole ? quieted : good.r[i]))
          << f.name << " slot " << slot << " at " << i;
    }
  });
}

// Long enough for stores past the caches, on pointers that are multiples of nothing.
TEST_P(every_row, long_unaligned_arrays) {
  constexpr int32_t n = 2'100'000;
  constexpr size_t sample = 99'991;
  std::vector<char> argument(n * sizeof(double) + 8, 0), result(argument.size());
  const auto check = [&](const char* name, const VtmDispatchRecord& record, auto one) {
    using Real = decltype(one);
    for (const size_t offset : {1, 2})
      for (int slot = 0; slot < 3; ++slot) {
        auto* const a = reinterpret_cast<Real*>(argument.data());
        auto* const r = reinterpret_cast<Real*>(result.data() + offset);
        for (int32_t i = 0; i < n; ++i) a[i] = Real(1 + i % 100);
        const auto kernel = reinterpret_cast<void (*)(int32_t, const Real*, Real*)>(record.kernel[slot]);
        kernel(n, a, r);
        for (size_t i = 0; i < size_t{n}; i += sample) {
          Real want, got;
          kernel(1, a + i, &want);
          std::memcpy(&got, result.data() + offset + i * sizeof(Real), sizeof got);
          ASSERT_EQ(tmk::to_bits(got), tmk::to_bits(want)) << name << " slot " << slot << " at " << i;
        }
      }
  };
#define CHECK_LONG(stem)                                    \
  check("s" #stem, tmk_vtm_kernel_s##stem##_ttab, float{}); \
  check("d" #stem, tmk_vtm_kernel_d##stem##_ttab, double{});
  CHECK_LONG(Abs)
  CHECK_LONG(Inv)
  CHECK_LONG(Sqrt)
  CHECK_LONG(InvSqrt)
}

VtmErrorContext seen;
int32_t look(VtmErrorContext* context) {
  seen = *context;
  context->r1 = 5;
  context->r1_imaginary = 6;
  return 0;
}

// Arguments at the end of the readable memory, and functions that turn real elements into complex ones.
TEST_P(every_row, reports_read_elements_of_each_arrays_own_width) {
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  auto* const memory =
      static_cast<char*>(mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  ASSERT_NE(memory, MAP_FAILED);
  ASSERT_EQ(mprotect(memory + page, page, PROT_NONE), 0);
  tmk_vtm_kernel_SetErrorCallBack(look);
  const auto check = [&](auto one, auto entry, auto complex_one) {
    using Real = decltype(one);
    constexpr int32_t n = 5;
    auto* const a = reinterpret_cast<Real*>(memory + page) - n;
    std::fill_n(a, n, Real(1));
    a[n - 1] = std::numeric_limits<Real>::infinity();
    decltype(complex_one) r[n + 1] = {};
    seen = {};
    // The base of the caller's whole array: one element lower.
    tmk_vtm_kernel_SetInterfInputVectorPointer(a - 1);
    entry(n, a, r);
    tmk_vtm_kernel_SetInterfInputVectorPointer(nullptr);
    EXPECT_EQ(seen.code, VTM_STATUS_DOMAIN);
    EXPECT_EQ(seen.index, n);
    // Copies, since the record is packed.
    EXPECT_EQ(double{seen.a1}, std::numeric_limits<double>::infinity());
    EXPECT_EQ(double{seen.a1_imaginary}, 0);
    EXPECT_TRUE(std::isnan(double{seen.r1_imaginary}));
    EXPECT_EQ(r[n - 1].re, 5);
    EXPECT_EQ(r[n - 1].im, 6);
    EXPECT_EQ(r[n].re, 0);
  };
  check(float{}, _vtmcCIS, tmk_complex8{});
  check(double{}, _vtmzCIS, tmk_complex16{});
  tmk_vtm_kernel_ClearErrorCallBack();
  munmap(memory, 2 * page);
}

}  // namespace
