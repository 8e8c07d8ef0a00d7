// The functions that have a value, by functions.def, and their kernels by tier and slot.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tmk/abi/vtm.h"

namespace tmk::accuracy {

enum class call_shape {
  unary,
  binary,
  scalar_exponent,
  two_results,
  linear_fraction,
  real_result,
  real_argument,
  pack_stride,
  pack_mask,
  pack_index,
  unpack_stride,
  unpack_mask,
  unpack_index
};

struct vector_function {
  std::string_view name;  // "sExp"
  std::string_view stem;
  char letter;
  call_shape shape;
  bool worked;  // has kernels of its own per level and tier; otherwise one reference kernel serves all
  const VtmDispatchRecord* record;

  bool is_single() const { return letter == 's' || letter == 'c'; }
  bool is_complex() const { return letter == 'c' || letter == 'z'; }
  bool has_value() const { return shape < call_shape::pack_stride; }
};

inline std::vector<vector_function> functions_with_value() {
  constexpr bool worked = true, reference = false;
  std::vector<vector_function> all = {
#define TMK_FUNCTION(letter, stem, shape, slots, stage) \
  {#letter #stem, #stem, #letter[0], call_shape::shape, stage, &tmk_vtm_kernel_##letter##stem##_ttab},
#include "vector/frame/functions.def"
  };
  std::erase_if(all, [](const vector_function& f) { return !f.has_value(); });
  return all;
}

inline constexpr std::string_view level_names[] = {"LA", "HA", "EP"};  // in slot order

}  // namespace tmk::accuracy
