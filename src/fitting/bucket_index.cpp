// SPDX-License-Identifier: Apache-2.0
// The bucket index: the partition's span cut into equal buckets, each with bounds of the cells that a point
// in it can have, so that a search starts within a few cells of its end.
#include <algorithm>
#include <limits>

#include "fitting/task.hpp"

namespace tmk::fitting {

namespace {

constexpr uint32_t unset = std::numeric_limits<uint32_t>::max();

// A partition that does not ascend, or has no width, stays within the index all the same.
template <class Real>
int64_t bucket_of(const task<Real>& t, int64_t i) {
  const Real b = (t.x[i] - t.x[0]) * t.bucket_scale;
  if (!(b >= 1)) return 0;
  return b < static_cast<Real>(t.nbuckets) ? static_cast<int64_t>(b) : t.nbuckets;
}

}  // namespace

template <class Real>
void build_bucket_index(task<Real>& t) {
  t.nbuckets = std::clamp<int64_t>(t.nx / 16, 16, bucket_room - 2);
  t.bucket_scale = static_cast<Real>(t.nbuckets) / (t.x[t.nx - 1] - t.x[0]);
  bucket* const b = t.buckets;
  const int64_t last = t.nbuckets - 1;
  std::fill_n(b, t.nbuckets, bucket{unset, unset});
  b[0].lo = 0;
  // The first point of a bucket ends the one below, its last point begins the one above.
  for (int64_t i = 1; i < t.nx - 1; ++i) {
    const int64_t k = bucket_of(t, i);
    if (k == 0) continue;
    const auto point = static_cast<uint32_t>(i);
    if (b[k - 1].hi == unset) b[k - 1].hi = point;
    b[k + 1].lo = point;
  }
  b[last].hi = static_cast<uint32_t>(t.nx - 1);
  // Buckets without a point take the bounds of their neighbours.
  for (int64_t k = 1; k <= last; ++k)
    if (b[k].lo == unset) b[k].lo = b[k - 1].lo;
  for (int64_t k = last; k-- > 0;)
    if (b[k].hi == unset) b[k].hi = b[k + 1].hi;
  b[last + 1] = b[last];
}

template void build_bucket_index(task<double>&);
template void build_bucket_index(task<float>&);

}  // namespace tmk::fitting
