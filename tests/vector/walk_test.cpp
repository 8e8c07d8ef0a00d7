// SPDX-License-Identifier: Apache-2.0
// The walks of the kernels: every vectorized real function of one argument, in every slot of the selected
// tier, between inaccessible pages and cut at every length.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>
#include <vector>

#include "tmk/abi/vtm.h"

namespace {

struct function {
  std::string_view name, shape, stage;
  const VtmDispatchRecord* record;
};
#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) \
  {#letter #stem, #shape, #stage, &tmk_vtm_kernel_##letter##stem##_ttab},
const function all_functions[] = {
#include "vector/registry/functions.def"
};
#undef TMK_FUNCTION

// A page of memory with an inaccessible one on either side.
class fenced_page {
 public:
  fenced_page() : size_(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {
    base_ = static_cast<char*>(mmap(nullptr, 3 * size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(base_ + size_, size_, PROT_READ | PROT_WRITE);
  }
  ~fenced_page() { munmap(base_, 3 * size_); }
  fenced_page(const fenced_page&) = delete;
  fenced_page& operator=(const fenced_page&) = delete;

  template <class Real>
  Real* front() const {
    return reinterpret_cast<Real*>(base_ + size_);
  }
  template <class Real>
  Real* back(size_t count) const {
    return reinterpret_cast<Real*>(base_ + 2 * size_) - count;
  }

 private:
  size_t size_;
  char* base_;
};

template <class Real>
std::vector<Real> mixed_arguments(size_t count) {
  using limits = std::numeric_limits<Real>;
  constexpr Real special[] = {
      0,   limits::infinity(), -1, limits::quiet_NaN(), limits::denorm_min(), limits::max(),
      -0., -limits::infinity()};
  std::vector<Real> a(count);
  for (size_t i = 0; i < count; ++i)
    a[i] = i % 9 == 8 ? special[i / 9 % std::size(special)] : Real(0.37) * Real(i + 1);
  return a;
}

template <class Real>
bool same_bits(const Real* a, const Real* b, size_t count) {
  return std::memcmp(a, b, count * sizeof(Real)) == 0;
}

// Results in place and out of place, at either end of a page, equal those of the elements one by one, and the
// rest of the page stays as it was.
template <class Real>
void expect_walk(const function& f, int slot) {
  const auto kernel = reinterpret_cast<void (*)(int32_t, const Real*, Real*)>(f.record->kernel[slot]);
  constexpr size_t longest = 150;
  const auto a = mixed_arguments<Real>(longest);
  std::vector<Real> singly(longest);
  for (size_t i = 0; i < longest; ++i) kernel(1, &a[i], &singly[i]);

  const fenced_page from, to;
  for (size_t n = 0; n <= longest; n += n < 70 ? 1 : 16) {
    for (const bool at_end : {false, true}) {
      Real* const x = at_end ? from.back<Real>(n) : from.front<Real>();
      Real* const y = at_end ? to.back<Real>(n) : to.front<Real>();
      Real* const beyond = at_end ? y - 1 : y + n;
      const Real guard(-12345);
      std::copy_n(a.data(), n, x);
      *beyond = guard;
      kernel(static_cast<int32_t>(n), x, y);
      ASSERT_TRUE(same_bits(y, singly.data(), n)) << f.name << " slot " << slot << ", " << n << " elements";
      ASSERT_EQ(*beyond, guard) << f.name << " slot " << slot << ", " << n << " elements";
      kernel(static_cast<int32_t>(n), x, x);
      ASSERT_TRUE(same_bits(x, singly.data(), n)) << f.name << " slot " << slot << ", in place, " << n;
    }
  }
}

TEST(walk, elements_do_not_depend_on_their_place) {
  ASSERT_GE(tmk_select_tier(TMK_TIER_WIDEST), 0);
  const uint32_t mode = tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT | VTM_ERRMODE_IGNORE);
  int seen = 0;
  for (const function& f : all_functions) {
    if (f.shape != "unary" || f.stage != "vectorized" || f.name[0] == 'c' || f.name[0] == 'z') continue;
    for (int slot = 0; slot < 3; ++slot) {
      if (f.name[0] == 's')
        expect_walk<float>(f, slot);
      else
        expect_walk<double>(f, slot);
    }
    ++seen;
  }
  EXPECT_GT(seen, 0);
  tmk_vtm_kernel_SetMode(mode);
}

// Long results go past the caches, unless they replace their arguments.
template <class Real>
void expect_long_walk(const function& f) {
  const auto kernel = reinterpret_cast<void (*)(int32_t, const Real*, Real*)>(f.record->kernel[TMK_SLOT_HA]);
  constexpr size_t n = (size_t{9} << 20) / sizeof(Real) + 77;
  const auto a = mixed_arguments<Real>(n);
  auto in_place = a;
  kernel(n, in_place.data(), in_place.data());
  for (const size_t offset : {0, 1, 3}) {
    std::vector<Real> r(n + offset + 1, Real(-12345));
    kernel(n, a.data(), r.data() + offset);
    EXPECT_TRUE(same_bits(r.data() + offset, in_place.data(), n)) << f.name << " offset " << offset;
    EXPECT_EQ(r.back(), Real(-12345)) << f.name << " offset " << offset;
  }
}

TEST(walk, long_arrays) {
  ASSERT_GE(tmk_select_tier(TMK_TIER_WIDEST), 0);
  const uint32_t mode = tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT | VTM_ERRMODE_IGNORE);
  for (const function& f : all_functions) {
    if (f.name == "sInv" || f.name == "sAbs" || f.name == "sExp") expect_long_walk<float>(f);
    if (f.name == "dInvSqrt" || f.name == "dAbs") expect_long_walk<double>(f);
  }
  tmk_vtm_kernel_SetMode(mode);
}

}  // namespace
