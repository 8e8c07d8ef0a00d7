/* SPDX-License-Identifier: Apache-2.0 */
/* Processor features. */
#ifndef TMK_PLATFORM_CPU_H
#define TMK_PLATFORM_CPU_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Whether processor and operating system can run the tier's instruction set: 1 or 0. */
int32_t tmk_cpu_has_tier(int32_t tier);

#ifdef __cplusplus
}
#endif
#endif
