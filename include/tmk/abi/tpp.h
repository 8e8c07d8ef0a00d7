/* SPDX-License-Identifier: Apache-2.0 */
/* Array primitives: radix sorts in place and by index, copy, zero and set.
 *
 * Tags: 8u, 16u, 16s, 32u, 32s, 64s integers by width and sign, 32f float, 64f double, and a c at the end for
 * a pair of them (a complex value). Lengths count elements. Every function returns 0, TPP_STATUS_NULL_PTR for
 * a null pointer, or else TPP_STATUS_BAD_SIZE for a length below 1 or a stride below the size of an element.
 * They allocate nothing and keep no state. */
#ifndef TMK_ABI_TPP_H
#define TMK_ABI_TPP_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

enum { TPP_STATUS_OK = 0, TPP_STATUS_BAD_SIZE = -6, TPP_STATUS_NULL_PTR = -8 };

typedef struct {
  int16_t re, im;
} Tpp16sc;
typedef struct {
  int32_t re, im;
} Tpp32sc;
typedef struct {
  int64_t re, im;
} Tpp64sc;
typedef struct {
  float re, im;
} Tpp32fc;
typedef struct {
  double re, im;
} Tpp64fc;

/* Sorts `length` elements in place; `scratch` is an array of the same size, whose content is lost. Floating
 * values are in the order of their numbers, -0.0 below +0.0, NaNs outside all numbers by their sign. */
#define TMK_TPP_SORT(tag, type)                                                                 \
  int32_t tmk_dft_t4_tppsSortRadixAscend_##tag##_I(type* array, type* scratch, int32_t length); \
  int32_t tmk_dft_t4_tppsSortRadixDescend_##tag##_I(type* array, type* scratch, int32_t length);
TMK_TPP_SORT(8u, uint8_t)
TMK_TPP_SORT(16u, uint16_t)
TMK_TPP_SORT(16s, int16_t)
TMK_TPP_SORT(32u, uint32_t)
TMK_TPP_SORT(32s, int32_t)
TMK_TPP_SORT(32f, float)
TMK_TPP_SORT(64f, double)
#undef TMK_TPP_SORT

/* Writes to `index` the positions of the elements in sorted order; equal elements keep their order. Elements
 * are `stride` bytes apart and are not touched; `index` and `scratch` hold `length` positions each. */
#define TMK_TPP_SORT_INDEX(tag, type)                                                                    \
  int32_t tmk_dft_t4_tppsSortRadixIndexAscend_##tag(const type* source, int32_t stride, int32_t* index,  \
                                                    int32_t* scratch, int32_t length);                   \
  int32_t tmk_dft_t4_tppsSortRadixIndexDescend_##tag(const type* source, int32_t stride, int32_t* index, \
                                                     int32_t* scratch, int32_t length);
TMK_TPP_SORT_INDEX(8u, uint8_t)
TMK_TPP_SORT_INDEX(16u, uint16_t)
TMK_TPP_SORT_INDEX(16s, int16_t)
TMK_TPP_SORT_INDEX(32u, uint32_t)
TMK_TPP_SORT_INDEX(32s, int32_t)
TMK_TPP_SORT_INDEX(32f, float)
#undef TMK_TPP_SORT_INDEX

/* Copies `length` elements between arrays that do not overlap; fills with zero; fills with a value. */
#define TMK_TPP_FILL(tag, type)                                                             \
  int32_t tmk_dft_t4_tppsCopy_##tag(const type* source, type* destination, int32_t length); \
  int32_t tmk_dft_t4_tppsZero_##tag(type* destination, int32_t length);                     \
  int32_t tmk_dft_t4_tppsSet_##tag(type value, type* destination, int32_t length);
TMK_TPP_FILL(8u, uint8_t)
TMK_TPP_FILL(16s, int16_t)
TMK_TPP_FILL(16sc, Tpp16sc)
TMK_TPP_FILL(32f, float)
TMK_TPP_FILL(32fc, Tpp32fc)
TMK_TPP_FILL(32s, int32_t)
TMK_TPP_FILL(32sc, Tpp32sc)
TMK_TPP_FILL(64f, double)
TMK_TPP_FILL(64fc, Tpp64fc)
TMK_TPP_FILL(64s, int64_t)
TMK_TPP_FILL(64sc, Tpp64sc)
#undef TMK_TPP_FILL

/* What the functions above end in, for callers whose arguments hold: nothing is checked, and a count of 0 is
 * allowed. Copy and Zero count bytes, the others elements of the width in their name. */
void tmk_dft_t4_ownsCopy_8u(const uint8_t* source, uint8_t* destination, size_t bytes);
void tmk_dft_t4_ownsZero_8u(uint8_t* destination, size_t bytes);
void tmk_dft_t4_ownsSet_8u(uint8_t value, uint8_t* destination, int32_t length);
void tmk_dft_t4_ownsSet_16u(uint16_t value, uint16_t* destination, int32_t length);
void tmk_dft_t4_ownsSet_32s(int32_t value, int32_t* destination, int32_t length);
void tmk_dft_t4_ownsSet_64s(int64_t value, int64_t* destination, int32_t length);
void tmk_dft_t4_ownsSet_64sc(Tpp64sc value, Tpp64sc* destination, int32_t length);

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif
#endif
