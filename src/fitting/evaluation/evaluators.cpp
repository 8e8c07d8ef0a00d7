// SPDX-License-Identifier: Apache-2.0
// Evaluators: piecewise polynomials by the kernels of the tier; steps and look-ups, which read the functions
// themselves; and those that call the user's hooks first.
#include <algorithm>
#include <bit>
#include <cmath>

#include "fitting/evaluation/interpolation.hpp"
#include "fitting/evaluation/pieces.hpp"
#include "platform/scratch.hpp"

namespace tmk::fitting {
namespace {

// Columns of a block that a layout will scatter.
constexpr int column_room = 16;

template <class Real>
void fill_zeros(const interpolation<Real>& call, const sites_of_block<Real>& block, int from_column) {
  const auto [function, site, derivative] = call.layout;
  const auto end = call.request.columns() + static_cast<ptrdiff_t>(call.request.zeros);
  for (ptrdiff_t f = 0; f < functions(call.spline); ++f)
    for (int i = 0; i < block.count; ++i)
      for (ptrdiff_t k = from_column; k < end; ++k)
        block.result[f * function + block.row(i) * site + k * derivative] = 0;
}

// Functions that are neighbours in the result are written together, as many as there is room for; the others
// one at a time, directly into the result where their sites or derivatives are neighbours.
template <class Real, int Order>
int32_t evaluate_pieces(const interpolation<Real>& call, const sites_of_block<Real>& block) {
  constexpr unsigned not_zero = (1u << Order) - 1;
  const unsigned set = call.request.set & not_zero;
  const int columns = std::popcount(set);
  if (columns < call.request.columns() || call.request.zeros > 0) fill_zeros(call, block, columns);
  if (columns == 0) return DF_STATUS_OK;

  located_sites<Real> at;
  locate(call.spline, call.points, call.kind, block.count, block.sites, block.cells, at);
  const auto& kernels = evaluation_kernels_now<Real>();
  const auto evaluate = kernels.polynomials[Order - 2][set];
  const auto [function, site, derivative] = call.layout;
  const ptrdiff_t count = functions(call.spline);
  const auto rows = call.spline.coeff_rows;

  const bool neighbours = function == 1 && count > 1;
  if (block.place == nullptr && !neighbours && (site == 1 || (derivative == 1 && columns > 1))) {
    for (ptrdiff_t f = 0; f < count; ++f)
      evaluate(rows[f], at.piece, at.distance, block.count, block.result + f * function, site, derivative);
    return DF_STATUS_OK;
  }
  alignas(64) Real column[column_room * site_block];
  const ptrdiff_t group = neighbours ? column_room / columns : 1;
  for (ptrdiff_t first = 0; first < count; first += group) {
    const ptrdiff_t size = std::min(group, count - first);
    for (ptrdiff_t f = 0; f < size; ++f)
      evaluate(rows[first + f], at.piece, at.distance, block.count, column + f * site_block, 1,
               group * site_block);
    for (int k = 0; k < columns; ++k) {
      const Real* from = column + k * group * site_block;
      Real* to = block.result + first * function + k * derivative;
      if (block.place == nullptr) {
        kernels.as_rows(from, site_block, static_cast<int>(size), block.count, to, site);
        continue;
      }
      for (ptrdiff_t f = 0; f < size; ++f)
        for (int i = 0; i < block.count; ++i)
          to[f * function + block.place[i] * site] = from[f * site_block + i];
    }
  }
  return DF_STATUS_OK;
}

// The right end is the one that is given: first + (nx - 1) step may miss it.
template <class Real>
int64_t step_left(const partition<Real>& points, Real t, int64_t cell) {
  const int64_t p = cell > 0 ? cell - 1 : 0;
  return cell > 0 && p < points.nx - 1 && t != points[p] ? p + 1 : p;
}

template <class Real>
int64_t step_right(const partition<Real>& points, Real t, int64_t cell) {
  const int64_t p = cell > 0 ? cell - 1 : 0;
  return t == points.last ? points.nx - 1 : p;
}

// The point a site lies on, -1 where there is none. Points of a uniform partition are rounded, so a site may
// be a little off.
template <class Real>
int64_t lookup(const partition<Real>& points, Real t, int64_t cell) {
  const int64_t k = cell - 1;
  if (cell <= 0) return -1;
  if (t == points.last) return points.nx - 1;
  const Real tolerance = points.given != nullptr ? Real(0) : Real(0x1p-40);
  if (std::abs(t - points[k]) <= tolerance) return k;
  if (cell >= points.nx) return -1;
  const Real beyond = std::abs(t - points[cell]);
  return beyond < tolerance || beyond == 0 ? cell : -1;
}

template <class Real>
using point_rule = int64_t (*)(const partition<Real>&, Real, int64_t);

template <class Real, point_rule<Real> Point>
int32_t evaluate_points(const interpolation<Real>& call, const sites_of_block<Real>& block) {
  const int64_t nx = call.points.nx;
  int64_t point[site_block];
  for (int i = 0; i < block.count; ++i) {
    const int64_t cell = std::min<int64_t>(block.cells[i], nx);
    point[i] = std::min(Point(call.points, block.sites[i], cell), nx - 1);
    if (point[i] < 0) return DF_STATUS_LOOKUP_OFF_GRID;
  }
  const bool value = (call.request.set & 1) != 0;
  if (call.kind == spline_kind::lookup) {
    const int32_t status = first_status(
        {{call.request.stride != 1, DF_STATUS_LOOKUP_BAD_DORDER}, {!value, DF_STATUS_LOOKUP_NO_VALUE}});
    if (status != DF_STATUS_OK) return status;
  }
  fill_zeros(call, block, value ? 1 : 0);
  for (ptrdiff_t f = 0; value && f < functions(call.spline); ++f) {
    const auto y = function_of(call.spline, f);
    for (int i = 0; i < block.count; ++i)
      block.result[f * call.layout.function + block.row(i) * call.layout.site] =
          y[static_cast<ptrdiff_t>(point[i])];
  }
  return DF_STATUS_OK;
}

// A hook's results come function by function, site by site, derivative by derivative.
template <class Real>
int32_t call_hook(const interpolation<Real>& call, const evaluation_hook<Real>& hook,
                  const sites_of_block<Real>& block) {
  constexpr size_t own_room = 1024;
  const auto derivatives = static_cast<ptrdiff_t>(call.request.stride);
  const auto size = static_cast<size_t>(block.count * functions(call.spline) * derivatives);
  Real own[own_room];
  const scratch<Real> borrowed = size > own_room ? scratch<Real>(size) : scratch<Real>();
  Real* results = size > own_room ? borrowed.get() : own;
  if (results == nullptr) return DF_STATUS_NO_MEMORY;
  std::fill_n(results, size, Real(0));

  int64_t cells[site_block];
  std::copy_n(block.cells, block.count, cells);
  const int64_t count = block.count;
  const int32_t status = hook.function(&count, cells, block.sites, results, hook.parameter, nullptr);
  if (status < 0) return status;
  for (ptrdiff_t f = 0; f < functions(call.spline); ++f)
    for (int i = 0; i < block.count; ++i)
      for (ptrdiff_t k = 0; k < derivatives; ++k)
        block
            .result[f * call.layout.function + block.row(i) * call.layout.site + k * call.layout.derivative] =
            *results++;
  return status;
}

template <class Real>
evaluator<Real> plain_evaluator(spline_kind kind) {
  return evaluators<Real>::_Interpolate1D32Dispatch[static_cast<int>(kind)];
}

// One call of each region's hook for all sites of a block that lie there, in their order.
template <class Real>
int32_t evaluate_with_hooks(const interpolation<Real>& call, const sites_of_block<Real>& block) {
  for (const auto where : {left_of_partition, within_partition, right_of_partition}) {
    Real sites[site_block];
    int32_t cells[site_block], place[site_block];
    int count = 0;
    for (int i = 0; i < block.count; ++i) {
      if (region_of(block.cells[i], call.points.nx) != where) continue;
      sites[count] = block.sites[i];
      cells[count] = block.cells[i];
      place[count++] = i;
    }
    if (count == 0) continue;
    const sites_of_block<Real> part = {count, sites, cells, block.result,
                                       count == block.count ? nullptr : place};
    const auto& hook = call.hooks[where];
    const int32_t status =
        hook.function != nullptr ? call_hook(call, hook, part) : plain_evaluator<Real>(call.kind)(call, part);
    if (status < 0) return status;
  }
  return DF_STATUS_OK;
}

}  // namespace

template <class Real>
constinit const typename evaluators<Real>::table evaluators<Real>::_Interpolate1D32Dispatch = {
    evaluate_pieces<Real, 2>,
    evaluate_pieces<Real, 3>,
    evaluate_pieces<Real, 4>,
    evaluate_pieces<Real, 3>,
    nullptr,  // hooks alone
    evaluate_points<Real, step_left<Real>>,
    evaluate_points<Real, step_right<Real>>,
    evaluate_points<Real, lookup<Real>>,
};

template <class Real>
constinit const typename evaluators<Real>::table evaluators<Real>::_Interpolate1D32DispatchCB = [] {
  table all{};
  all.fill(evaluate_with_hooks<Real>);
  return all;
}();

template struct evaluators<double>;
template struct evaluators<float>;

}  // namespace tmk::fitting
