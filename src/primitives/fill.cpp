// SPDX-License-Identifier: Apache-2.0
// Copy, zero and set. A value is set by the routine of its width, whatever its type; copies and zeros count
// bytes. The C library's memcpy and memset pick their own vectors and streaming stores.
#include <algorithm>
#include <bit>
#include <cstring>

#include "tmk/abi/tpp.h"

void tmk_dft_t4_ownsCopy_8u(const uint8_t* source, uint8_t* destination, size_t bytes) {
  std::memcpy(destination, source, bytes);
}
void tmk_dft_t4_ownsZero_8u(uint8_t* destination, size_t bytes) { std::memset(destination, 0, bytes); }
void tmk_dft_t4_ownsSet_8u(uint8_t value, uint8_t* destination, int32_t length) {
  std::memset(destination, value, static_cast<size_t>(length));
}

namespace tmk::primitives {
namespace {

// The destination may be an array of any type of this width: whole blocks of the value are copied as bytes.
template <class Value>
void set(Value value, Value* destination, int32_t length) {
  constexpr int32_t block = 4096 / sizeof(Value);
  Value values[block];
  std::fill_n(values, std::min(length, block), value);
  for (int32_t i = 0; i < length;) {
    const int32_t count = std::min(length - i, block);
    std::memcpy(destination + i, values, sizeof(Value) * static_cast<size_t>(count));
    i += count;
  }
}

}  // namespace
}  // namespace tmk::primitives

void tmk_dft_t4_ownsSet_16u(uint16_t value, uint16_t* destination, int32_t length) {
  tmk::primitives::set(value, destination, length);
}
void tmk_dft_t4_ownsSet_32s(int32_t value, int32_t* destination, int32_t length) {
  tmk::primitives::set(value, destination, length);
}
void tmk_dft_t4_ownsSet_64s(int64_t value, int64_t* destination, int32_t length) {
  tmk::primitives::set(value, destination, length);
}
void tmk_dft_t4_ownsSet_64sc(Tpp64sc value, Tpp64sc* destination, int32_t length) {
  tmk::primitives::set(value, destination, length);
}

namespace tmk::primitives {
namespace {

int32_t check(bool any_null, int32_t length) {
  return any_null ? TPP_STATUS_NULL_PTR : length < 1 ? TPP_STATUS_BAD_SIZE : TPP_STATUS_OK;
}

template <class T>
int32_t copy(const T* source, T* destination, int32_t length) {
  const int32_t status = check(source == nullptr || destination == nullptr, length);
  if (status == TPP_STATUS_OK)
    tmk_dft_t4_ownsCopy_8u(reinterpret_cast<const uint8_t*>(source), reinterpret_cast<uint8_t*>(destination),
                           sizeof(T) * static_cast<size_t>(length));
  return status;
}

template <class T>
int32_t zero(T* destination, int32_t length) {
  const int32_t status = check(destination == nullptr, length);
  if (status == TPP_STATUS_OK)
    tmk_dft_t4_ownsZero_8u(reinterpret_cast<uint8_t*>(destination), sizeof(T) * static_cast<size_t>(length));
  return status;
}

template <class Wide, class T>
int32_t set_as(void (*routine)(Wide, Wide*, int32_t), T value, T* destination, int32_t length) {
  static_assert(sizeof(T) == sizeof(Wide));
  const int32_t status = check(destination == nullptr, length);
  if (status == TPP_STATUS_OK)
    routine(std::bit_cast<Wide>(value), reinterpret_cast<Wide*>(destination), length);
  return status;
}

}  // namespace
}  // namespace tmk::primitives

#define TMK_FILL(tag, type, set_routine)                                                     \
  int32_t tmk_dft_t4_tppsCopy_##tag(const type* source, type* destination, int32_t length) { \
    return tmk::primitives::copy(source, destination, length);                               \
  }                                                                                          \
  int32_t tmk_dft_t4_tppsZero_##tag(type* destination, int32_t length) {                     \
    return tmk::primitives::zero(destination, length);                                       \
  }                                                                                          \
  int32_t tmk_dft_t4_tppsSet_##tag(type value, type* destination, int32_t length) {          \
    return tmk::primitives::set_as(set_routine, value, destination, length);                 \
  }
TMK_FILL(8u, uint8_t, tmk_dft_t4_ownsSet_8u)
TMK_FILL(16s, int16_t, tmk_dft_t4_ownsSet_16u)
TMK_FILL(16sc, Tpp16sc, tmk_dft_t4_ownsSet_32s)
TMK_FILL(32f, float, tmk_dft_t4_ownsSet_32s)
TMK_FILL(32fc, Tpp32fc, tmk_dft_t4_ownsSet_64s)
TMK_FILL(32s, int32_t, tmk_dft_t4_ownsSet_32s)
TMK_FILL(32sc, Tpp32sc, tmk_dft_t4_ownsSet_64s)
TMK_FILL(64f, double, tmk_dft_t4_ownsSet_64s)
TMK_FILL(64fc, Tpp64fc, tmk_dft_t4_ownsSet_64sc)
TMK_FILL(64s, int64_t, tmk_dft_t4_ownsSet_64s)
TMK_FILL(64sc, Tpp64sc, tmk_dft_t4_ownsSet_64sc)
#undef TMK_FILL
