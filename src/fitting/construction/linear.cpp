// SPDX-License-Identifier: Apache-2.0
// Linear spline: the value at the left end of a cell, and the slope to the right one.
#include "fitting/construction/constructor.hpp"

namespace tmk::fitting {

namespace {

constexpr ptrdiff_t tile_cells = 1024, tile_functions = 4;
constexpr ptrdiff_t least_tiled = 128;   // values, below which tiles do not pay
constexpr ptrdiff_t least_parallel = 5;  // tiles, below which threads do not pay

ptrdiff_t ceiling(ptrdiff_t a, ptrdiff_t b) { return (a + b - 1) / b; }

template <class Real, bool Rows, bool Uniform>
struct linear {
  const task<Real>& t;
  ptrdiff_t cells = points(t) - 1, ny = functions(t);
  Real rate = Uniform ? uniform_rate(t) : Real(0);

  // Cells of one function, each slope by slope_of(rise, cell).
  template <class Slope>
  void write(ptrdiff_t j, ptrdiff_t first, ptrdiff_t end, Slope&& slope_of) const {
    const Real* y = Rows ? t.y_rows[j] : t.y_rows[0] + j;
    const ptrdiff_t stride = Rows ? 1 : ny;
    Real* c = t.coeff_rows[j];
    for (ptrdiff_t i = first; i < end; ++i) {
      const Real left = y[i * stride], right = y[(i + 1) * stride];
      c[2 * i] = left;
      c[2 * i + 1] = slope_of(right - left, i);
    }
  }

  Real width(ptrdiff_t i) const { return t.x[i + 1] - t.x[i]; }
  Real divided(Real rise, ptrdiff_t i) const { return Uniform ? rise * rate : rise / width(i); }

  void plainly() const {
    for (ptrdiff_t j = 0; j < ny; ++j)
      write(j, 0, cells, [this](Real rise, ptrdiff_t i) { return divided(rise, i); });
  }

  // One function has its slopes by division, except an odd last cell; several share the reciprocal widths.
  void tile(ptrdiff_t number) const {
    const ptrdiff_t blocks = ceiling(cells, tile_cells);
    const ptrdiff_t function = number / blocks * tile_functions, first = number % blocks * tile_cells;
    const ptrdiff_t function_end = std::min(function + tile_functions, ny);
    const ptrdiff_t end = std::min(first + tile_cells, cells);
    const ptrdiff_t paired = ny == 1 ? end - (end - first) % 2 : first;
    Real rates[tile_cells];
    for (ptrdiff_t i = paired; i < end; ++i) rates[i - first] = Uniform ? rate : 1 / width(i);
    for (ptrdiff_t j = function; j < function_end; ++j) {
      write(j, first, paired, [this](Real rise, ptrdiff_t i) { return divided(rise, i); });
      write(j, paired, end, [&](Real rise, ptrdiff_t i) { return rise * rates[i - first]; });
    }
  }
};

struct linear_family {
  template <class Real, int Index>
  static int32_t variant(const task<Real>& t, const ThreadingService* service) {
    if (t.bc_type == DF_BC_PERIODIC && !all_close(t)) return DF_STATUS_PERIODIC_MISMATCH;
    const linear<Real, Index / 2 == 1, Index % 2 == 1> work{t};
    if (points(t) * work.ny < least_tiled) {
      work.plainly();
      return 0;
    }
    const ptrdiff_t tiles = ceiling(work.cells, tile_cells) * ceiling(work.ny, tile_functions);
    if (tiles < least_parallel) {
      for (ptrdiff_t i = 0; i < tiles; ++i) work.tile(i);
      return 0;
    }
    auto item = [&work](int32_t i, int32_t) { work.tile(i); };
    parallel_for(service, tiles, std::min<ptrdiff_t>(tiles, service->MaxThreads()), item);
    return 0;
  }

  template <class Real>
  static int32_t check(const task<Real>& t, int64_t method) {
    return first_status({{method != 0, DF_STATUS_BAD_METHOD},
                         {t.nx < 2, DF_STATUS_BAD_NX},
                         {!is_storage_hint(t.yhint), DF_STATUS_BAD_YHINT}});
  }

  template <class Real>
  static int32_t construct(const task<Real>& t, int64_t /*method*/, const ThreadingService* service) {
    return variants<linear_family, Real, 4>[static_cast<size_t>(grid_index(t))](t, service);
  }
};

}  // namespace

}  // namespace tmk::fitting

TMK_DF_CONSTRUCTOR(LinearSpline, linear_family)
