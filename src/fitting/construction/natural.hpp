// The natural cubic of a task's functions: twice continuously differentiable, the slopes s at the knots the
// solution of a tridiagonal system,
//   h[i] s[i-1] + 2 (h[i-1] + h[i]) s[i] + h[i-1] s[i+1] = 3 (h[i] d[i-1] + h[i-1] d[i])
// with widths h and divided differences d; the rows of the ends say the boundary conditions.
//
// Off the diagonal a row weighs half of what stands on it, so that a value at one knot is felt k knots away
// by at most 2^-k of itself. A long system is therefore cut into panels. Each is solved with `reach` more
// knots on either side, and with the divided difference for the slope where these end: that is forgotten
// below rounding. Panels stay in cache, four are solved at once where one recurrence would leave the
// processor waiting, and a period is nothing but panels that reach around.
#pragma once

#include <cmath>
#include <limits>

#include "fitting/construction/end_rows.hpp"
#include "fitting/construction/frame.hpp"
#include "fitting/construction/local_cubic_loops.hpp"
#include "fitting/construction/natural_loops.hpp"
#include "linalg/tridiagonal.hpp"

namespace tmk::fitting {

constexpr ptrdiff_t panels_at_once = 4;
constexpr ptrdiff_t panel_cells = 1024, undivided_cells = 512;
template <class Real>
constexpr ptrdiff_t least_reach = sizeof(Real) == sizeof(double) ? 56 : 28;

template <class Real>
class natural_spline {
 public:
  natural_spline(const task<Real>& t, bool uniform, boundary index, bool divided = true)
      : t_(t), uniform_(uniform), index_(index), cells_(points(t) - 1), past_caches_(passes_caches(t)) {
    constexpr ptrdiff_t quad_cells = panels_at_once * panel_cells;
    // Around a period and back all widths have shrunk as much as they have grown.
    reach_ = divided ? least_reach<Real> : std::max(least_reach<Real>, cells_);
    panels_ = cells_ <= undivided_cells || !divided ? 1 : panels_at_once * ceiling(cells_, quad_cells);
    own_cells_ = ceiling(cells_, panels_);
    panels_ = ceiling(cells_, own_cells_);
    knots_ = own_cells_ + 1 + (panels_ == 1 && index != periodic ? 0 : 2 * reach_);
    row_ = ceiling(knots_ + register_margin, 16) * 16;
  }

  ptrdiff_t panels() const { return panels_; }
  // work(first panel, count) as long as it returns 0.
  template <class Work>
  int32_t each_quad(Work&& work) const {
    for (ptrdiff_t p = 0; p < panels_; p += panels_at_once)
      if (const int32_t status = work(p, std::min(panels_at_once, panels_ - p))) return status;
    return DF_STATUS_OK;
  }
  // Elements of a panel's matrix, and of the work on one function in it.
  ptrdiff_t matrix_elements() const { return matrix_rows * row_; }
  ptrdiff_t work_elements() const { return work_rows * row_; }

  // The factors of panels first ... first + count - 1, one after the other behind `memory`.
  int32_t factor(ptrdiff_t first, ptrdiff_t count, Real* memory) {
    for (ptrdiff_t k = 0; k < count; ++k)
      build(panel_at(first + k), matrix_at(memory + k * matrix_elements()));
    const matrix m = matrix_at(memory);
    const ptrdiff_t bad = linalg::factor<Real>({knots_, m.dl, m.d, m.du, matrix_elements()}, count);
    if (bad != 0) return DF_STATUS_SOLVER_FAILED;
    if (!uniform_)
      for (ptrdiff_t k = 0; k < count; ++k)
        see_memory(panel_at(first + k), matrix_at(memory + k * matrix_elements()));
    return DF_STATUS_OK;
  }

  // After all panels are factored: whether they could be solved by themselves.
  bool forgets_ends() const {
    return remembered_ == 0 || remembered_ <= std::numeric_limits<Real>::epsilon() / 4 * least_width_;
  }

  // The coefficients of function j in these panels.
  void construct(ptrdiff_t first, ptrdiff_t count, Real* factors, Real* memory, ptrdiff_t j) const {
    const Real* y[panels_at_once];
    for (ptrdiff_t k = 0; k < count; ++k)
      y[k] = right_side(panel_at(first + k), matrix_at(factors + k * matrix_elements()),
                        work_at(memory + k * work_elements()), function_of(t_, j));
    const matrix m = matrix_at(factors);
    linalg::solve<Real>({knots_, m.dl, m.d, m.du, matrix_elements()}, work_at(memory).s, work_elements(),
                        count);
    const auto& loops = local_cubic_loops_now<Real>();
    for (ptrdiff_t k = 0; k < count; ++k) {
      const panel p = panel_at(first + k);
      const work v = work_at(memory + k * work_elements());
      const ptrdiff_t own = p.own - p.first;
      loops.cells(y[k] + own, v.s + own, v.slope + own, matrix_at(factors + k * matrix_elements()).r + own,
                  static_cast<int>(p.own_end - p.own), past_caches_, t_.coeff_rows[j] + 4 * p.own);
    }
    if (past_caches_) loops.settle();
  }

 private:
  static constexpr ptrdiff_t matrix_rows = 5, work_rows = 3;
  static constexpr ptrdiff_t register_margin = 32;  // loops take whole registers

  // Cells own ... own_end - 1, in a system over cells first ... end - 1; those of a period go on around it.
  struct panel {
    ptrdiff_t own, own_end, first, end;
  };
  // Widths, of a uniform partition 1; reciprocals in the unit of x; the diagonals.
  struct matrix {
    Real *w, *r, *dl, *d, *du;
  };
  struct work {
    Real *slope, *s, *y;
  };

  static ptrdiff_t ceiling(ptrdiff_t a, ptrdiff_t b) { return (a + b - 1) / b; }

  matrix matrix_at(Real* p) const { return {p, p + row_, p + 2 * row_, p + 3 * row_, p + 4 * row_}; }
  work work_at(Real* p) const { return {p, p + row_, p + 2 * row_}; }

  panel panel_at(ptrdiff_t number) const {
    const ptrdiff_t own = number * own_cells_, own_end = std::min(own + own_cells_, cells_);
    panel p = {own, own_end, own - reach_, own_end + reach_};
    if (index_ == periodic) return p;
    p.first = std::max<ptrdiff_t>(p.first, 0);
    p.end = std::min(p.end, cells_);
    return p;
  }

  ptrdiff_t wrapped(ptrdiff_t i) const { return (i % cells_ + cells_) % cells_; }

  end_condition condition(const panel& p, int side) const {
    const bool within = side == 0 ? p.first != 0 : p.end != cells_;
    if (within || index_ == periodic) return end_condition::divided_difference;
    return end_conditions(index_, cells_)[side];
  }

  outer_cells<Real> outer(const panel& p, const matrix& m, const Real* slope, int side) const {
    const ptrdiff_t last = p.end - p.first - 1;
    const ptrdiff_t own = side == 0 ? 0 : last, next = last == 0 ? own : side == 0 ? 1 : last - 1;
    const Real width = uniform_ ? uniform_step(t_) : m.w[own];
    return {m.w[own], m.w[next], slope[own], slope[next], side == 0 ? -width : width};
  }

  // A slope beyond an end of a panel, at most of the order of 1 / the least width, is weighed by the product
  // of the multipliers between, and by the width of the cell that it is felt in.
  void see_memory(const panel& p, const matrix& m) {
    const ptrdiff_t own = p.own - p.first, own_end = p.own_end - p.first, cells = p.end - p.first;
    if (condition(p, 0) == end_condition::divided_difference) {
      Real left = std::max(m.w[std::max<ptrdiff_t>(own - 1, 0)], m.w[own]);
      for (ptrdiff_t i = 0; i < own; ++i) left *= m.dl[i];
      remembered_ = std::max(remembered_, std::fabs(left));
    }
    if (condition(p, 1) == end_condition::divided_difference) {
      Real right = std::max(m.w[own_end - 1], m.w[std::min(own_end, cells - 1)]);
      for (ptrdiff_t i = own_end; i < cells; ++i) right *= m.du[i];
      remembered_ = std::max(remembered_, std::fabs(right));
    }
  }

  void build(const panel& p, const matrix& m) {
    const ptrdiff_t cells = p.end - p.first;
    if (uniform_) {
      std::fill_n(m.w, cells, Real(1));
      std::fill_n(m.r, cells, uniform_rate(t_));
    } else {
      for (ptrdiff_t at = 0; at < cells;) {
        const ptrdiff_t from = wrapped(p.first + at), run = std::min(cells - at, cells_ - from);
        local_cubic_loops_now<Real>().widths(t_.x + from, static_cast<int>(run), m.w + at, m.r + at);
        at += run;
      }
    }
    const Real least = natural_loops_now<Real>().rows(m.w, static_cast<int>(cells), m.dl, m.d, m.du);
    if (!(least >= least_width_)) least_width_ = least;
    const auto left = end_row(condition(p, 0), m.w[0], m.w[cells > 1]);
    const auto right = end_row(condition(p, 1), m.w[cells - 1], m.w[cells - 1 - (cells > 1)]);
    m.d[0] = left.diagonal;
    m.du[0] = left.beside;
    m.d[cells] = right.diagonal;
    m.dl[cells - 1] = right.beside;
    if (settled_by_choice()) m.dl[0] = m.du[1] = 0;
    // Panels that are shorter than the others have rows of their own.
    for (ptrdiff_t i = cells + 1; i < knots_; ++i) {
      m.d[i] = 1;
      m.dl[i - 1] = m.du[i - 1] = 0;
    }
  }

  // Returns the panel's values.
  const Real* right_side(const panel& p, const matrix& m, const work& v, const samples<Real>& y) const {
    const ptrdiff_t cells = p.end - p.first;
    const Real* values = y.first + p.first;
    if (y.stride != 1 || p.first < 0 || p.end > cells_) {
      for (ptrdiff_t i = 0; i <= cells; ++i)
        v.y[i] = y[index_ == periodic ? wrapped(p.first + i) : p.first + i];
      values = v.y;
    }
    natural_loops_now<Real>().right_sides(values, m.w, m.r, static_cast<int>(cells), v.slope, v.s);
    v.s[0] = end_value(condition(p, 0), outer(p, m, v.slope, 0), t_.bc);
    v.s[cells] = end_value(condition(p, 1), outer(p, m, v.slope, 1), t_.bc + 1);
    if (settled_by_choice()) v.s[1] = 0;
    std::fill(v.s + cells + 1, v.s + knots_, Real(0));
    return values;
  }

  // Three points without a knot at the middle one say nothing of its slope: it is taken to be 0.
  bool settled_by_choice() const { return cells_ == 2 && index_ == not_a_knot; }

  const task<Real>& t_;
  const bool uniform_;
  const boundary index_;
  const ptrdiff_t cells_;
  const bool past_caches_;
  ptrdiff_t reach_, panels_, own_cells_, knots_, row_;
  Real least_width_ = std::numeric_limits<Real>::infinity(), remembered_ = 0;
};

}  // namespace tmk::fitting
