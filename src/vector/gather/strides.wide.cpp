// SPDX-License-Identifier: Apache-2.0
// Gather of every other element by registers: parts of complex numbers, columns of two. Other strides go
// element by element, as on the baseline.
#include <cstdint>
#include <type_traits>

#include "simd/batch.hpp"
#include "tmk/abi/vtm.h"
#include "vector/gather/moves.hpp"
#include "vector/registry/shapes.h"

TMK_TIER_OPEN
namespace {

// Loads and permutations leave the bits of NaNs alone. The last element is not of a whole register: nothing
// past it may be read.
template <class Element, class Integer>
void pack_stride(int64_t n, const Element* a, int64_t inc, Element* y) {
  using number = std::conditional_t<sizeof(Element) == sizeof(float), float, double>;
  const Integer count = static_cast<Integer>(n);
  int64_t i = 0;
  if (static_cast<Integer>(inc) == 2) {
    const auto* from = reinterpret_cast<const number*>(a);
    auto* to = reinterpret_cast<number*>(y);
    for (; count - i > lanes<number>; i += lanes<number>)
      store(to + i, deinterleave(load(from + 2 * i), load(from + 2 * i + lanes<number>)).first);
  }
  along_stride<Integer>(count - i, inc, gather<Element>{a + 2 * i, y + i});
}

}  // namespace
TMK_TIER_CLOSE

#define TMK_NAME_(letter, tier) tmk_vtm_kernel_##letter##PackI_##tier##HAynn
#define TMK_NAME(letter, tier) TMK_NAME_(letter, tier)
#define TMK_DEFINE(letter)                                                                    \
  extern "C" void TMK_NAME(letter, TMK_TIER) TMK_ROW_KERNEL_PARAMETERS(letter, pack_stride) { \
    narrow == 1 ? tmk::pack_stride<TMK_TYPE_##letter, int32_t>(n, a, inc, y)                  \
                : tmk::pack_stride<TMK_TYPE_##letter, int64_t>(n, a, inc, y);                 \
  }
TMK_DEFINE(s)
TMK_DEFINE(d)
TMK_DEFINE(c)
