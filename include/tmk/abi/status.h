/* SPDX-License-Identifier: Apache-2.0 */
/* The meaning of a status in words. */
#ifndef TMK_ABI_STATUS_H
#define TMK_ABI_STATUS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

/* A sentence for a status of any of the C interfaces; where two of them share a number, it gives the
 * meaning for each. "unknown status" for any other. The text lives as long as the program. */
const char* tmk_status_text(int32_t code);

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif
#endif
