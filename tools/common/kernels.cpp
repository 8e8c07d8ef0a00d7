// SPDX-License-Identifier: Apache-2.0
#include "tools/common/kernels.hpp"

namespace tmk::tools {

std::vector<vector_function> all_functions() {
  return {
#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) \
  {#letter #stem,                                             \
   #stem,                                                     \
   #letter[0],                                                \
   call_shape::shape,                                         \
   std::string_view(#stage) != "scalar",                      \
   &tmk_vtm_kernel_##letter##stem##_ttab},
#include "vector/registry/functions.def"
  };
}

std::vector<vector_function> functions_with_value() {
  auto functions = all_functions();
  std::erase_if(functions, [](const vector_function& f) { return !f.has_value(); });
  return functions;
}

}  // namespace tmk::tools
