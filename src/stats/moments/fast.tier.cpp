// SPDX-License-Identifier: Apache-2.0
// Raw moments by plain sums of powers.
#include "stats/moments/power_sums.hpp"

namespace tmk::stats {
inline namespace TMK_TIER {
namespace {

template <class Real, bool Columns, bool Weighted, int Q>
int32_t fast(const row_range<Real>& range) {
  constexpr orders kept{.raw = (4u << Q) - 2, .central = 0};
  const auto r = without_leading_zeros<Real, Weighted>(range);
  if (r.first >= r.end) return 0;
  Real& weight = r.accum[sum_of_weights];
  if (weight > 0)
    for (int k = 0; k <= Q; ++k) scale(r.p, weight, r.work[k]);
  add_sums<Real, kept, Columns, Weighted>(r, nullptr, r.work);
  add_weights<Real, Weighted>(r, r.accum);
  for (int k = 0; k <= Q; ++k) scale(r.p, 1 / weight, r.work[k]);
  return 0;
}

// Index is that of index_2pass.
template <class Real, int... Index>
constexpr fast_kernels<Real> table(std::integer_sequence<int, Index...>) {
  return {{fast<Real, (Index & 8) != 0, (Index & 4) != 0, Index & 3>...}};
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(fast_doubles) = {table<double>(std::make_integer_sequence<int, 16>())};
TMK_DEFINE_TIER_KERNELS(fast_singles) = {table<float>(std::make_integer_sequence<int, 16>())};

}  // namespace tmk::stats
