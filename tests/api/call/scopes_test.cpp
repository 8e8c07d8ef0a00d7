// SPDX-License-Identifier: Apache-2.0
// Error scopes and threads: who sees a bad element, what is put back, and that threads change no bit.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <string>
#include <tmk/math.hpp>
#include <vector>

#include "tmk/abi/vtm.h"

namespace tmk {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct thread_channel {
  uint32_t mode = tmk_vtm_kernel_GetMode();
  VtmErrorCallback callback = tmk_vtm_kernel_GetErrorCallBack();
  bool operator==(const thread_channel&) const = default;
};

int32_t quiet(VtmErrorContext*) { return 1; }

TEST(error_scope, collects_arguments_and_results_also_in_place) {
  std::vector<double> x{1, 0, -4, 2};
  error_scope scope;
  ln(x, x);
  ASSERT_EQ(scope.errors().size(), 2u);
  const math_error &pole = scope.errors()[0], &negative = scope.errors()[1];
  EXPECT_EQ(pole.code, math_status::singularity);
  EXPECT_EQ(pole.index, 1);
  EXPECT_EQ(pole.function, "ln");
  EXPECT_EQ(pole.a1, 0.0);
  EXPECT_EQ(pole.result, -infinity);
  EXPECT_EQ(negative.code, math_status::domain);
  EXPECT_EQ(negative.a1, -4.0);
  EXPECT_TRUE(std::isnan(x[2]));
}

TEST(error_scope, sees_both_arguments_of_complex_powers) {
  const std::vector<std::complex<float>> a{{0, 0}}, b{{-1, 2}};
  std::vector<std::complex<float>> r(1);
  error_scope scope;
  pow(a, b, r);
  ASSERT_EQ(scope.errors().size(), 1u);
  EXPECT_EQ(scope.errors()[0].a2, std::complex<double>(-1, 2));
}

TEST(error_scope, repairs_either_result) {
  std::vector<double> x{1, 0, -4}, y(3), s(2), c(2);
  error_scope repair([](math_error& e) {
    if (e.code == math_status::singularity) e.result = 0;
    if (e.function == "sin_cos") e.result2 = 7;
  });
  ln(x, y);
  EXPECT_EQ(y[1], 0);
  EXPECT_TRUE(std::isnan(y[2]));
  sin_cos(std::vector<double>{infinity, 0}, s, c);
  EXPECT_TRUE(std::isnan(s[0]));
  EXPECT_EQ(c, (std::vector<double>{7, 1}));
}

TEST(error_scope, raises_for_the_lowest_index) {
  const std::vector<float> x{1, 2, -3, 0};
  std::vector<float> y(4);
  const error_scope scope(on_error::raise);
  try {
    ln(x, y);
    FAIL();
  } catch (const error& e) {
    EXPECT_STREQ(e.what(), "tmk::ln: argument a[2] is -3: outside the domain");
    EXPECT_EQ(e.status(), VTM_STATUS_DOMAIN);
    EXPECT_EQ(e.argument(), "a[2]");
    EXPECT_EQ(e.value(), "-3");
  }
  EXPECT_EQ(y[3], -std::numeric_limits<float>::infinity());  // all elements are computed
}

TEST(error_scope, nests_and_restores_the_channel) {
  const std::vector<double> zero{0};
  std::vector<double> y(1);
  tmk_vtm_kernel_SetErrorCallBack(quiet);
  const thread_channel before;
  {
    error_scope outer;
    {
      error_scope inner([&](math_error&) { inv(zero, y); });  // reports to the enclosing scope
      errno = 0;
      ln(zero, y);
      EXPECT_EQ(errno, 0);
    }
    ASSERT_EQ(outer.errors().size(), 1u);
    EXPECT_EQ(outer.errors()[0].function, "inv");
    EXPECT_THROW(
        {
          error_scope thrower([](math_error&) { throw std::string("mine"); });
          ln(zero, y);
        },
        std::string);
    ln(zero, y);
    EXPECT_EQ(outer.errors().size(), 2u);
    EXPECT_EQ(thread_channel(), before);
  }
  EXPECT_EQ(thread_channel(), before);
  tmk_vtm_kernel_SetErrorCallBack(nullptr);
  errno = 0;
  ln(zero, y);  // no scope: the thread's mode word asks for errno
  EXPECT_EQ(errno, ERANGE);
}

TEST(error_scope, ignores) {
  const std::vector<double> x{0, 1, -1};
  std::vector<double> y(3);
  error_scope outer;
  tmk_vtm_kernel_ClearErrStatus();
  tmk_clear_seen_statuses();
  const thread_channel before;
  {
    const error_scope quiet_scope(on_error::ignore);
    errno = 0;
    ln(x, y);
    EXPECT_EQ(errno, 0);
    {
      error_scope inner;
      ln(x, y);
      EXPECT_EQ(inner.errors().size(), 2u);
    }
    tmk_vtm_kernel_ClearErrStatus();
    tmk_clear_seen_statuses();
    ln(x, y);
  }
  EXPECT_EQ(thread_channel(), before);
  EXPECT_EQ(y[0], -infinity);
  EXPECT_EQ(tmk_vtm_kernel_GetErrStatus(), 0);
  EXPECT_EQ(tmk_seen_statuses(), 0u);
  EXPECT_TRUE(outer.errors().empty());
  ln(x, y);
  EXPECT_EQ(outer.errors().size(), 2u);
}

// What does not reach the thread's channel by its callers' own choice is refused by the compiler.
static_assert(!std::is_constructible_v<error_scope, void (*)(int)>);
static_assert(!detail::takes_reference<void (*)(math_error)>());
static_assert(detail::takes_reference<void (*)(const math_error&)>());

// Long enough for several threads, with bad elements among the good.
constexpr std::size_t length = 200'001;

template <class T>
std::vector<T> long_argument() {
  std::vector<T> x(length);
  for (std::size_t i = 0; i < length; ++i)
    x[i] = static_cast<T>(0.001 * static_cast<double>(i % 5000) + 1e-3);
  for (const std::size_t i : {std::size_t{3}, length / 2, length / 2 + 1, length - 1}) x[i] = T(-1);
  x[length / 3] = 0;
  return x;
}

template <class T>
void expect_threads_change_nothing() {
  const auto x = long_argument<T>();
  for (const accuracy level : {accuracy::low, accuracy::high, accuracy::fast}) {
    std::vector<T> serial(length), parallel(length);
    error_scope alone;
    ln(x, serial, level);
    error_scope together;
    const parallel_scope threads(4);
    ln(x, parallel, level);
    EXPECT_EQ(std::memcmp(serial.data(), parallel.data(), length * sizeof(T)), 0);
    ASSERT_EQ(together.errors().size(), 5u);
    for (std::size_t k = 0; k < 5; ++k) {
      EXPECT_EQ(together.errors()[k].index, alone.errors()[k].index);
      EXPECT_EQ(together.errors()[k].a1, alone.errors()[k].a1);
    }
    parallel = x;
    ln(parallel, parallel, level);
    EXPECT_EQ(std::memcmp(serial.data(), parallel.data(), length * sizeof(T)), 0);
  }
}

TEST(parallel_scope, same_bits_and_errors_as_one_thread) {
  expect_threads_change_nothing<float>();
  expect_threads_change_nothing<double>();
}

std::vector<int> indices;
int32_t note_and_repair(VtmErrorContext* context) {
  indices.push_back(context->index);
  context->r1 = context->a1;
  return 0;
}

TEST(parallel_scope, c_callback_runs_on_the_caller_in_order) {
  const auto x = long_argument<double>();
  std::vector<double> y(length);
  const parallel_scope threads(3);
  tmk_vtm_kernel_SetErrorCallBack(note_and_repair);
  tmk_vtm_kernel_ClearErrStatus();
  errno = 0;
  ln(x, y);
  tmk_vtm_kernel_SetErrorCallBack(nullptr);
  EXPECT_EQ(indices, (std::vector<int>{3, static_cast<int>(length / 3), static_cast<int>(length / 2),
                                       static_cast<int>(length / 2) + 1, static_cast<int>(length) - 1}));
  EXPECT_EQ(y[3], -1);
  EXPECT_EQ(errno, EDOM);
  EXPECT_EQ(tmk_vtm_kernel_GetErrStatus(), VTM_STATUS_DOMAIN);
}

TEST(parallel_scope, leaves_the_statuses_of_one_thread) {
  std::vector<double> x(length, 1), y(length);
  x[2] = 0;            // a singularity in the first part
  x[length - 1] = -1;  // a domain error in the last
  const parallel_scope threads(4);
  std::feclearexcept(FE_ALL_EXCEPT);
  tmk_vtm_kernel_ClearErrStatus();
  tmk_clear_seen_statuses();
  errno = 0;
  ln(x, y);
  EXPECT_EQ(errno, EDOM);
  EXPECT_EQ(tmk_vtm_kernel_GetErrStatus(), VTM_STATUS_DOMAIN);
  EXPECT_EQ(tmk_clear_seen_statuses(), 1u << VTM_STATUS_DOMAIN | 1u << VTM_STATUS_SINGULARITY);
  EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO), FE_INVALID | FE_DIVBYZERO);
}

#ifndef __SANITIZE_ADDRESS__
TEST(parallel_scope, bad_elements_take_no_memory_where_nobody_sees_them) {
  constexpr std::size_t n = 5'000'000;
  std::vector<float> x(n, -1), y(n);
  const parallel_scope threads(2);
  ln(x, y);  // threads are made
  rlimit found;
  getrlimit(RLIMIT_DATA, &found);
  std::ifstream status("/proc/self/status");
  std::string word;
  rlim_t data = 0;
  while (status >> word)
    if (word == "VmData:") status >> data;
  const rlimit tight{data * 1024 + (rlim_t{128} << 20), found.rlim_max};
  setrlimit(RLIMIT_DATA, &tight);
  EXPECT_NO_THROW(ln(x, y));
  setrlimit(RLIMIT_DATA, &found);
  EXPECT_TRUE(std::isnan(y[n - 1]));
}
#endif

TEST(parallel_scope, silent_error_modes_stay_silent) {
  const auto x = long_argument<double>();
  std::vector<double> y(length);
  const parallel_scope threads(3);
  const uint32_t mode = tmk_vtm_kernel_GetMode();
  for (const auto& [field, status] : {std::pair{VTM_ERRMODE_NOERR, 0}, std::pair{VTM_ERRMODE_IGNORE, 1}}) {
    tmk_vtm_kernel_SetMode(field);
    tmk_vtm_kernel_ClearErrStatus();
    errno = 0;
    ln(x, y);
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(tmk_vtm_kernel_GetErrStatus(), status);
  }
  tmk_vtm_kernel_SetMode(mode);
}

TEST(parallel_scope, threads_take_over_the_callers_floating_point_state) {
  std::vector<double> x(length, 2.5), y(length);
  const parallel_scope threads(4);
  std::fesetround(FE_UPWARD);
  rint(x, y);
  std::fesetround(FE_TONEAREST);
  const std::vector<double> serial_rule = [&] {
    std::vector<double> one(1);
    std::fesetround(FE_UPWARD);
    rint(std::vector<double>{2.5}, one);
    std::fesetround(FE_TONEAREST);
    return one;
  }();
  EXPECT_EQ(y, std::vector<double>(length, serial_rule[0]));

  const uint32_t mode = tmk_vtm_kernel_GetMode();
  tmk_vtm_kernel_SetMode(VTM_DENORMALS_FLUSHED);
  std::vector<double> tiny(length, 1e-310), alone(length);
  exp2(std::vector<double>(length, -1030), y);
  {
    const parallel_scope one(1);
    exp2(std::vector<double>(length, -1030), alone);
  }
  EXPECT_EQ(y, alone);
  tmk_vtm_kernel_SetMode(mode | VTM_DENORMALS_KEPT);
}

}  // namespace
}  // namespace tmk
