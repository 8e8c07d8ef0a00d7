/* SPDX-License-Identifier: Apache-2.0 */
/* Parameter and argument lists of the call shapes: E is the element type, R its real part's type. First those
 * of a function of one element, then those of the entry points.
 * For the preprocessor alone: functions.def names the shapes, and headers, records and entry points paste
 * them. */
#define TMK_ELEMENT_unary(E, R) const E *a, E *r
#define TMK_ELEMENT_binary(E, R) const E *a, const E *b, E *r
#define TMK_ELEMENT_scalar_exponent(E, R) const E *a, E b, E *r
#define TMK_ELEMENT_two_results(E, R) const E *a, E *r1, E *r2
#define TMK_ELEMENT_linear_fraction(E, R) const E *a, const E *b, E scalea, E shifta, E scaleb, E shiftb, E *r
#define TMK_ELEMENT_real_result(E, R) const E *a, R *r
#define TMK_ELEMENT_real_argument(E, R) const R *a, E *r
#define TMK_PARAMETERS_unary(E, R) (int32_t n, TMK_ELEMENT_unary(E, R))
#define TMK_PARAMETERS_binary(E, R) (int32_t n, TMK_ELEMENT_binary(E, R))
#define TMK_PARAMETERS_scalar_exponent(E, R) (int32_t n, TMK_ELEMENT_scalar_exponent(E, R))
#define TMK_PARAMETERS_two_results(E, R) (int32_t n, TMK_ELEMENT_two_results(E, R))
#define TMK_PARAMETERS_linear_fraction(E, R) (int32_t n, TMK_ELEMENT_linear_fraction(E, R))
#define TMK_PARAMETERS_real_result(E, R) (int32_t n, TMK_ELEMENT_real_result(E, R))
#define TMK_PARAMETERS_real_argument(E, R) (int32_t n, TMK_ELEMENT_real_argument(E, R))
#define TMK_PARAMETERS_pack_stride(E, R) (int64_t n, const E* a, int64_t inc, E* y)
#define TMK_PARAMETERS_pack_mask(E, R) (int64_t n, const E* a, const int32_t* mask, E* y)
#define TMK_PARAMETERS_pack_index(E, R) (int64_t n, const E* a, const int32_t* index, E* y)
#define TMK_PARAMETERS_unpack_stride(E, R) (int64_t n, const E* a, E* y, int64_t inc)
#define TMK_PARAMETERS_unpack_mask(E, R) (int64_t n, const E* a, E* y, const int32_t* mask)
#define TMK_PARAMETERS_unpack_index(E, R) (int64_t n, const E* a, E* y, const int32_t* index)

/* Kernels take what their entry point takes; the gather and scatter kernels then take the flag `narrow`. */
#define TMK_KERNEL_PARAMETERS_unary TMK_PARAMETERS_unary
#define TMK_KERNEL_PARAMETERS_binary TMK_PARAMETERS_binary
#define TMK_KERNEL_PARAMETERS_scalar_exponent TMK_PARAMETERS_scalar_exponent
#define TMK_KERNEL_PARAMETERS_two_results TMK_PARAMETERS_two_results
#define TMK_KERNEL_PARAMETERS_linear_fraction TMK_PARAMETERS_linear_fraction
#define TMK_KERNEL_PARAMETERS_real_result TMK_PARAMETERS_real_result
#define TMK_KERNEL_PARAMETERS_real_argument TMK_PARAMETERS_real_argument
#define TMK_KERNEL_PARAMETERS_pack_stride(E, R) (int64_t n, const E* a, int64_t inc, E* y, int32_t narrow)
#define TMK_KERNEL_PARAMETERS_pack_mask(E, R) (int64_t n, const E* a, const void* mask, E* y, int32_t narrow)
#define TMK_KERNEL_PARAMETERS_pack_index(E, R) \
  (int64_t n, const E* a, const void* index, E* y, int32_t narrow)
#define TMK_KERNEL_PARAMETERS_unpack_stride(E, R) (int64_t n, const E* a, E* y, int64_t inc, int32_t narrow)
#define TMK_KERNEL_PARAMETERS_unpack_mask(E, R) \
  (int64_t n, const E* a, E* y, const void* mask, int32_t narrow)
#define TMK_KERNEL_PARAMETERS_unpack_index(E, R) \
  (int64_t n, const E* a, E* y, const void* index, int32_t narrow)

/* What an entry point passes to the kernel. */
#define TMK_ARGUMENTS_unary (n, a, r)
#define TMK_ARGUMENTS_binary (n, a, b, r)
#define TMK_ARGUMENTS_scalar_exponent (n, a, b, r)
#define TMK_ARGUMENTS_two_results (n, a, r1, r2)
#define TMK_ARGUMENTS_linear_fraction (n, a, b, scalea, shifta, scaleb, shiftb, r)
#define TMK_ARGUMENTS_real_result (n, a, r)
#define TMK_ARGUMENTS_real_argument (n, a, r)
#define TMK_ARGUMENTS_pack_stride (n, a, inc, y, 1)
#define TMK_ARGUMENTS_pack_mask (n, a, mask, y, 1)
#define TMK_ARGUMENTS_pack_index (n, a, index, y, 1)
#define TMK_ARGUMENTS_unpack_stride (n, a, y, inc, 1)
#define TMK_ARGUMENTS_unpack_mask (n, a, y, mask, 1)
#define TMK_ARGUMENTS_unpack_index (n, a, y, index, 1)

/* Element types and trampoline suffixes by precision letter. */
#define TMK_TYPE_s float
#define TMK_TYPE_d double
#define TMK_TYPE_c tmk_complex8
#define TMK_TYPE_z tmk_complex16
#define TMK_REAL_s float
#define TMK_REAL_d double
#define TMK_REAL_c float
#define TMK_REAL_z double
#define TMK_LA_BITS_s 21
#define TMK_LA_BITS_d 50
#define TMK_LA_BITS_c 21
#define TMK_LA_BITS_z 50
#define TMK_EP_BITS_s 11
#define TMK_EP_BITS_d 26
#define TMK_EP_BITS_c 11
#define TMK_EP_BITS_z 26

#define TMK_JOIN_(a, b) a##b
#define TMK_JOIN(a, b) TMK_JOIN_(a, b)

/* Parameter lists of one row of functions.def. */
#define TMK_ROW_PARAMETERS(letter, shape) TMK_PARAMETERS_##shape(TMK_TYPE_##letter, TMK_REAL_##letter)
#define TMK_ROW_KERNEL_PARAMETERS(letter, shape) \
  TMK_KERNEL_PARAMETERS_##shape(TMK_TYPE_##letter, TMK_REAL_##letter)
#define TMK_ROW_REFERENCE_PARAMETERS(letter, shape) \
  (TMK_ELEMENT_##shape(TMK_TYPE_##letter, TMK_REAL_##letter))
