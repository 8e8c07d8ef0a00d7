// SPDX-License-Identifier: Apache-2.0
// Queries of a task.
#include <cstring>

#include "fitting/fields.hpp"
#include "platform/checks.hpp"

namespace tmk::fitting {

namespace {

template <class Real>
Real* row_at(const task<Real>& t, int64_t attribute, int64_t index) {
  const Real* const* rows = attribute == DF_Y ? t.y_rows : t.coeff_rows;
  return rows != nullptr ? const_cast<Real*>(rows[index]) : nullptr;
}

template <class Real>
int32_t query_pointer(DFTask* handle, int64_t attribute, Real** pointer) {
  if (const int32_t bad = first_status(
          {{handle == nullptr, DF_STATUS_NULL_TASK}, {pointer == nullptr, DF_STATUS_NULL_RESULT}}))
    return bad;
  const auto& t = task<Real>::of(handle);
  if (t.dims != 1) return 0;
  if (!is_pointer(attribute)) return DF_STATUS_BAD_ATTRIBUTE;
  const auto field = pointer_rows<Real>[attribute].field;
  *pointer = field != nullptr ? const_cast<Real*>(t.*field) : row_at(t, attribute, 0);
  return 0;
}

// Here the index is checked first, and may be ny: the slot after the last is null.
template <class Real>
int32_t query_row(DFTask* handle, int64_t attribute, int64_t index, Real** pointer) {
  if (const int32_t bad = first_status(
          {{handle == nullptr, DF_STATUS_NULL_TASK}, {pointer == nullptr, DF_STATUS_NULL_RESULT}}))
    return bad;
  const auto& t = task<Real>::of(handle);
  if (index < 0 || index > t.ny) return DF_STATUS_BAD_INDEX;
  if (t.dims != 1) return 0;
  if (attribute == DF_Y && t.columns()) return DF_STATUS_BAD_YHINT;
  if (attribute != DF_Y && attribute != DF_COEFF) return DF_STATUS_BAD_ATTRIBUTE;
  *pointer = row_at(t, attribute, index);
  return 0;
}

int32_t query_value(const task<double>& t, int64_t attribute, void* place) {
  if (attribute != DF_AUX_FLAG && !is_value(attribute)) return DF_STATUS_BAD_ATTRIBUTE;
  const int64_t value = attribute == DF_AUX_FLAG ? t.aux_flag : t.*value_row_of(attribute).field;
  std::memcpy(place, &value, t.wide_ints != 0 ? sizeof value : sizeof(int32_t));
  return 0;
}

}  // namespace

}  // namespace tmk::fitting

int32_t tmk_df_kernel_iQueryVal(DFTask* task, int64_t attribute, void* value) {
  if (const int32_t bad = tmk::first_status(
          {{task == nullptr, DF_STATUS_NULL_TASK}, {value == nullptr, DF_STATUS_NULL_RESULT}}))
    return bad;
  const auto& t = tmk::fitting::task<double>::of(task);
  return t.dims != 1 ? 0 : tmk::fitting::query_value(t, attribute, value);
}

#define TMK_DF_QUERIES(letter, Real)                                                          \
  int32_t tmk_df_kernel_##letter##QueryPtr(DFTask* task, int64_t attribute, Real** pointer) { \
    return tmk::fitting::query_pointer(task, attribute, pointer);                             \
  }                                                                                           \
  int32_t tmk_df_kernel_##letter##QueryIdxPtr(DFTask* task, int64_t attribute, int64_t index, \
                                              Real** pointer) {                               \
    return tmk::fitting::query_row(task, attribute, index, pointer);                          \
  }
TMK_DF_QUERIES(d, double)
TMK_DF_QUERIES(s, float)
