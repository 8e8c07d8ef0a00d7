// SPDX-License-Identifier: Apache-2.0
// Every function of the C++ interface runs the kernel of its row, at the level asked for, whole or cut.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <map>
#include <tmk/math.hpp>
#include <vector>

#include "api/math/run.hpp"
#include "tmk/abi/vtm.h"
#include "vector/registry/shapes.h"

namespace tmk {
namespace {

using detail::stem;

template <class T>
std::vector<T> ramp(std::size_t n, double first, double step) {
  std::vector<T> v(n);
  for (std::size_t i = 0; i < n; ++i) v[i] = static_cast<T>(first + step * static_cast<double>(i));
  return v;
}

template <class T>
bool same_bits(const std::vector<T>& x, const std::vector<T>& y) {
  return x.size() == y.size() && std::memcmp(x.data(), y.data(), x.size() * sizeof(T)) == 0;
}

// The C++ value type of an element.
template <class Element>
struct value_of {
  using type = Element;
};
template <>
struct value_of<tmk_complex8> {
  using type = std::complex<float>;
};
template <>
struct value_of<tmk_complex16> {
  using type = std::complex<double>;
};

constexpr int n = 7;

// Calls door(a, ..., r) and kernel(n, a, ..., r) and compares the bits.
template <class E, class R>
struct routes {
  using value = typename value_of<E>::type;
  const std::vector<value> a = ramp<value>(n, 0.25, 0.0625), b = ramp<value>(n, 0.5, 0.0625);
  std::vector<value> door_r = std::vector<value>(n), door_r2 = door_r, r = door_r, r2 = door_r;
  const E* ea = reinterpret_cast<const E*>(a.data());
  const E* eb = reinterpret_cast<const E*>(b.data());
  E* er = reinterpret_cast<E*>(r.data());
  E* er2 = reinterpret_cast<E*>(r2.data());
  bool same() const { return same_bits(door_r, r) && same_bits(door_r2, r2); }

  bool unary(auto door, auto kernel) { return door(a, door_r), kernel(n, ea, er), same(); }
  bool binary(auto door, auto kernel) { return door(a, b, door_r), kernel(n, ea, eb, er), same(); }
  bool scalar_exponent(auto door, auto kernel) {
    return door(a, b[3], door_r), kernel(n, ea, eb[3], er), same();
  }
  bool two_results(auto door, auto kernel) {
    return door(a, door_r, door_r2), kernel(n, ea, er, er2), same();
  }
  bool linear_fraction(auto door, auto kernel) {
    return door(a, b, b[0], b[1], b[2], b[3], door_r), kernel(n, ea, eb, eb[0], eb[1], eb[2], eb[3], er),
           same();
  }
  bool real_result(auto door, auto kernel) {
    std::vector<R> x(n), y(n);
    return door(a, x), kernel(n, ea, y.data()), same_bits(x, y);
  }
  bool real_argument(auto door, auto kernel) {
    const std::vector<R> x = ramp<R>(n, 0.25, 0.0625);
    return door(x, door_r), kernel(n, x.data(), er), same();
  }
};

// The public object of each stem: the name is written out once here and must be that of the object's stem.
const auto objects = [] {
  return std::tuple{
      add,         sub,    mul,       mul_by_conj, div,      sqr,        abs,          conj,    arg,
      linear_frac, fmod,   remainder, fdim,        fmax,     fmin,       max_mag,      min_mag, copy_sign,
      next_after,  inv,    sqrt,      inv_sqrt,    cbrt,     inv_cbrt,   pow,          powx,    powr,
      pow2o3,      pow3o2, hypot,     exp,         exp2,     exp10,      expm1,        ln,      log2,
      log10,       log1p,  logb,      sin,         cos,      sin_cos,    tan,          cis,     sinpi,
      cospi,       tanpi,  sind,      cosd,        tand,     asin,       acos,         atan,    atan2,
      asinpi,      acospi, atanpi,    atan2pi,     sinh,     cosh,       tanh,         asinh,   acosh,
      atanh,       erf,    erfc,      erf_inv,     erfc_inv, cdf_norm,   cdf_norm_inv, lgamma,  tgamma,
      exp_int1,    floor,  ceil,      trunc,       round,    nearby_int, rint,         modf,    frac};
}();

template <stem Stem>
constexpr auto object_of() {
  return std::get<static_cast<std::size_t>(Stem)>(objects);
}

TEST(math, every_function_runs_its_row) {
#define TMK_ROUTE_math(letter, stem_, shape)                                                                 \
  EXPECT_TRUE(                                                                                               \
      (routes<TMK_TYPE_##letter, TMK_REAL_##letter>().shape(object_of<stem::stem_>(), _vtm##letter##stem_))) \
      << #letter #stem_;
#define TMK_ROUTE_unary TMK_ROUTE_math
#define TMK_ROUTE_binary TMK_ROUTE_math
#define TMK_ROUTE_scalar_exponent TMK_ROUTE_math
#define TMK_ROUTE_two_results TMK_ROUTE_math
#define TMK_ROUTE_linear_fraction TMK_ROUTE_math
#define TMK_ROUTE_real_result TMK_ROUTE_math
#define TMK_ROUTE_real_argument TMK_ROUTE_math
#define TMK_ROUTE_pack_stride(letter, stem_, shape)
#define TMK_ROUTE_pack_mask TMK_ROUTE_pack_stride
#define TMK_ROUTE_pack_index TMK_ROUTE_pack_stride
#define TMK_ROUTE_unpack_stride TMK_ROUTE_pack_stride
#define TMK_ROUTE_unpack_mask TMK_ROUTE_pack_stride
#define TMK_ROUTE_unpack_index TMK_ROUTE_pack_stride
#define TMK_FUNCTION(letter, stem_, shape, slots, wide, stage) TMK_ROUTE_##shape(letter, stem_, shape)
  current_tier();
#include "vector/registry/functions.def"
}

TEST(math, accuracy_of_the_call_then_of_the_thread) {
  const auto a = ramp<double>(64, 0.1, 0.13);
  std::vector<double> r(64);
  std::map<accuracy, std::vector<double>> want{{accuracy::low, r}, {accuracy::high, r}, {accuracy::fast, r}};
  current_tier();
  _vtmdExp_50(64, a.data(), want[accuracy::low].data());
  _vtmdExp_HA(64, a.data(), want[accuracy::high].data());
  _vtmdExp_26(64, a.data(), want[accuracy::fast].data());
  ASSERT_NE(want[accuracy::fast], want[accuracy::high]);

  const uint32_t mode = tmk_vtm_kernel_GetMode();
  for (const auto& [level, values] : want) {
    exp(a, r, level);
    EXPECT_EQ(r, values);
    const accuracy_scope outer(level);
    exp(a, r);
    EXPECT_EQ(r, values);
    {
      const accuracy_scope inner(accuracy::fast);
      exp(a, r);
      EXPECT_EQ(r, want[accuracy::fast]);
    }
    exp(a, r);
    EXPECT_EQ(r, values);
  }
  EXPECT_EQ(tmk_vtm_kernel_GetMode(), mode);
}

class short_pieces {
 public:
  explicit short_pieces(std::size_t n) : previous_(detail::longest_piece) { detail::longest_piece = n; }
  ~short_pieces() { detail::longest_piece = previous_; }

 private:
  std::size_t previous_;
};

std::vector<int> seen;
int32_t note_index(VtmErrorContext* context) { return seen.push_back(context->index), 0; }

TEST(math, pieces_give_the_same_results_and_indices) {
  auto a = ramp<double>(1000, 0.5, 0.25);
  a[70] = a[128] = a[999] = -1;
  std::vector<double> whole(1000), cut(1000);
  ln(a, whole);
  const short_pieces pieces(64);
  tmk_vtm_kernel_SetErrorCallBack(note_index);
  ln(a, cut);
  tmk_vtm_kernel_SetErrorCallBack(nullptr);
  EXPECT_TRUE(same_bits(whole, cut));
  EXPECT_EQ(seen, (std::vector<int>{70, 128, 999}));
  error_scope scope;
  ln(a, a);
  ASSERT_EQ(scope.errors().size(), 3u);
  EXPECT_EQ(scope.errors()[2].index, 999);
  EXPECT_EQ(scope.errors()[2].a1, -1.0);
  EXPECT_TRUE(same_bits(whole, a));
}

TEST(math, gather_and_scatter_in_pieces) {
  const short_pieces pieces(3);
  const auto a = ramp<float>(10, 0, 1);
  const std::vector<int> narrow{0, 1, 1, 0, 1, 1, 0, 0, 1, 0};
  const std::vector<std::int64_t> wide(narrow.begin(), narrow.end());
  std::vector<float> packed(5), again(5), spread(10, -1), walked(4);
  EXPECT_EQ(pack_masked(a, narrow, packed), 5u);
  EXPECT_EQ(pack_masked(a, wide, again), 5u);
  EXPECT_EQ(packed, (std::vector<float>{1, 2, 4, 5, 8}));
  EXPECT_EQ(packed, again);
  EXPECT_EQ(unpack_masked(packed, spread, narrow), 5u);
  EXPECT_EQ(spread, (std::vector<float>{-1, 1, 2, -1, 4, 5, -1, -1, 8, -1}));
  pack_indexed(a, std::vector<int>{9, 0, 9, 4}, walked);
  EXPECT_EQ(walked, (std::vector<float>{9, 0, 9, 4}));
  pack_strided(a, -3, walked);
  EXPECT_EQ(walked, (std::vector<float>{9, 6, 3, 0}));
  unpack_strided(std::vector<float>{7, 8}, spread, -9);
  EXPECT_EQ(spread[9], 7);
  EXPECT_EQ(spread[0], 8);
}

TEST(math, index_beyond_32_bits) {
  if constexpr (sizeof(void*) == 8) {
    constexpr auto size = static_cast<std::size_t>((std::uint64_t{1} << 32) + 16);
    void* const memory = mmap(nullptr, size * sizeof(float), PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) GTEST_SKIP() << "no address space of 16 GB";
    const std::span<float> a(static_cast<float*>(memory), size);
    const std::vector<std::int64_t> index{static_cast<std::int64_t>(size) - 1, 5};
    unpack_indexed(std::vector<float>{3, 4}, a, index);
    EXPECT_EQ(a[size - 1], 3);
    EXPECT_EQ(a[15], 0);  // where the low 32 bits lead
    std::vector<float> y(2);
    pack_indexed(a, index, y);
    EXPECT_EQ(y, (std::vector<float>{3, 4}));
    munmap(memory, size * sizeof(float));
  }
}

// Arguments with special values at the end of a page that may be read only, and nothing behind it.
template <class T>
class read_only_page {
 public:
  explicit read_only_page(const std::vector<T>& values)
      : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))), size_(values.size()) {
    memory_ = static_cast<char*>(
        mmap(nullptr, 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    std::memcpy(memory_ + page_ - size_ * sizeof(T), values.data(), size_ * sizeof(T));
    mprotect(memory_, page_, PROT_READ);
    mprotect(memory_ + page_, page_, PROT_NONE);
  }
  ~read_only_page() { munmap(memory_, 2 * page_); }
  std::span<const T> values() const { return {reinterpret_cast<const T*>(memory_ + page_) - size_, size_}; }

 private:
  std::size_t page_, size_;
  char* memory_;
};

TEST(math, const_arguments_may_be_read_only) {
  const tier before = current_tier();
  select_tier(tier::W7);
  const std::vector<float> special{1, 2, 3, 4, 0, -1, 1e-40f, 3, 1, 2, 3, 4, 5, 6, 7, 0, 0};
  const read_only_page<float> page(special);
  std::vector<float> r(special.size()), in_place;
  const auto expect_same = [&](auto function) {
    for (const accuracy level : {accuracy::low, accuracy::high, accuracy::fast}) {
      in_place = special;
      function(page.values(), r, level);
      function(in_place, in_place, level);
      EXPECT_TRUE(same_bits(r, in_place));
    }
  };
  expect_same(inv);
  expect_same(sqrt);
  expect_same(inv_sqrt);

  // A report on a real argument of a complex function reads no further than the argument.
  const read_only_page<float> infinite(std::vector<float>(9, -INFINITY));
  std::vector<std::complex<float>> z(9);
  error_scope scope;
  cis(infinite.values(), z);
  ASSERT_EQ(scope.errors().size(), 9u);
  EXPECT_EQ(scope.errors()[8].a1, -double{INFINITY});
  select_tier(before);
}

}  // namespace
}  // namespace tmk
