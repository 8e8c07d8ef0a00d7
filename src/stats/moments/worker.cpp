// SPDX-License-Identifier: Apache-2.0
// A thread's share of the observations. The cross-product is summed uncentred by BLAS over blocks that stay
// in the second cache, between taking the old mean out and the new one in.
#include <algorithm>
#include <atomic>
#include <limits>

#include "stats/moments/basic.hpp"
#include "stats/moments/products.hpp"

namespace tmk::stats {
namespace {

constexpr ptrdiff_t block_bytes = 262144, least_block = 64;

template <class Real>
int32_t run_with_products(const basic_call<Real>& call, row_range<Real> r) {
  const auto& task = call.task;
  const bool weighted = task.weights != nullptr;
  const Real* const saved = call.earlier_means(r.work[0]);
  const ptrdiff_t p = r.p, end = r.end,
                  row_bytes = p * static_cast<ptrdiff_t>(sizeof(Real)) * (weighted ? 2 : 1),
                  length = std::min(std::max(block_bytes / row_bytes, least_block), end - r.first);
  // BLAS has no distance of variables above 32 bits: such blocks are gathered.
  const bool gathered = !call.columns && r.n > std::numeric_limits<int>::max();
  const ptrdiff_t copies = (weighted ? 1 : 0) + (gathered ? 1 : 0);
  scratch<Real> memory;
  if (copies > 0) memory = scratch<Real>(static_cast<size_t>(copies * length * p));
  if (copies > 0 && !memory) return VTS_STATUS_SS_MEMORY;
  if (r.accum[sum_of_weights] != 0) add_outer_product(p, r.accum[sum_of_weights], saved, r.cross, true);
  for (; r.first < end; r.first = r.end) {
    r.end = std::min(r.first + length, end);
    if (const int32_t status = call.kernel(r); status < 0) return status;
    const ptrdiff_t count = r.end - r.first;
    observations_block<Real> block = {call.columns, count, p, r.n, r.data + r.first * (call.columns ? p : 1)};
    if (gathered) {
      Real* const place = memory.get() + (copies - 1) * length * p;
      for (ptrdiff_t j = 0; j < p; ++j) std::copy_n(block.x + j * r.n, count, place + j * count);
      block.x = place;
      block.stride = count;
    }
    if (weighted)
      add_weighted_products(block, r.weights + r.first, memory.get(), r.cross);
    else
      add_products(block, r.cross, true);
  }
  add_outer_product(p, -r.accum[sum_of_weights], r.work[0], r.cross, true);
  return 0;
}

}  // namespace

template <class Real>
row_range<Real> range_of_thread(const basic_call<Real>& call, int s) {
  const ptrdiff_t share = call.n / call.threads;
  row_range<Real> r = {.first = s * share,
                       .end = s + 1 == call.threads ? call.n : (s + 1) * share,
                       .n = call.n,
                       .p = call.p,
                       .data = call.task.data,
                       .weights = call.task.weights,
                       .accum = call.accum + s * accumulators,
                       .work = {},
                       .cross = call.cross};
  std::copy_n(call.work, moment_arrays, r.work);
  if (s == 0) return r;
  Real* const slice = call.slices + (s - 1) * call.slice;
  for (int k = 0; k < moment_arrays; ++k)
    if (call.keeps(k)) r.work[k] = slice + k * call.p;
  if (call.cross != nullptr) r.cross = call.products_apart ? nullptr : slice + moment_arrays * call.p;
  return r;
}

template <class Real>
void work_on_range(int32_t s, int32_t, int32_t, void* context) {
  auto& call = *static_cast<basic_call<Real>*>(context);
  const auto r = range_of_thread(call, s);
  const bool products = call.cross != nullptr && call.asked.by != method::one_pass && !call.products_apart;
  const int32_t status = products ? run_with_products(call, r) : call.kernel(r);
  if (status < 0) std::atomic_ref(call.status).store(status, std::memory_order_relaxed);
}

#define TMK_INSTANTIATE(Real)                                             \
  template row_range<Real> range_of_thread(const basic_call<Real>&, int); \
  template void work_on_range<Real>(int32_t, int32_t, int32_t, void*);
TMK_INSTANTIATE(double)
TMK_INSTANTIATE(float)
#undef TMK_INSTANTIATE

}  // namespace tmk::stats
