// SPDX-License-Identifier: Apache-2.0
// What the rules outside need to know of a spline, per function: the value and the slope at an end, or the
// integral over the period and 0.
#include "fitting/textbook/evaluate.hpp"

namespace tmk::fitting::textbook {

namespace {

template <class Real>
void compute_terms(const spline<Real>& s, bool right, int32_t rule, Real* terms,
                   const ThreadingService* threading) {
  const Real ends[2] = {s.first, s.last};
  if (rule == TMK_DF_OUTSIDE_CONSTANT || rule == TMK_DF_OUTSIDE_LINEAR) {
    constexpr int32_t value_and_slope[] = {0, 1};
    interpolate<Real>(s, polynomials<Real>, {&ends[right ? 1 : 0], 1, false}, value_and_slope, terms,
                      DF_FUNCTION_SITE_DERIVATIVE, threading);
  } else if (rule == TMK_DF_OUTSIDE_PERIODIC) {
    std::vector<Real> whole(s.functions);
    integrate_inside<Real>(s, {&ends[0], 1}, false, {&ends[1], 1}, false, whole.data(), threading);
    for (const Real integral : whole) *terms++ = integral, *terms++ = 0;
  } else if (rule < TMK_DF_OUTSIDE_POLYNOMIAL || rule > TMK_DF_OUTSIDE_FUNCTION) {
    throw failed{TMK_DF_BAD_RULE};
  }
}

}  // namespace

}  // namespace tmk::fitting::textbook

#define TMK_DF_TEXTBOOK(letter, Real)                                                                    \
  int32_t tmk_df_textbook_##letter##terms(const DF##letter##Spline* spline, int32_t right, int32_t rule, \
                                          Real* terms, const ThreadingService* threading) {              \
    if (spline == nullptr) return DF_STATUS_NULL_TASK;                                                   \
    if (terms == nullptr) return DF_STATUS_NULL_RESULT;                                                  \
    return tmk::guarded(DF_STATUS_NO_MEMORY, [&] {                                                       \
      tmk::fitting::textbook::compute_terms<Real>(*spline, right != 0, rule, terms, threading);          \
      return 0;                                                                                          \
    });                                                                                                  \
  }
TMK_DF_TEXTBOOK(d, double)
TMK_DF_TEXTBOOK(s, float)
