/* SPDX-License-Identifier: Apache-2.0 */
/* Service layer: memory, environment and messages, used by every subsystem and open to callers. */
#ifndef TMK_ABI_SERV_H
#define TMK_ABI_SERV_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

/* Memory of `size` bytes at a multiple of `alignment` (a power of two); null when there is none. */
void* tmk_serv_allocate(size_t size, size_t alignment);
/* Gives back what tmk_serv_allocate gave; null is allowed. */
void tmk_serv_deallocate(void* pointer);

/* Copies `count` bytes when they fit. Returns 0, or EINVAL for a null pointer and ERANGE when `count` is
 * above `destination_size`; then a destination that is not null is zeroed over its whole size. */
int32_t tmk_serv_memcpy_s(void* destination, size_t destination_size, const void* source, size_t count);

/* Copies the value of an environment variable, cut to `size` - 1 characters and terminated, into `buffer`.
 * Returns its length as copied; 0 when the variable is unset or empty, or `size` is below 1. */
int32_t tmk_serv_getenv(const char* name, char* buffer, int32_t size);

/* Prints message `number` (735 to 753) with its arguments on the standard error stream. `channel` is 1 and
 * `count` is the number of arguments that follow: a name (const char*), an index (int32_t) or a value
 * (double), as the message needs. Returns the number of characters printed, or a negative value when the
 * message is unknown, the count does not fit, or the printing failed. */
int32_t tmk_serv_print(int32_t channel, int32_t number, int32_t count, ...);

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif
#endif
