// SPDX-License-Identifier: Apache-2.0
// Plain loops that gather and scatter, as the compiler makes them at a tier's instruction set. Compiled once
// per tier. The stride is 2; masks and indices are c.b.
#include <stdint.h>

#include "peer_forms.hpp"

namespace {

struct element_c {
  float re, im;
};
struct element_z {
  double re, im;
};

template <class Element>
void pack_stride(const tmk::bench::call& c) {
  const Element* a = static_cast<const Element*>(c.a);
  Element* r = static_cast<Element*>(c.r);
  for (int32_t i = 0; i < c.n; ++i) r[i] = a[2 * i];
}
template <class Element>
void unpack_stride(const tmk::bench::call& c) {
  const Element* a = static_cast<const Element*>(c.a);
  Element* r = static_cast<Element*>(c.r);
  for (int32_t i = 0; i < c.n; ++i) r[2 * i] = a[i];
}
template <class Element>
void pack_mask(const tmk::bench::call& c) {
  const Element* a = static_cast<const Element*>(c.a);
  const int32_t* mask = static_cast<const int32_t*>(c.b);
  Element* r = static_cast<Element*>(c.r);
  for (int32_t i = 0, k = 0; i < c.n; ++i) {
    r[k] = a[i];  // without a branch that would be mispredicted
    k += mask[i] != 0;
  }
}
template <class Element>
void unpack_mask(const tmk::bench::call& c) {
  const Element* a = static_cast<const Element*>(c.a);
  const int32_t* mask = static_cast<const int32_t*>(c.b);
  Element* r = static_cast<Element*>(c.r);
  for (int32_t i = 0, k = 0; i < c.n; ++i)
    if (mask[i] != 0) r[i] = a[k++];
}
template <class Element>
void pack_index(const tmk::bench::call& c) {
  const Element* a = static_cast<const Element*>(c.a);
  const int32_t* index = static_cast<const int32_t*>(c.b);
  Element* r = static_cast<Element*>(c.r);
  for (int32_t i = 0; i < c.n; ++i) r[i] = a[index[i]];
}
template <class Element>
void unpack_index(const tmk::bench::call& c) {
  const Element* a = static_cast<const Element*>(c.a);
  const int32_t* index = static_cast<const int32_t*>(c.b);
  Element* r = static_cast<Element*>(c.r);
  for (int32_t i = 0; i < c.n; ++i) r[index[i]] = a[i];
}

}  // namespace

namespace tmk::bench {
namespace {

#define TMK_LOOPS(stem, loop)                                                                                \
  {"s" #stem, "loop", loop<float>}, {"d" #stem, "loop", loop<double>}, {"c" #stem, "loop", loop<element_c>}, \
  {                                                                                                          \
    "z" #stem, "loop", loop<element_z>                                                                       \
  }

const peer rows[] = {
    TMK_LOOPS(PackI, pack_stride),     TMK_LOOPS(PackM, pack_mask),     TMK_LOOPS(PackV, pack_index),
    TMK_LOOPS(UnpackI, unpack_stride), TMK_LOOPS(UnpackM, unpack_mask), TMK_LOOPS(UnpackV, unpack_index),
};

}  // namespace

peer_list TMK_PEERS(gather)() { return {rows, sizeof rows / sizeof rows[0]}; }

}  // namespace tmk::bench
