// SPDX-License-Identifier: Apache-2.0
// Integrators: the pieces of each kind, spans of whole cells added up or looked up, and those that call the
// user's hooks first.
#include <algorithm>

#include "fitting/evaluation/integrands.hpp"
#include "fitting/evaluation/integration.hpp"
#include "platform/scratch.hpp"

namespace tmk::fitting {
namespace {

// visit(k, sum) with the sum of V before each k from `first` on; returns the sum of all.
template <class Real, class Pieces, class Visit>
running_sum<Real> run_over_cells(const Pieces& pieces, ptrdiff_t function, int64_t first, int64_t end,
                                 const Visit& visit) {
  running_sum<Real> sum = {0, 0};
  alignas(64) Real v[site_block];
  for (int64_t k = first; k < end; k += site_block) {
    const int count = static_cast<int>(std::min<int64_t>(site_block, end - k));
    pieces.cells(function, k, count, v);
    for (int i = 0; i < count; ++i) {
      visit(k + i, sum);
      const auto next = two_sum(sum.high, v[i]);
      sum = {next.high, sum.low + next.low};
    }
  }
  return sum;
}

// The sum of V from piece a to piece b.
template <class Real, class Pieces>
running_sum<Real> span(const integration<Real>& call, const Pieces& pieces, ptrdiff_t function, int64_t a,
                       int64_t b) {
  if (call.sums != nullptr) {
    const auto* sums = call.sums + (function - call.first_function) * call.entries();
    const auto high = two_sum(sums[b].high, -sums[a].high);
    return {high.high, high.low + (sums[b].low - sums[a].low)};
  }
  const auto nothing = [](int64_t, const running_sum<Real>&) {};
  if (a <= b) return run_over_cells<Real>(pieces, function, a, b, nothing);
  const auto reversed = run_over_cells<Real>(pieces, function, b, a, nothing);
  return {-reversed.high, -reversed.low};
}

template <class Real, class Pieces>
int32_t integrate(const integration<Real>& call, const pairs_of_block<Real>& block) {
  const Pieces pieces{call};
  located_sites<Real> left, right;
  pieces.locate(block.count, block.left, block.left_cells, left);
  pieces.locate(block.count, block.right, block.right_cells, right);
  for (ptrdiff_t f = call.first_function; f < call.end_function; ++f) {
    alignas(64) Real ends[site_block];
    pieces.differences(f, left, right, block.count, ends);
    Real* result = block.result + f * call.function_stride;
    for (int i = 0; i < block.count; ++i) {
      if (left.piece[i] != right.piece[i]) {
        const auto whole = span(call, pieces, f, left.piece[i], right.piece[i]);
        ends[i] = whole.high + (whole.low + ends[i]);
      }
      result[block.row(i) * call.pair_stride] += ends[i];
    }
  }
  return DF_STATUS_OK;
}

template <class Real, class Pieces>
void add_up_function(const integration<Real>& call, ptrdiff_t function, int64_t cells) {
  auto* sums = call.sums + (function - call.first_function) * call.entries();
  sums[cells] = run_over_cells<Real>(Pieces{call}, function, 0, cells,
                                     [&](int64_t k, const running_sum<Real>& sum) { sums[k] = sum; });
}

// A hook gets a row of results per function, each of a value per pair, zero at first.
template <class Real>
int32_t call_hook(const integration<Real>& call, const integration_hook<Real>& hook,
                  const pairs_of_block<Real>& block) {
  constexpr size_t own_room = 1024;
  const auto size = static_cast<size_t>(block.count * functions(call.spline));
  Real own[own_room];
  const scratch<Real> borrowed = size > own_room ? scratch<Real>(size) : scratch<Real>();
  Real* results = size > own_room ? borrowed.get() : own;
  if (results == nullptr) return DF_STATUS_NO_MEMORY;
  std::fill_n(results, size, Real(0));

  int64_t left_cells[site_block], right_cells[site_block];
  std::copy_n(block.left_cells, block.count, left_cells);
  std::copy_n(block.right_cells, block.count, right_cells);
  const int64_t count = block.count;
  const int32_t status = hook.function(&count, left_cells, block.left, right_cells, block.right, results,
                                       hook.parameter, nullptr);
  if (status < 0) return status;
  for (ptrdiff_t f = 0; f < functions(call.spline); ++f)
    for (int i = 0; i < block.count; ++i)
      block.result[f * call.function_stride + block.row(i) * call.pair_stride] += *results++;
  return status;
}

// Limits and cells outside a region are moved to its nearest ones.
template <class Real>
struct clipped {
  Real limit;
  int32_t cell;
};
template <class Real>
clipped<Real> clip(const partition<Real>& points, region where, Real limit, int32_t cell) {
  const auto nx = static_cast<int32_t>(points.nx);
  switch (where) {
    case left_of_partition:
      return {std::min(limit, points.first), 0};
    case within_partition:
      return {std::clamp(limit, points.first, points.last), std::clamp(cell, 1, nx - 1)};
    default:
      return {std::max(limit, points.last), nx};
  }
}

// A pair is cut at the ends of the partition: each part is integrated by the hook of its region, or as the
// polynomial there. Parts of no length are left out.
template <class Real>
int32_t integrate_with_hooks(const integration<Real>& call, const pairs_of_block<Real>& block) {
  for (const auto where : {left_of_partition, within_partition, right_of_partition}) {
    Real left[site_block], right[site_block];
    int32_t left_cells[site_block], right_cells[site_block], place[site_block];
    int count = 0;
    for (int i = 0; i < block.count; ++i) {
      const auto l = clip(call.points, where, block.left[i], block.left_cells[i]);
      const auto r = clip(call.points, where, block.right[i], block.right_cells[i]);
      if (l.limit == r.limit) continue;
      left[count] = l.limit;
      right[count] = r.limit;
      left_cells[count] = l.cell;
      right_cells[count] = r.cell;
      place[count++] = block.row(i);
    }
    if (count == 0) continue;
    const pairs_of_block<Real> part = {count, left, right, left_cells, right_cells, block.result, place};
    const auto& hook = call.hooks[where];
    const auto plain = integrators<Real>::_Integrate1DDispatch[static_cast<int>(call.kind)];
    const int32_t status = hook.function != nullptr ? call_hook(call, hook, part) : plain(call, part);
    if (status < 0) return status;
  }
  return DF_STATUS_OK;
}

}  // namespace

template <class Real>
constinit const typename integrators<Real>::table integrators<Real>::_Integrate1DDispatch = {
    integrate<Real, polynomials<Real, spline_kind::linear>>,
    integrate<Real, polynomials<Real, spline_kind::quadratic>>,
    integrate<Real, polynomials<Real, spline_kind::cubic>>,
    integrate<Real, polynomials<Real, spline_kind::subbotin>>,
    nullptr,  // hooks alone
    integrate<Real, steps<Real, spline_kind::step_left>>,
    integrate<Real, steps<Real, spline_kind::step_right>>,
};

template <class Real>
constinit const typename integrators<Real>::table integrators<Real>::_Integrate1DDispatchCB = [] {
  table all{};
  all.fill(integrate_with_hooks<Real>);
  return all;
}();

template <class Real>
void integrators<Real>::add_up(const integration<Real>& call, ptrdiff_t function) {
  constexpr void (*by_kind[])(const integration<Real>&, ptrdiff_t, int64_t) = {
      add_up_function<Real, polynomials<Real, spline_kind::linear>>,
      add_up_function<Real, polynomials<Real, spline_kind::quadratic>>,
      add_up_function<Real, polynomials<Real, spline_kind::cubic>>,
      add_up_function<Real, polynomials<Real, spline_kind::subbotin>>,
      nullptr,
      add_up_function<Real, steps<Real, spline_kind::step_left>>,
      add_up_function<Real, steps<Real, spline_kind::step_right>>,
  };
  // The cells between bases: steps have one more, before the first.
  const int64_t cells = reads_y(call.kind) ? call.points.nx : call.points.nx - 1;
  by_kind[static_cast<int>(call.kind)](call, function, cells);
}

template struct integrators<double>;
template struct integrators<float>;

}  // namespace tmk::fitting
