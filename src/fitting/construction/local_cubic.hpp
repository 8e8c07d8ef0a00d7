// SPDX-License-Identifier: Apache-2.0
// Local cubics: the slope at a knot comes from the caller or from a few neighbouring points, and two slopes
// and two values make a cell. One template serves all families; a family is
//   struct family {
//     static constexpr int64_t least_nx;
//     static constexpr ptrdiff_t span;  // points that the rule of an inner knot and its cell depend on
//     // The rule, or null where ic holds the slopes of the inner points.
//     template <class Real> static constexpr slope_kernels<Real> local_cubic_kernels<Real>::*rule;
//     // The slope at an end where the function is periodic, and where no condition is set.
//     template <class Real> static constexpr end_function<Real>*at_period, *at_unset;
//   };
//
// A partition is cut into ranges of cells, functions into groups; a range and a group are one item of work
// for the threads. In it strips of cells pass, function after function, through arrays of scratch that stay
// in the first caches. The arrays reach two cells beyond their strip, so no result depends on where the cuts
// are.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fitting/construction/boundary_functions.hpp"
#include "fitting/construction/constructor.hpp"
#include "fitting/construction/local_cubic_kernels.hpp"
#include "fitting/construction/past_caches.hpp"
#include "platform/scratch.hpp"

namespace tmk::fitting {

constexpr ptrdiff_t range_cells = 2048, group_functions = 4;
constexpr ptrdiff_t strip_cells = 512;
constexpr ptrdiff_t lag_cells = 32;     // from one stage of a strip to the next
constexpr ptrdiff_t reach = 2;          // cells beyond an inner knot's own that a rule may look at
constexpr ptrdiff_t array_unit = 16;    // a multiple of every register
constexpr ptrdiff_t array_margin = 32;  // of an array on either side: the reach, and a register

template <class Real>
class local_cubic_worker {
 public:
  struct plan {
    const task<Real>& t;
    bool columns, uniform;
    const slope_kernels<Real>* rule;
    end_function<Real>* ends[2];
    bool past_caches;
  };

  local_cubic_worker(const plan& p, Real* arrays)
      : p_(p),
        n_(points(p.t)),
        step_(p.uniform ? uniform_step(p.t) : Real(0)),
        h_(arrays + array_margin),
        r_(h_ + array_length(n_)),
        y_(r_ + array_length(n_)),
        d_(y_ + array_length(n_)),
        s_(d_ + array_length(n_)),
        noise_(s_ + array_length(n_)) {}

  // The arrays of a thread: zeros where registers read beyond what is computed, and the widths of a uniform
  // partition.
  static constexpr int arrays = 6;
  static ptrdiff_t array_length(ptrdiff_t n) {
    return std::min(strip_cells, n / array_unit * array_unit + array_unit) + 2 * array_margin;
  }
  static void prepare(const task<Real>& t, bool uniform, Real* memory) {
    const ptrdiff_t length = array_length(points(t));
    std::fill_n(memory, arrays * length, Real(0));
    if (!uniform) return;
    std::fill_n(memory, length, uniform_step(t));
    std::fill_n(memory + length, length, uniform_rate(t));
  }

  // The coefficients of a range of cells for a group of functions.
  void construct(ptrdiff_t first, ptrdiff_t end, ptrdiff_t function, ptrdiff_t function_end) {
    for (ptrdiff_t a = first; a < end; a += strip_cells)
      for (ptrdiff_t j = function; j < function_end; ++j)
        strip(a, std::min(a + strip_cells, end), j, j == function && !p_.uniform);
    if (p_.past_caches) local_cubic_kernels_now<Real>().settle();
  }

 private:
  // Cells a ... b-1 of function j. Arrays begin at cell a or its left knot.
  void strip(ptrdiff_t a, ptrdiff_t b, ptrdiff_t j, bool with_widths) {
    const samples<Real> y = function_of(p_.t, j);
    const ptrdiff_t last = std::min(b + reach, n_ - 1);  // cells that the arrays need end here
    stages at = {a, std::max<ptrdiff_t>(a - reach, 0), a};
    const Real* values = strip_values(y, a, at.cell, last);
    Real* c = p_.t.coeff_rows[j] + 4 * a;

    prepare_slopes(at, values, with_widths, std::min(a + 2 * lag_cells, last), std::min(a + lag_cells, b));
    if (a == 0) s_[0] = p_.ends[0](end_of(y, 0, s_[1]));
    ptrdiff_t done = 0;
    if (p_.rule != nullptr) {
      done = std::min(last - at.cell, b - at.knot) / array_unit * array_unit;
      const ptrdiff_t cell = at.cell - a, knot = at.knot - a;
      p_.rule->together[with_widths]({points_from(at.cell), values + cell, values, pointers_at(cell),
                                      pointers_at(knot), pointers_at(0), c, p_.past_caches},
                                     static_cast<int>(done));
      at.cell += done;
      at.knot += done;
    }
    prepare_slopes(at, values, with_widths, last, b + 1);
    if (b == n_ - 1) s_[b - a] = p_.ends[1](end_of(y, 1, s_[b - a - 1]));
    const auto [h, r, d, s, noise] = pointers_at(done);
    local_cubic_kernels_now<Real>().cells(values + done, s, d, r, static_cast<int>(b - a - done),
                                          p_.past_caches, c + 4 * done);
  }

  // In a strip from cell `first` on: the next cell whose divided difference is to be computed, and the next
  // knot whose slope is.
  struct stages {
    ptrdiff_t first, cell, knot;
  };

  strip_pointers<Real> pointers_at(ptrdiff_t i) const { return {h_ + i, r_ + i, d_ + i, s_ + i, noise_ + i}; }
  const Real* points_from(ptrdiff_t cell) const { return p_.uniform ? nullptr : p_.t.x + cell; }

  void prepare_slopes(stages& at, const Real* values, bool with_widths, ptrdiff_t cell_end,
                      ptrdiff_t knot_end) {
    const auto& kernels = local_cubic_kernels_now<Real>();
    const auto cells = pointers_at(at.cell - at.first), knots = pointers_at(at.knot - at.first);
    const int count = static_cast<int>(cell_end - at.cell);
    const Real* const y = values + (at.cell - at.first);
    if (with_widths) kernels.widths(p_.t.x + at.cell, count, cells.h, cells.r);
    kernels.slopes(y, cells.r, count, cells.d);
    if (p_.rule != nullptr && p_.rule->noise != nullptr)
      p_.rule->noise(points_from(at.cell), y, cells.r, cells.d, count, cells.noise);
    continue_slopes(at.first, cell_end);
    if (p_.rule != nullptr)
      p_.rule->knots(knots.h, knots.d, knots.noise, static_cast<int>(knot_end - at.knot), knots.s);
    else
      for (ptrdiff_t i = std::max<ptrdiff_t>(at.knot, 1); i < std::min(knot_end, n_ - 1); ++i)
        s_[i - at.first] = p_.t.ic[i - 1];
    at.cell = cell_end;
    at.knot = knot_end;
  }

  // The function's values from point `first` to `last`, indexed from point a.
  const Real* strip_values(const samples<Real>& y, ptrdiff_t a, ptrdiff_t first, ptrdiff_t last) {
    if (!p_.columns) return y.first + a;
    for (ptrdiff_t i = first; i <= last; ++i) y_[i - a] = y[i];
    return y_;
  }

  // A cell outside either end, whose divided difference continues the last two by equal changes.
  void continue_slopes(ptrdiff_t a, ptrdiff_t cells_end) {
    if (a == 0) {
      d_[-1] = 2 * d_[0] - d_[1];
      noise_[-1] = 2 * noise_[0] + noise_[1];
    }
    if (cells_end == n_ - 1) {
      Real *d = d_ + (n_ - 1 - a), *noise = noise_ + (n_ - 1 - a);
      d[0] = 2 * d[-1] - d[-2];
      noise[0] = 2 * noise[-1] + noise[-2];
    }
  }

  cell_slope<Real> cell(const samples<Real>& y, ptrdiff_t i) const {
    const Real width = p_.uniform ? step_ : p_.t.x[i + 1] - p_.t.x[i];
    return {width, (y[i + 1] - y[i]) / width};
  }

  spline_end<Real> end_of(const samples<Real>& y, int side, Real inner) const {
    const ptrdiff_t left[] = {0, 1}, right[] = {n_ - 2, n_ - 3};
    const auto& own = side == 0 ? left : right;
    const auto& other = side == 0 ? right : left;
    return {side,    cell(y, own[0]), cell(y, own[1]),   inner,
            p_.t.bc, p_.uniform,      cell(y, other[0]), cell(y, other[1])};
  }

  const plan& p_;
  const ptrdiff_t n_;
  const Real step_;
  Real *h_, *r_, *y_, *d_, *s_, *noise_;
};

template <class Family>
struct local_cubic {
  // Four variants: layout, grid.
  template <class Real, int Index>
  static int32_t variant(const task<Real>& t, int64_t /*xhint*/, int64_t /*yhint*/, int64_t /*method*/,
                         boundary index, const ThreadingService* service) {
    if (index == periodic && !all_close(t)) return DF_STATUS_PERIODIC_MISMATCH;
    const ptrdiff_t n = points(t), ny = functions(t), lead = Family::span / 2;
    const ptrdiff_t ranges = std::max<ptrdiff_t>(1, (n - Family::span + range_cells - 1) / range_cells);
    const ptrdiff_t items = ranges * ((ny + group_functions - 1) / group_functions);
    const ptrdiff_t threads = std::min<ptrdiff_t>(items, std::max(service->MaxThreads(), 1));

    using worker = local_cubic_worker<Real>;
    const ptrdiff_t slice = worker::arrays * worker::array_length(n);
    const scratch<Real> memory(static_cast<size_t>(threads * slice));
    if (!memory) return DF_STATUS_NO_MEMORY;
    for (ptrdiff_t i = 0; i < threads; ++i) worker::prepare(t, Index % 2 == 1, memory.get() + i * slice);
    constexpr auto& ends =
        boundary_functions<Real, Family::template at_period<Real>, Family::template at_unset<Real>>;
    constexpr auto rule = Family::template rule<Real>;
    const typename worker::plan plan{t,
                                     Index / 2 == 0,
                                     Index % 2 == 1,
                                     rule == nullptr ? nullptr : &(local_cubic_kernels_now<Real>().*rule),
                                     {ends[0][index], ends[1][index]},
                                     passes_caches(t)};
    auto work = [&](int32_t item, int32_t thread) {
      const ptrdiff_t range = item % ranges, function = item / ranges * group_functions;
      // The outer ranges have the cells at the ends too.
      const ptrdiff_t first = range == 0 ? 0 : lead + range * range_cells;
      const ptrdiff_t end = range == ranges - 1 ? n - 1 : lead + (range + 1) * range_cells;
      worker(plan, memory.get() + thread * slice)
          .construct(first, end, function, std::min(function + group_functions, ny));
    };
    parallel_for(service, items, threads, work);
    return DF_STATUS_OK;
  }

  template <class Real>
  static int32_t check(const task<Real>& t, int64_t /*method*/) {
    if (const int32_t bad = check_cubic(t, Family::least_nx, true)) return bad;
    return Family::template rule<Real> == nullptr && t.ic == nullptr ? DF_STATUS_NULL_IC : DF_STATUS_OK;
  }

  template <class Real>
  static int32_t construct(const task<Real>& t, int64_t method, const ThreadingService* service) {
    const auto& kernels = variants<local_cubic, Real, 4>;
    const size_t index = static_cast<size_t>(grid_index(t));
    return kernels[index](t, t.xhint, t.yhint, method, boundary_of(t.bc_type), service);
  }
};

}  // namespace tmk::fitting
