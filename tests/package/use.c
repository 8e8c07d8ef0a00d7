/* SPDX-License-Identifier: Apache-2.0 */
/* A C program that links tmk: one vector call at the baseline, one after a tier was chosen. */
#include <math.h>
#include <stdio.h>
#include <tmk/abi/vtm.h>

static int wrong(const char* tier, const double* argument, const double* result, int n) {
  int i, count = 0;
  for (i = 0; i < n; ++i)
    if (!(fabs(result[i] - exp(argument[i])) <= 1e-15 * exp(argument[i]))) {
      printf("%s: exp(%.17g) = %.17g\n", tier, argument[i], result[i]);
      ++count;
    }
  return count;
}

int main(void) {
  const double argument[5] = {-1, 0, 0.5, 1, 20};
  double result[5] = {0};
  int failures;
  _vtmdExp(5, argument, result);
  failures = wrong(tmk_tier_name(tmk_current_tier()), argument, result, 5);

  if (tmk_select_tier(TMK_TIER_WIDEST) < 0) return 1;
  result[0] = 0;
  _vtmdExp(5, argument, result);
  return failures + wrong(tmk_tier_name(tmk_current_tier()), argument, result, 5);
}
