// SPDX-License-Identifier: Apache-2.0
// How the kernels of one call report: each bad element at once where somebody observes it (a callback,
// printed messages, traps), else all of them together when the call ends, which costs next to nothing.
#pragma once

#include <cstdint>

#include "platform/tier.hpp"
#include "tmk/abi/vtm.h"

extern "C" {

// Nonzero where the thread's mode shows somebody every single report. Otherwise a report changes no more than
// the thread's statuses, errno and the floating-point flags, and the call's reports may come as one.
int32_t tmk_vtm_reports_are_observed(void);

// What the reports of a call amount to: the last status, and a bit (1 << status) for each that occurred.
void tmk_vtm_report_all(int32_t last, uint32_t seen);

// Adds to the bits of tmk_seen_statuses.
void tmk_vtm_add_seen_statuses(uint32_t seen);

// Element reports of functions whose arguments and results differ in width.
void tmk_vtm_kernel_csError(int32_t status, int32_t i, const void* a1, const void* a2, void* r1, void* r2,
                            const char* name);
void tmk_vtm_kernel_zdError(int32_t status, int32_t i, const void* a1, const void* a2, void* r1, void* r2,
                            const char* name);
void tmk_vtm_kernel_scError(int32_t status, int32_t i, const void* a1, const void* a2, void* r1, void* r2,
                            const char* name);
void tmk_vtm_kernel_dzError(int32_t status, int32_t i, const void* a1, const void* a2, void* r1, void* r2,
                            const char* name);
}

TMK_TIER_OPEN

// The report that reads arguments and writes results of these element types.
template <class Argument, class Result>
constexpr decltype(&tmk_vtm_kernel_sError) element_report = nullptr;
template <>
inline constexpr auto element_report<float, float> = tmk_vtm_kernel_sError;
template <>
inline constexpr auto element_report<double, double> = tmk_vtm_kernel_dError;
template <>
inline constexpr auto element_report<tmk_complex8, tmk_complex8> = tmk_vtm_kernel_cError;
template <>
inline constexpr auto element_report<tmk_complex16, tmk_complex16> = tmk_vtm_kernel_zError;
template <>
inline constexpr auto element_report<tmk_complex8, float> = tmk_vtm_kernel_csError;
template <>
inline constexpr auto element_report<tmk_complex16, double> = tmk_vtm_kernel_zdError;
template <>
inline constexpr auto element_report<float, tmk_complex8> = tmk_vtm_kernel_scError;
template <>
inline constexpr auto element_report<double, tmk_complex16> = tmk_vtm_kernel_dzError;

// Made after the call's control_scope: its destructor may raise flags, which the scope's then keeps.
class error_channel {
 public:
  explicit error_channel(const char* name) : name_(name), observed_(tmk_vtm_reports_are_observed() != 0) {}
  ~error_channel() {
    if (last_ != 0) tmk_vtm_report_all(last_, seen_);
  }
  error_channel(const error_channel&) = delete;
  error_channel& operator=(const error_channel&) = delete;

  // Whether a report looks at the arrays, and may replace a result.
  bool observed() const { return observed_; }

  // Reports element i; where observed, its result is stored already.
  template <class Argument, class Result>
  void report(int32_t status, int32_t i, const Argument* a1, const Argument* a2, Result* r1, Result* r2) {
    if (observed_) {
      element_report<Argument, Result>(status, i, a1, a2, r1, r2, name_);
    } else {
      last_ = status;
      seen_ |= 1u << status;
    }
  }

 private:
  const char* name_;
  bool observed_;
  int32_t last_ = 0;
  uint32_t seen_ = 0;
};

TMK_TIER_CLOSE
