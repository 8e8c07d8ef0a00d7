// SPDX-License-Identifier: Apache-2.0
#include "fitting/textbook/partition.hpp"

#include <cmath>
#include <cstdint>

#include "fitting/task.hpp"
#include "platform/first_where.hpp"

namespace tmk::fitting::textbook {

template <class Real>
std::vector<Real> expand(Real first, Real last, size_t count) {
  std::vector<Real> x(count);
  if (count == 0) return x;
  const Real step = count == 1 ? Real(0) : (last - first) / static_cast<Real>(count - 1);
  for (size_t i = 0; i < count; ++i) x[i] = first + static_cast<Real>(i) * step;
  if (count != 1) x.back() = last;
  return x;
}

// By the same formula as the kernels', so that its rounding is included. An even partition serves to find
// cells alone: distances are from the points as given.
template <class Real>
bool evenly_spaced(std::span<const Real> x) {
  const Real first = x.front(), step = (x.back() - first) / static_cast<Real>(x.size() - 1);
  const Real reach = even_within<Real> * step;
  const auto far = [&](size_t i) {
    return !(std::abs(x[i] - (first + static_cast<Real>(static_cast<int32_t>(i)) * step)) <= reach);
  };
  return first_where<Real>(x.size(), far) == x.size();
}

template <class Real>
site_order order_of(std::span<const Real> sites, Real first, Real last, bool need_inside) {
  const size_t n = sites.size();
  if (n == 0) return {true, true};
  const auto falls = [&](size_t i) { return !(sites[i] <= sites[i + 1]); };
  const auto outside = [&](size_t i) { return !(sites[i] >= first && sites[i] <= last); };
  if (first_where<Real>(n - 1, falls) == n - 1) return {true, !outside(0) && !outside(n - 1)};
  return {false, need_inside && first_where<Real>(n, outside) == n};
}

#define TMK_INSTANTIATE(Real)                            \
  template std::vector<Real> expand(Real, Real, size_t); \
  template bool evenly_spaced(std::span<const Real>);    \
  template site_order order_of(std::span<const Real>, Real, Real, bool);
TMK_INSTANTIATE(double)
TMK_INSTANTIATE(float)
#undef TMK_INSTANTIATE

}  // namespace tmk::fitting::textbook
