// SPDX-License-Identifier: Apache-2.0
// The thread's mode word, its override from the environment, and the path of a report.
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "tmk/abi/vtm.h"

namespace {

// Runs in a thread of its own, whose mode is not initialised yet.
template <class Body>
void in_new_thread(const char* override_value, Body body) {
  if (override_value == nullptr)
    unsetenv("TMK_VTM_MODE");
  else
    setenv("TMK_VTM_MODE", override_value, 1);
  std::thread(body).join();
  unsetenv("TMK_VTM_MODE");
}

TEST(mode, environment_is_taken_whole_or_not_at_all) {
  const struct {
    std::string value;
    uint32_t mode;
  } rows[] = {
      {"VTM_HA,VTM_ERRMODE_STDERR", 0x402},
      {"VTM_EP", 0x1A03},
      {"VTM_ERRMODE_IGNORE", 0x102},
      {"VTM_LA,VTM_ERRMODE_ERRNO,VTM_ERRMODE_STDERR,VTM_TRAP_OVERFLOW", 0x4000601},
      {"VTM_DOUBLE_CONSISTEN", 0x1A22},
      {"VTM_DOUBLE_CONSISTENT", 0x1A02},
      {"VTM_HA,", 0x1A02},
      {"VTM_HA,X", 0x1A02},
      {"VTM_HAX", 0x1A02},
      {"VTM_LA,VTX_EP", 0x1A02},
      {" VTM_LA", 0x1A02},
      {"", 0x1A02},
      {std::string(300, 'V'), 0x1A02},
      {std::string("VTM_LA") +
           [] {
             std::string more;
             for (int i = 0; i < 40; ++i) more += ",VTM_LA";
             return more;
           }(),
       0x1A02},  // cut off in the middle of a keyword
  };
  for (const auto& row : rows)
    in_new_thread(row.value.c_str(), [&] { EXPECT_EQ(tmk_vtm_kernel_GetMode(), row.mode) << row.value; });
  in_new_thread(nullptr, [] {
    EXPECT_EQ(tmk_vtm_kernel_GetTTableIndex(), TMK_SLOT_HA);
    setenv("TMK_VTM_MODE", "VTM_EP", 1);
    EXPECT_EQ(tmk_vtm_kernel_GetMode(), 0x1A02u) << "read once per thread";
  });
}

TEST(mode, set_replaces_fields_and_keeps_those_that_are_zero) {
  in_new_thread(nullptr, [] {
    const struct {
      uint32_t set, before, after;
    } rows[] = {
        {0, 0x1A02, 0x1A02},
        {0x30, 0x1A02, 0x1A02},
        {VTM_ERRMODE_IGNORE, 0x1A02, 0x102},
        {VTM_EP | VTM_DENORMALS_FLUSHED, 0x102, 0x280103},
        {VTM_DENORMALS_KEPT, 0x280103, 0x140103},
        {VTM_TRAP_INVALID | 0x80000000, 0x140103, 0x1140103},
    };
    for (const auto& row : rows) {
      EXPECT_EQ(tmk_vtm_kernel_SetMode(row.set), row.before);
      EXPECT_EQ(tmk_vtm_kernel_GetMode(), row.after);
    }
    EXPECT_EQ(tmk_vtm_kernel_GetTTableIndexM(7, 0), -1);
  });
}

TEST(mode, clearing_the_only_error_bit_leaves_it_standing) {
  in_new_thread(nullptr, [] {
    const VtmErrorCallback callback = [](VtmErrorContext*) -> int32_t { return 0; };
    tmk_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
    EXPECT_EQ(tmk_vtm_kernel_SetErrorCallBack(callback), nullptr);
    EXPECT_EQ(tmk_vtm_kernel_GetMode() & VTM_ERRMODE_MASK, 0x1100u);
    tmk_vtm_kernel_SetMode(VTM_ERRMODE_CALLBACK);
    EXPECT_EQ(tmk_vtm_kernel_ClearErrorCallBack(), callback);
    EXPECT_EQ(tmk_vtm_kernel_GetMode() & VTM_ERRMODE_MASK, 0x1000u);
    EXPECT_EQ(tmk_vtm_kernel_GetErrorCallBack(), nullptr);
  });
}

VtmErrorContext seen;
int32_t answer;

int32_t replace_by_seven(VtmErrorContext* context) {
  seen = *context;
  context->r1 = 7;
  context->r2 = 8;
  return answer;
}

// Reports element 3 of double vectors by way of the callback.
struct report_outcome {
  double r1, r2;
  int error_number;
  int32_t status;
};

report_outcome report(uint32_t error_mode, int32_t callback_answer, int32_t status, bool two_results = false,
                      int base_distance = 0) {
  double a[8] = {0, 1, 2, 3, 4, 5, 6, 7}, r1[8] = {}, r2[8] = {};
  report_outcome out{};
  in_new_thread(nullptr, [&] {
    answer = callback_answer;
    seen = {};
    tmk_vtm_kernel_SetErrorCallBack(replace_by_seven);
    tmk_vtm_kernel_SetMode(error_mode);
    if (base_distance != 0) tmk_vtm_kernel_SetInterfInputVectorPointer(a - base_distance);
    errno = 0;
    tmk_vtm_kernel_dError(status, 3, a, a, r1, two_results ? r2 : r1, "vdTest");
    out = {r1[3], r2[3], errno, tmk_vtm_kernel_GetErrStatus()};
  });
  return out;
}

TEST(error_channel, callback_repairs_unless_it_ends_the_report) {
  const struct {
    uint32_t error_mode;
    int32_t callback_answer, status;
    bool two_results;
    report_outcome want;
  } rows[] = {
      {VTM_ERRMODE_DEFAULT, 0, 2, false, {7, 0, ERANGE, 2}},
      {VTM_ERRMODE_DEFAULT, 1, 2, false, {0, 0, 0, 2}},
      {VTM_ERRMODE_DEFAULT, 0, 1, true, {7, 8, EDOM, 1}},
      {VTM_ERRMODE_DEFAULT, 0, 77, false, {7, 0, EFAULT, 77}},
      {VTM_ERRMODE_DEFAULT, 0, VTM_STATUS_BADARG, false, {0, 0, EINVAL, -1}},
      {VTM_ERRMODE_DEFAULT, 0, VTM_STATUS_CALLFAIL, false, {0, 0, EACCES, -2}},
      {VTM_ERRMODE_NOERR, 0, 2, false, {0, 0, 0, 0}},
      {VTM_ERRMODE_IGNORE, 0, 2, false, {0, 0, 0, 2}},
      {VTM_ERRMODE_IGNORE | VTM_ERRMODE_ERRNO, 0, 4, false, {0, 0, ERANGE, 4}},
      {VTM_ERRMODE_CALLBACK, 0, 3, false, {7, 0, 0, 3}},
  };
  for (const auto& row : rows) {
    const report_outcome got = report(row.error_mode, row.callback_answer, row.status, row.two_results);
    EXPECT_EQ(got.r1, row.want.r1) << row.status;
    EXPECT_EQ(got.r2, row.want.r2) << row.status;
    EXPECT_EQ(got.error_number, row.want.error_number) << row.status << " in mode " << row.error_mode;
    EXPECT_EQ(got.status, row.want.status);
  }
}

TEST(error_channel, index_counts_from_the_base_and_repair_from_the_call) {
  const report_outcome got = report(VTM_ERRMODE_DEFAULT, 0, 2, false, 2);
  EXPECT_EQ(seen.index, 5);
  EXPECT_EQ(static_cast<double>(seen.a1), 3.0);
  EXPECT_EQ(got.r1, 7);
}

TEST(error_channel, context_keeps_the_packed_layout_and_cuts_long_names) {
  EXPECT_EQ(offsetof(VtmErrorContext, name), 40u);
  EXPECT_EQ(offsetof(VtmErrorContext, name_length), 104u);
  EXPECT_EQ(sizeof(VtmErrorContext), 140u);
  tmk_complex8 z[1] = {{1.5f, -2.5f}};
  in_new_thread(nullptr, [&] {
    answer = 0;
    tmk_vtm_kernel_SetErrorCallBack(replace_by_seven);
    tmk_vtm_kernel_cError(1, 0, z, z, z, z, std::string(70, 'n').c_str());
  });
  EXPECT_EQ(seen.name_length, 64);
  EXPECT_EQ(seen.name[63], 'n');
  EXPECT_EQ(static_cast<double>(seen.a1_imaginary), -2.5);
  EXPECT_EQ(z[0].re, 7.0f);
  EXPECT_EQ(z[0].im, -2.5f);
}

TEST(error_channel, printed_lines_follow_the_shape) {
  const double a[] = {2}, b[] = {3};
  double r1[] = {4}, r2[] = {5};
  const struct {
    const double* a2;
    double* r2;
    int32_t status;
    const char* text;
  } rows[] = {
      {a, r1, 1, "tmk: vdTest: argument outside the domain\n  argument [0] = 2\n  result [0] = 4\n"},
      {b, r2, 3,
       "tmk: vdTest: result too large for the format (overflow)\n  first argument [0] = 2\n"
       "  second argument [0] = 3\n  first result [0] = 4\n  second result [0] = 5\n"},
      {a, r1, VTM_STATUS_BADARG, "tmk: vdTest: argument 0 is not valid\n"},
      {a, r1, VTM_STATUS_CALLFAIL, "tmk: vdTest: the call failed\n"},
      {a, r1, 0, ""},
  };
  for (const auto& row : rows) {
    testing::internal::CaptureStderr();
    in_new_thread("VTM_ERRMODE_STDERR",
                  [&] { tmk_vtm_kernel_dError(row.status, 0, a, row.a2, r1, row.r2, "vdTest"); });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), row.text);
  }
}

uint16_t x87_status() {
  uint16_t status;
  asm volatile("fnstsw %0" : "=m"(status));
  return status;
}

TEST(error_channel, exception_flags_stand_and_all_traps_are_masked) {
  const struct {
    int32_t status;
    uint16_t flag;
  } rows[] = {{1, 0x01}, {2, 0x04}, {3, 0x08}, {4, 0x10}, {9, 0}};
  for (const auto& row : rows) {
    in_new_thread("VTM_ERRMODE_EXCEPT", [&] {
      double x[1] = {1};
      asm volatile("fnclex");
      tmk_vtm_kernel_dError(row.status, 0, x, x, x, x, "vdTest");
      uint16_t control;
      asm volatile("fnstcw %0" : "=m"(control));
      EXPECT_EQ(x87_status() & 0x3F, row.flag) << row.status;
      EXPECT_EQ(control & 0x3F, 0x3F);
    });
  }
}

TEST(error_channel, enabled_trap_fires) {
  EXPECT_EXIT(
      {
        std::signal(SIGFPE, SIG_DFL);  // a sanitizer has its own handler
        setenv("TMK_VTM_MODE", "VTM_ERRMODE_EXCEPT,VTM_TRAP_DIVBYZERO", 1);
        const double zero[1] = {0};
        double r[1];
        std::thread([&] { _vtmdInv(1, zero, r); }).join();
      },
      testing::KilledBySignal(SIGFPE), "");
}

}  // namespace
