// SPDX-License-Identifier: Apache-2.0
// The batch search, which divides the sites among threads where the rules of the method say that it pays.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "fitting/search/search.hpp"
#include "platform/scratch.hpp"

namespace tmk::fitting {
namespace {

constexpr int64_t widened_block = 1024, hybrid_unit = 128, expanded_at_hand = 4096;

// What the threads of a batch share. Each searches its sites with its own copy of the search state.
template <class Real>
struct batch_of_sites {
  const cell_search<Real>& search;
  int64_t n;
  const Real* sites;
  void* cells;
  bool wide;
  int64_t chunk = 0;  // sites of one worker

  int32_t find(int64_t from, int64_t to) const {
    auto mine = search;
    if (!wide) return mine.find(to - from, sites + from, static_cast<int32_t*>(cells) + from);
    int32_t status = 0;
    for (int64_t i = from; i < to; i += widened_block) {
      const int64_t count = std::min(to - i, widened_block);
      int32_t found[widened_block];
      status = mine.find(count, sites + i, found);
      if (status < 0) return status;
      std::copy_n(found, count, static_cast<int64_t*>(cells) + i);
    }
    return status;
  }
};

template <class Real>
void search_chunk(int32_t item, int32_t, int32_t, void* context) {
  const auto& batch = *static_cast<const batch_of_sites<Real>*>(context);
  batch.find(item * batch.chunk, (item + 1) * batch.chunk);
}

// A batch is searched by several threads when one of the rows of its method holds. Bounds are inclusive.
constexpr int64_t any = std::numeric_limits<int64_t>::max();
struct parallel_rule {
  search_method method;
  int64_t least_sites, most_sites, least_points, most_points;
  int32_t least_threads;
  int64_t most_threads;
};
constexpr parallel_rule parallel_rules[] = {
    {search_method::uniform, 1001, any, 0, any, 2, any},
    {search_method::sorted, 3001, any, 0, any, 2, any},
    {search_method::peak, 1201, any, 0, any, 2, any},
    {search_method::peak, 32, any, 1201, any, 2, any},
    {search_method::quasi_uniform, 301, any, 0, any, 2, any},
    {search_method::quasi_uniform, 151, 300, 600, any, 2, any},
    {search_method::quasi_uniform, 151, 300, 40, 599, 4, any},
    // More threads than these few do not pay for batches of this size.
    {search_method::hybrid, 1201, any, 9, any, 2, any},
    {search_method::hybrid, 601, 1200, 9, any, 2, 4},
    {search_method::hybrid, 301, 600, 9, any, 2, 2},
};

bool goes_parallel(search_method method, int64_t n, int64_t nx, int32_t threads) {
  const auto within = [](int64_t value, int64_t least, int64_t most) {
    return least <= value && value <= most;
  };
  return std::ranges::any_of(parallel_rules, [&](const parallel_rule& rule) {
    return rule.method == method && within(n, rule.least_sites, rule.most_sites) &&
           within(nx, rule.least_points, rule.most_points) &&
           within(threads, rule.least_threads, rule.most_threads);
  });
}

template <class Real>
int32_t drive_alone(batch_of_sites<Real>& batch, int32_t, const ThreadingService&) {
  return batch.find(0, batch.n);
}

// Chunks of whole units; the calling thread does what they leave.
template <class Real, int64_t Unit>
int32_t drive(batch_of_sites<Real>& batch, int32_t threads, const ThreadingService& threading) {
  int64_t done = 0;
  if (goes_parallel(batch.search.state.method, batch.n, batch.search.nx, threads)) {
    const int64_t units = batch.n / Unit;
    const auto jobs = Unit == 1 ? threads : static_cast<int32_t>(std::min<int64_t>(units, threads));
    batch.chunk = units / threads * Unit;
    threading.ParallelFor(jobs, threads, &batch, search_chunk<Real>);
    done = jobs * batch.chunk;
  }
  return batch.find(done, batch.n);
}

// By search_method. A hook is called from the calling thread alone.
template <class Real>
constexpr int32_t (*_SearchDispatch[search_methods])(batch_of_sites<Real>&, int32_t,
                                                     const ThreadingService&) = {
    drive<Real, 1>,           drive<Real, 1>,    drive<Real, 1>,   drive<Real, 1>,
    drive<Real, hybrid_unit>, drive_alone<Real>, drive_alone<Real>};

// The sites of a batch given by its ends: few in a member array, more in allocated memory.
template <class Real>
class expanded_sites {
 public:
  // The sites, null without memory.
  const Real* expand(const Real* ends, int64_t n) {
    Real* sites = at_hand_;
    if (n > expanded_at_hand) {
      if (n > PTRDIFF_MAX / static_cast<int64_t>(sizeof(Real))) return nullptr;
      memory_ = scratch<Real>(static_cast<size_t>(n));
      sites = memory_.get();
    }
    if (sites != nullptr) expand_uniform_sites(ends, n, 0, n, sites);
    return sites;
  }

 private:
  scratch<Real> memory_;
  Real at_hand_[expanded_at_hand];
};

template <class Real>
int32_t find_cells(DFTask* handle, int64_t n, const Real* sites, int64_t site_hint, const Real* search_hint,
                   void* cells, typename hook_types<Real>::search hook, void* parameter,
                   const ThreadingService& threading) {
  if (handle == nullptr) return DF_STATUS_NULL_TASK;
  const auto& task = fitting::task<Real>::of(handle);
  cell_search<Real> search;
  if (const int32_t status = choose_search(task, site_hint, search_hint, hook, parameter, search);
      status != 0)
    return status;
  const int32_t threads = threading.MaxThreads();
  if (n <= 0) return 0;
  batch_of_sites<Real> batch = {
      .search = search, .n = n, .sites = sites, .cells = cells, .wide = task.wide_ints != 0};
  expanded_sites<Real> expanded;
  if (site_hint == DF_SITES_UNIFORM) batch.sites = expanded.expand(sites, n);
  if (batch.sites == nullptr) return DF_STATUS_NO_MEMORY;
  return _SearchDispatch<Real>[static_cast<int>(search.state.method)](batch, threads, threading);
}

}  // namespace
}  // namespace tmk::fitting

int32_t tmk_df_kernel_dDFSearch1D(DFTask* task, int64_t, int64_t nsite, const double* site, int64_t site_hint,
                                  const double* search_hint, void* cell, DFdSearchHook hook, void* parameter,
                                  const ThreadingService* threading) {
  return tmk::fitting::find_cells(task, nsite, site, site_hint, search_hint, cell, hook, parameter,
                                  *threading);
}

int32_t tmk_df_kernel_sDFSearch1D(DFTask* task, int64_t, int64_t nsite, const float* site, int64_t site_hint,
                                  const float* search_hint, void* cell, DFsSearchHook hook, void* parameter,
                                  const ThreadingService* threading) {
  return tmk::fitting::find_cells(task, nsite, site, site_hint, search_hint, cell, hook, parameter,
                                  *threading);
}
