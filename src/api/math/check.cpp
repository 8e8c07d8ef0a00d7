// SPDX-License-Identifier: Apache-2.0
#include "api/math/check.hpp"

#include "api/call/refuse.hpp"
#include "api/math/strided.hpp"

namespace tmk::detail {

int slot_of(const function_row& f, accuracy level) {
  const int slot =
      level == accuracy::inherited ? tmk_vtm_kernel_GetTTableIndex() : static_cast<int>(level) - 1;
  if (slot < TMK_SLOT_LA || slot > TMK_SLOT_EP) [[unlikely]] {
    const std::string value = std::to_string(slot + 1);
    refuse(
        f.name.data(), "level", value,
        "is " + value + (level == accuracy::inherited ? " in the thread's mode" : "") + ", want 1, 2 or 3");
  }
  return slot;
}

namespace {

// All matrices of a call have the shape of the first. A result may be an argument itself where both have the
// same strides, and no element of a result is written twice.
struct matrix_operand {
  operand values;
  strides layout;
  placement where() const { return {values.values.data, layout, values.width}; }
};

void check_shape(const char* function, const matrix_operand& o, const strides& want) {
  const auto refuse_count = [&](std::size_t count, std::size_t wanted, const char* what) {
    refuse(function, o.values.name, std::to_string(count),
           "has " + std::to_string(count) + what + ", want " + std::to_string(wanted));
  };
  if (o.layout.cols == 1 && want.cols == 1) check_size(function, o.values, want.rows);
  if (o.layout.rows != want.rows) refuse_count(o.layout.rows, want.rows, " rows");
  if (o.layout.cols != want.cols) refuse_count(o.layout.cols, want.cols, " columns");
  check_data(function, o.values);
}

void check_result(const char* function, const matrix_operand& r, const matrix_operand& other, bool in_place) {
  const strides &s = r.layout, &t = other.layout;
  const bool same_strides = (s.rows == 1 || s.row == t.row) && (s.cols == 1 || s.col == t.col);
  if (in_place && r.values.values.data == other.values.values.data && same_strides) return;
  if (may_overlap(r.where(), other.where()))
    refuse(function, r.values.name, "overlap", std::string("overlaps ") + other.values.name);
}

void check_matrices(const function_row& f, const call& c) {
  const char* function = f.name.data();
  const matrix_operand a{{"a", c.a, f.a.width()}, c.layout[0]}, b{{"b", c.b, f.a.width()}, c.layout[1]};
  const matrix_operand r{{f.has_r2 ? "r1" : "r", c.r, f.r.width()}, c.layout[2]},
      r2{{"r2", c.r2, f.r.width()}, c.layout[3]};
  check_data(function, a.values);
  if (f.has_b) check_shape(function, b, a.layout);
  check_shape(function, r, a.layout);
  if (f.has_r2) check_shape(function, r2, a.layout);
  if (c.a.size == 0) return;
  for (const matrix_operand* result : {&r, &r2}) {
    if (result == &r2 && !f.has_r2) break;
    if (repeats_elements(result->layout))
      refuse(function, result->values.name, "strides", "has strides that write an element more than once");
    check_result(function, *result, a, f.a.width() == f.r.width());
    if (f.has_b) check_result(function, *result, b, true);
  }
  if (f.has_r2) check_result(function, r2, r, false);
}

}  // namespace

void check(const function_row& f, const call& c) {
  if (c.layout != nullptr) return check_matrices(f, c);
  const char* function = f.name.data();
  const operand a{"a", c.a, f.a.width()}, b{"b", c.b, f.a.width()};
  const operand r{f.has_r2 ? "r1" : "r", c.r, f.r.width()}, r2{"r2", c.r2, f.r.width()};
  const bool in_place = a.width == r.width;

  check_data(function, a);
  if (f.has_b) {
    check_size(function, b, c.a.size);
    check_data(function, b);
  }
  check_size(function, r, c.a.size);
  check_data(function, r);
  check_overlap(function, r, a, in_place);
  if (f.has_b) check_overlap(function, r, b, in_place);
  if (f.has_r2) {
    check_size(function, r2, c.a.size);
    check_data(function, r2);
    check_overlap(function, r2, a, in_place);
    check_overlap(function, r2, r, false);
  }
}

}  // namespace tmk::detail
