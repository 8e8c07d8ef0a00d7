// SPDX-License-Identifier: Apache-2.0
// The functions that have a value, by functions.def, and their kernels by tier and slot: what the tools that
// measure kernels walk over.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "tmk/abi/vtm.h"

namespace tmk::tools {

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
  bool vectorized;  // has kernels of its own; otherwise one extended-precision kernel serves all levels and
                    // tiers
  const VtmDispatchRecord* record;

  bool is_single() const { return letter == 's' || letter == 'c'; }
  bool is_complex() const { return letter == 'c' || letter == 'z'; }
  bool has_value() const { return shape < call_shape::pack_stride; }
  bool has_complex_result() const { return is_complex() && shape != call_shape::real_result; }
  // Powers lose the small part of a result where the parts of b ln a cancel: what they promise is its
  // modulus.
  bool promises_modulus() const { return is_complex() && (stem == "Pow" || stem == "Powx"); }
};

// In a unit of their own: what walks over the list is not compiled anew when a row changes.
std::vector<vector_function> all_functions();
std::vector<vector_function> functions_with_value();  // all but gather and scatter

inline constexpr std::string_view level_names[] = {"LA", "HA", "EP"};  // in slot order
inline constexpr int all_tiers[] = {TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4};

// Tiers that the processor has and the environment's TMK_TIER allows. Selects the last of them.
inline std::vector<int> available_tiers() {
  std::vector<int> tiers;
  for (int tier : all_tiers)
    if (tmk_select_tier(tier) == tier) tiers.push_back(tier);
  return tiers;
}

struct kernel_use {
  int tier, slot;
};

// A kernel and the slots that hold it; a kernel's first use names it.
struct kernel {
  VtmKernel address;
  std::vector<kernel_use> uses;
};

// The distinct kernels of a function in these (available) tiers and slots. Selects the tiers in turn.
inline std::vector<kernel> distinct_kernels(const vector_function& f, const std::vector<int>& tiers,
                                            const std::vector<int>& slots) {
  std::vector<kernel> kernels;
  for (int tier : tiers) {
    tmk_select_tier(tier);
    for (int slot : slots) {
      const VtmKernel address = f.record->kernel[slot];
      auto own = std::ranges::find(kernels, address, &kernel::address);
      if (own == kernels.end()) own = kernels.insert(own, {address, {}});
      own->uses.push_back({tier, slot});
    }
  }
  return kernels;
}

}  // namespace tmk::tools
