// SPDX-License-Identifier: Apache-2.0
// Gather and scatter against their definition, for every element width, in the narrow and the wide form.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

extern "C" {
#include "vector/registry/declarations.h"
}

namespace {

template <class Element>
struct kernels {
  using by_stride = void (*)(int64_t, const Element*, int64_t, Element*, int32_t);
  using to_stride = void (*)(int64_t, const Element*, Element*, int64_t, int32_t);
  using by_entries = void (*)(int64_t, const Element*, const void*, Element*, int32_t);
  using to_entries = void (*)(int64_t, const Element*, Element*, const void*, int32_t);
  by_stride pack_stride;
  to_stride unpack_stride;
  by_entries pack_mask, pack_index;
  to_entries unpack_mask, unpack_index;
};

#define KERNEL(letter, stem) tmk_vtm_kernel_##letter##stem##_PXHAynn
#define KERNELS(letter)                                                                           \
  kernels<TMK_TYPE_##letter> {                                                                    \
    KERNEL(letter, PackI), KERNEL(letter, UnpackI), KERNEL(letter, PackM), KERNEL(letter, PackV), \
        KERNEL(letter, UnpackM), KERNEL(letter, UnpackV)                                          \
  }

// An upper half that the narrow form, and every index, must not see.
constexpr int64_t noise = int64_t{0x5A5A5A5A} << 32;

// Any bits will do, signalling NaNs among them.
template <class Element>
std::vector<Element> any_bits(size_t n, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<Element> v(n);
  auto* bytes = reinterpret_cast<unsigned char*>(v.data());
  for (size_t i = 0; i < n * sizeof(Element); ++i) bytes[i] = static_cast<unsigned char>(random() | 0x7F);
  return v;
}

template <class Element>
void expect_same(const std::vector<Element>& got, const std::vector<Element>& want, const char* what) {
  const bool same = want.empty() || std::memcmp(got.data(), want.data(), want.size() * sizeof(Element)) == 0;
  EXPECT_TRUE(same) << what;
}

// `places[i]` is the place in the spread array of element i of the dense one.
template <class Element, class Pack, class Unpack>
void expect_moves(const std::vector<int64_t>& places, const char* what, Pack pack, Unpack unpack) {
  const auto source = any_bits<Element>(64, 1), untouched = any_bits<Element>(64, 2);
  auto packed = untouched, unpacked = untouched, want_packed = untouched, want_unpacked = untouched;
  for (size_t i = 0; i < places.size(); ++i) {
    std::memcpy(&want_packed[i], &source[32 + places[i]], sizeof(Element));
    std::memcpy(&want_unpacked[32 + places[i]], &source[i], sizeof(Element));
  }
  pack(&source[32], packed.data());
  unpack(source.data(), &unpacked[32]);
  expect_same(packed, want_packed, what);
  expect_same(unpacked, want_unpacked, what);
}

template <class Element, class Entry>
void expect_definition(const kernels<Element>& k, int32_t narrow) {
  for (const int64_t inc : {3, 1, 0, -2}) {
    const int64_t unseen = narrow == 1 ? noise : 0;
    const auto stride = static_cast<int64_t>(narrow == 1 ? noise | static_cast<uint32_t>(inc) : inc);
    expect_moves<Element>(
        {0, inc, 2 * inc, 3 * inc, 4 * inc}, "stride",
        [&](auto* a, auto* y) { k.pack_stride(5 | unseen, a, stride, y, narrow); },
        [&](auto* a, auto* y) { k.unpack_stride(5 | unseen, a, y, stride, narrow); });
    expect_moves<Element>(
        {}, "nothing to do", [&](auto* a, auto* y) { k.pack_stride(-5, a, stride, y, narrow); },
        [&](auto* a, auto* y) { k.unpack_stride(unseen, a, y, stride, narrow); });
  }
  const Entry upper_half = sizeof(Entry) == 8 ? static_cast<Entry>(noise) : 4;
  const Entry mask[] = {0, 1, 0, -1, upper_half, 0};
  expect_moves<Element>(
      {1, 3, 4}, "mask", [&](auto* a, auto* y) { k.pack_mask(6, a, mask, y, narrow); },
      [&](auto* a, auto* y) { k.unpack_mask(6, a, y, mask, narrow); });
  const Entry unseen = sizeof(Entry) == 8 ? static_cast<Entry>(noise) : 0;
  const Entry index[] = {7, -3, 0 | unseen, 7, 2 | unseen};  // of two elements for one place, the later stays
  expect_moves<Element>(
      {7, -3, 0, 7, 2}, "index", [&](auto* a, auto* y) { k.pack_index(5, a, index, y, narrow); },
      [&](auto* a, auto* y) { k.unpack_index(5, a, y, index, narrow); });
}

template <class Element>
void expect_both_forms(const kernels<Element>& k) {
  expect_definition<Element, int32_t>(k, 1);
  expect_definition<Element, int64_t>(k, 0);
  expect_definition<Element, int64_t>(k, 2);
}

// By the dispatch records, on every tier: what is chosen moves, and nothing else is touched.
template <class Element>
void expect_masks(const VtmDispatchRecord& pack, const VtmDispatchRecord& unpack) {
  const auto pack_mask = reinterpret_cast<decltype(kernels<Element>::pack_mask)>(pack.kernel[TMK_SLOT_HA]);
  const auto unpack_mask =
      reinterpret_cast<decltype(kernels<Element>::unpack_mask)>(unpack.kernel[TMK_SLOT_HA]);
  std::mt19937 random(3);
  for (size_t n = 0; n < 80; ++n)
    for (const unsigned density : {0u, 8u, 15u, 16u}) {
      std::vector<int32_t> mask(n);
      std::vector<int64_t> wide_mask(n);
      const auto spread = any_bits<Element>(n, 1), untouched = any_bits<Element>(n, 2);
      auto want_packed = untouched, want_unpacked = untouched;
      size_t chosen = 0;
      for (size_t i = 0; i < n; ++i) {
        mask[i] = random() % 16 < density ? 1 << random() % 32 : 0;
        wide_mask[i] = mask[i] != 0 ? noise : 0;
        if (mask[i] != 0) want_packed[chosen++] = spread[i];
      }
      const std::vector<Element> dense(want_packed.begin(), want_packed.begin() + static_cast<long>(chosen));
      for (size_t i = 0, j = 0; i < n; ++i)
        if (mask[i] != 0) want_unpacked[i] = dense[j++];
      for (const int32_t narrow : {0, 1}) {
        const void* const entries = narrow == 1 ? static_cast<const void*>(mask.data()) : wide_mask.data();
        auto packed = untouched, unpacked = untouched;
        pack_mask(static_cast<int64_t>(n), spread.data(), entries, packed.data(), narrow);
        unpack_mask(static_cast<int64_t>(n), dense.data(), unpacked.data(), entries, narrow);
        expect_same(packed, want_packed, "packed");
        expect_same(unpacked, want_unpacked, "unpacked");
      }
    }
}

// Nothing is read past the last element of the stride.
template <class Element>
void expect_strides(const VtmDispatchRecord& pack) {
  const auto pack_stride =
      reinterpret_cast<decltype(kernels<Element>::pack_stride)>(pack.kernel[TMK_SLOT_HA]);
  for (const int64_t inc : {1, 2, 3})
    for (int64_t n = 1; n < 80; ++n) {
      const auto spread = any_bits<Element>(static_cast<size_t>((n - 1) * inc + 1), 1);
      auto packed = any_bits<Element>(static_cast<size_t>(n) + 1, 2), want = packed;
      for (int64_t i = 0; i < n; ++i)
        std::memcpy(&want[static_cast<size_t>(i)], &spread[static_cast<size_t>(i * inc)], sizeof(Element));
      for (const int32_t narrow : {0, 1}) {
        pack_stride(n, spread.data(), inc, packed.data(), narrow);
        expect_same(packed, want, "packed by a stride");
      }
    }
}

TEST(pack, masks_and_strides_of_any_length_on_every_tier) {
  for (const int tier : {TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4}) {
    if (tmk_select_tier(tier) != tier) continue;
    SCOPED_TRACE(tmk_tier_name(tier));
    expect_strides<float>(tmk_vtm_kernel_sPackI_ttab);
    expect_strides<double>(tmk_vtm_kernel_dPackI_ttab);
    expect_strides<tmk_complex8>(tmk_vtm_kernel_cPackI_ttab);
    expect_masks<float>(tmk_vtm_kernel_sPackM_ttab, tmk_vtm_kernel_sUnpackM_ttab);
    expect_masks<double>(tmk_vtm_kernel_dPackM_ttab, tmk_vtm_kernel_dUnpackM_ttab);
    expect_masks<tmk_complex8>(tmk_vtm_kernel_cPackM_ttab, tmk_vtm_kernel_cUnpackM_ttab);
    expect_masks<tmk_complex16>(tmk_vtm_kernel_zPackM_ttab, tmk_vtm_kernel_zUnpackM_ttab);
  }
  tmk_select_tier(TMK_TIER_WIDEST);
}

TEST(pack, moves_what_the_definition_says) {
  expect_both_forms(KERNELS(s));
  expect_both_forms(KERNELS(d));
  expect_both_forms(KERNELS(c));
  expect_both_forms(KERNELS(z));
}

}  // namespace
