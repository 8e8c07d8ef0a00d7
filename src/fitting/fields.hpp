// SPDX-License-Identifier: Apache-2.0
// The fields that edits and queries select by an attribute number.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "fitting/task.hpp"

namespace tmk::fitting {

constexpr bool is_storage_hint(int64_t v) {
  return v == 0 || v == DF_ROWS || v == DF_COLUMNS || v == DF_SEPARATE;
}
constexpr bool is_partition_hint(int64_t v) {
  return v == DF_PARTITION_UNKNOWN || v == DF_PARTITION_NON_UNIFORM || v == DF_PARTITION_QUASI_UNIFORM ||
         v == DF_PARTITION_UNIFORM;
}
// The types of cubics by which callers note a family. The constructor that a call names makes the spline; of
// these types only Hermite's changes a result, the status of a periodic spline without boundary values.
constexpr int64_t hermite_type = 3;
constexpr int64_t cubic_families[] = {2, hermite_type, 4, 5, 9};
constexpr bool is_cubic_family(int64_t v) {
  return std::find(std::begin(cubic_families), std::end(cubic_families), v) != std::end(cubic_families);
}
// Look-ups and steps are set by EditPPSpline1D alone.
constexpr bool is_type(int64_t v) {
  return v == DF_TYPE_STANDARD || v == DF_TYPE_SUBBOTIN || is_cubic_family(v);
}
constexpr bool is_ic_type(int64_t v) {
  return (v & DF_IC_KNOTS) != 0 || v == DF_IC_NONE || v == DF_IC_FIRST || v == DF_IC_SECOND;
}

// Values, by attribute from DF_NX on; those of both precisions are at the same place. DF_AUX_FLAG, 32 bits
// wide, is not among them.
struct value_row {
  int64_t task<double>::*field;
  bool (*accepts)(int64_t value);
  int32_t status;
};
constexpr value_row value_rows[] = {
    {&task<double>::nx, [](int64_t v) { return v >= 2; }, DF_STATUS_BAD_NX},
    {&task<double>::xhint, is_partition_hint, DF_STATUS_BAD_XHINT},
    {&task<double>::ny, [](int64_t v) { return v > 0; }, DF_STATUS_BAD_NY},
    {&task<double>::yhint, is_storage_hint, DF_STATUS_BAD_YHINT},
    {&task<double>::s_order, [](int64_t v) { return v >= 0; }, DF_STATUS_BAD_ORDER},
    {&task<double>::s_type, is_type, DF_STATUS_BAD_TYPE},
    {&task<double>::ic_type, is_ic_type, DF_STATUS_BAD_IC_TYPE},
    {&task<double>::bc_type, [](int64_t v) { return v >= 0; }, DF_STATUS_BAD_BC_TYPE},
    {&task<double>::s_hint, is_storage_hint, DF_STATUS_BAD_S_HINT}};
static_assert(DF_NX + sizeof value_rows / sizeof value_rows[0] == DF_AUX_FLAG);

constexpr bool is_value(int64_t attribute) { return attribute >= DF_NX && attribute < DF_AUX_FLAG; }
constexpr const value_row& value_row_of(int64_t attribute) { return value_rows[attribute - DF_NX]; }

// Pointers, by attribute: those in the record, and those in an array of row pointers.
template <class Real>
struct pointer_row {
  const Real* task<Real>::*field;
  int32_t null_status;
};
template <class Real>
constexpr pointer_row<Real> pointer_rows[] = {
    {nullptr, DF_STATUS_NULL_TASK},       {&task<Real>::x, DF_STATUS_NULL_X},
    {nullptr, DF_STATUS_NULL_Y},          {&task<Real>::ic, DF_STATUS_NULL_IC},
    {&task<Real>::bc, DF_STATUS_NULL_BC}, {nullptr, DF_STATUS_NULL_COEFF}};

constexpr bool is_pointer(int64_t attribute) { return attribute >= DF_X && attribute <= DF_COEFF; }

}  // namespace tmk::fitting
