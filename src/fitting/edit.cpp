// SPDX-License-Identifier: Apache-2.0
// Edits of a task. Checks and stores alternate where a family of fields is edited at once: a call that fails
// has changed what comes before the failure.
#include "fitting/fields.hpp"
#include "fitting/row_pointers.hpp"
#include "platform/checks.hpp"

namespace tmk::fitting {

namespace {

template <class Real>
int32_t edit_spline(DFTask* handle, int64_t s_order, int64_t s_type, int64_t bc_type, const Real* bc,
                    int64_t ic_type, const Real* ic, Real* coefficients, int64_t s_hint) {
  if (handle == nullptr) return DF_STATUS_NULL_TASK;
  auto& t = task<Real>::of(handle);
  if (const int32_t bad =
          first_status({{s_order < 0, DF_STATUS_BAD_ORDER}, {s_type < 0, DF_STATUS_BAD_TYPE}}))
    return bad;
  t.s_order = s_order;
  t.s_type = s_type;
  const bool free_of_values = bc_type == DF_BC_NONE || bc_type == DF_BC_NOT_A_KNOT ||
                              bc_type == DF_BC_FREE_END || bc_type == DF_BC_PERIODIC;
  if (!free_of_values && bc == nullptr) return DF_STATUS_NULL_BC;
  t.bc_type = bc_type;
  t.bc = bc;
  if (const int32_t bad = first_status({{ic_type != 0 && ic == nullptr, DF_STATUS_NULL_IC},
                                        {ic_type == 0 && ic != nullptr, DF_STATUS_BAD_IC_TYPE}}))
    return bad;
  t.ic_type = ic_type;
  t.ic = ic;
  if (coefficients != nullptr) {
    if (t.ny == 0) return DF_STATUS_BAD_NY;
    if (const int32_t status = place_coefficients(t, coefficients, s_hint)) return status;
  }
  t.s_hint = s_hint;
  return 0;
}

template <class Real>
int32_t edit_pointer(DFTask* handle, int64_t attribute, const Real* pointer) {
  if (handle == nullptr) return DF_STATUS_NULL_TASK;
  auto& t = task<Real>::of(handle);
  if (t.dims != 1) return 0;
  if (!is_pointer(attribute)) return DF_STATUS_BAD_ATTRIBUTE;
  if (attribute == DF_COEFF && t.ny == 0) return DF_STATUS_BAD_NY;
  const auto& row = pointer_rows<Real>[attribute];
  if (pointer == nullptr) return row.null_status;
  if (attribute == DF_Y) return place_functions(t, t.ny, pointer);
  if (attribute == DF_COEFF) return place_coefficients(t, const_cast<Real*>(pointer), t.s_hint);
  t.*row.field = pointer;
  return 0;
}

// A task made without functions has no rows until one of them is given.
template <class Pointer>
int32_t set_row(Pointer*& rows, int64_t ny, int64_t index, Pointer pointer) {
  if (rows == nullptr) rows = new_rows<Pointer>(ny);
  if (rows == nullptr) return DF_STATUS_NO_MEMORY;
  rows[index] = pointer;
  return 0;
}

template <class Real>
int32_t edit_row(DFTask* handle, int64_t attribute, int64_t index, const Real* pointer) {
  if (handle == nullptr) return DF_STATUS_NULL_TASK;
  auto& t = task<Real>::of(handle);
  if (t.dims != 1) return 0;
  if (attribute != DF_Y && attribute != DF_COEFF) return DF_STATUS_BAD_ATTRIBUTE;
  const int32_t bad = first_status({{attribute == DF_Y && t.columns(), DF_STATUS_BAD_YHINT},
                                    {index < 0 || index >= t.ny, DF_STATUS_BAD_INDEX},
                                    {pointer == nullptr, pointer_rows<Real>[attribute].null_status}});
  if (bad != 0) return bad;
  return attribute == DF_Y ? set_row(t.y_rows, t.ny, index, pointer)
                           : set_row(t.coeff_rows, t.ny, index, const_cast<Real*>(pointer));
}

// The value is stored before the index is built from it.
int32_t edit_value(task<double>& t, int64_t attribute, int64_t value) {
  if (attribute == DF_AUX_FLAG) {
    if (value != 0 && value != 1) return DF_STATUS_BAD_AUX_FLAG;
    t.aux_flag = static_cast<int32_t>(value);
    return 0;
  }
  if (!is_value(attribute)) return DF_STATUS_BAD_ATTRIBUTE;
  const value_row& row = value_row_of(attribute);
  if (!row.accepts(value)) return row.status;
  if (attribute == DF_NY) {
    const int32_t bad = extend_rows(t.y_rows, value);
    if (bad != 0) return bad;
    if (const int32_t status = extend_rows(t.coeff_rows, value)) return status;
  }
  t.*row.field = value;
  if (attribute == DF_XHINT && value == DF_PARTITION_NON_UNIFORM && t.buckets != nullptr) {
    if (t.precision != 0)
      build_bucket_index(t);
    else
      build_bucket_index(reinterpret_cast<task<float>&>(t));
  }
  return 0;
}

}  // namespace

}  // namespace tmk::fitting

int32_t tmk_df_kernel_iEditVal(DFTask* task, int64_t attribute, int64_t value) {
  if (task == nullptr) return DF_STATUS_NULL_TASK;
  auto& t = tmk::fitting::task<double>::of(task);
  return t.dims != 1 ? 0 : tmk::fitting::edit_value(t, attribute, value);
}

#define TMK_DF_EDITS(letter, Real)                                                                      \
  int32_t tmk_df_kernel_##letter##EditPPSpline1D(DFTask* task, int64_t s_order, int64_t s_type,         \
                                                 int64_t bc_type, const Real* bc, int64_t ic_type,      \
                                                 const Real* ic, Real* s_coeff, int64_t s_hint) {       \
    return tmk::fitting::edit_spline(task, s_order, s_type, bc_type, bc, ic_type, ic, s_coeff, s_hint); \
  }                                                                                                     \
  int32_t tmk_df_kernel_##letter##EditPtr(DFTask* task, int64_t attribute, const Real* pointer) {       \
    return tmk::fitting::edit_pointer(task, attribute, pointer);                                        \
  }                                                                                                     \
  int32_t tmk_df_kernel_##letter##EditIdxPtr(DFTask* task, int64_t attribute, int64_t index,            \
                                             const Real* pointer) {                                     \
    return tmk::fitting::edit_row(task, attribute, index, pointer);                                     \
  }
TMK_DF_EDITS(d, double)
TMK_DF_EDITS(s, float)
