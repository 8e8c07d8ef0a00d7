/* SPDX-License-Identifier: Apache-2.0 */
/* Vector math from C: the tier once, then plain calls; a bad element is found in the thread's status. */
#include <stdio.h>
#include <tmk/abi/vtm.h>

int main(void) {
  const double a[4] = {1, 10, 0, 100};
  double r[4];
  int i;
  printf("kernels: %s\n", tmk_tier_name(tmk_select_tier(TMK_TIER_WIDEST)));
  _vtmClearErrStatus();
  _vtmdLog10(4, a, r);
  for (i = 0; i < 4; ++i) printf("log10(%g) = %g\n", a[i], r[i]);
  if (_vtmGetErrStatus() == VTM_STATUS_SINGULARITY) puts("an element was zero");
  return 0;
}
