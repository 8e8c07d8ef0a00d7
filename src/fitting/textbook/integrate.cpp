// SPDX-License-Identifier: Apache-2.0
// Integrals: the kernels integrate inside the partition, the rules of the sides from its ends on.
#include <utility>

#include "fitting/textbook/evaluate.hpp"
#include "platform/checks.hpp"

namespace tmk::fitting::textbook {

template <class Real>
void integrate_inside(const spline<Real>& s, std::span<const Real> lo, bool lo_ascends,
                      std::span<const Real> hi, bool hi_ascends, Real* result,
                      const ThreadingService* threading) {
  require(by_precision<Real>(tmk_df_kernel_dDFIntegrate1D, tmk_df_kernel_sDFIntegrate1D)(
      s.task.get(), 0, static_cast<int64_t>(lo.size()), lo.data(), site_hint(lo_ascends), hi.data(),
      site_hint(hi_ascends), nullptr, nullptr, result, DF_ROWS, nullptr, nullptr, nullptr, nullptr, nullptr,
      nullptr, nullptr, nullptr, threading));
}

namespace {

template <class Real>
void integrate(const spline<Real>& s, outside_rules<Real> rules, const Real* lo, const Real* hi, size_t n,
               Real* result, const ThreadingService* threading) {
  const prepared_sites<Real> from = prepare(s, rules, given_sites<Real>{lo, n, false}, {true, true}),
                             to = prepare(s, rules, given_sites<Real>{hi, n, false}, {true, true});
  integrate_inside(s, from.values, from.ascending, to.values, to.ascending, result, threading);
  for (const auto& [limits, sign] : {std::pair(&from, Real(-1)), std::pair(&to, Real(1))})
    for (const stray_site<Real>& stray : limits->strays)
      for (size_t f = 0; f < s.functions; ++f)
        result[f * n + stray.index] += sign * outside_value(s, stray, f, -1, Real(0));
}

}  // namespace

template void integrate_inside(const spline<double>&, std::span<const double>, bool, std::span<const double>,
                               bool, double*, const ThreadingService*);
template void integrate_inside(const spline<float>&, std::span<const float>, bool, std::span<const float>,
                               bool, float*, const ThreadingService*);

}  // namespace tmk::fitting::textbook

using namespace tmk::fitting::textbook;

#define TMK_DF_TEXTBOOK(letter, Real)                                                                 \
  int32_t tmk_df_textbook_##letter##integrate(                                                        \
      const DF##letter##Spline* spline, const DF##letter##Rule* outside, int64_t n, const Real* lo,   \
      const Real* hi, Real* result, const ThreadingService* threading) {                              \
    const bool limits = lo != nullptr && hi != nullptr;                                               \
    const int32_t bad = tmk::first_status({{spline == nullptr, DF_STATUS_NULL_TASK},                  \
                                           {n < 0 || (n > 0 && !limits), TMK_DF_BAD_SITES},           \
                                           {n > 0 && result == nullptr, DF_STATUS_NULL_RESULT}});     \
    if (bad != 0) return bad;                                                                         \
    return tmk::guarded(DF_STATUS_NO_MEMORY, [&] {                                                    \
      const auto rules = rules_of<Real>(outside);                                                     \
      if (n != 0) integrate<Real>(*spline, rules, lo, hi, static_cast<size_t>(n), result, threading); \
      return 0;                                                                                       \
    });                                                                                               \
  }
TMK_DF_TEXTBOOK(d, double)
TMK_DF_TEXTBOOK(s, float)
