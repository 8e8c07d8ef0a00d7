// SPDX-License-Identifier: Apache-2.0
// Natural cubics by one system over all points: few of them, or widths that differ too much for panels.
#pragma once

#include "fitting/construction/end_rows.hpp"
#include "fitting/construction/natural_kernels.hpp"
#include "fitting/task_view.hpp"
#include "linalg/tridiagonal.hpp"

namespace tmk::fitting {

// A periodic system is cut open and extended by `reach` knots on either side: a slope influences one k knots
// away by at most 2^-k of itself, and over a whole period widths shrink as much as they grow.
template <class Real>
class natural_whole {
 public:
  static constexpr ptrdiff_t functions_at_once = 4;

  natural_whole(const task<Real>& t, bool uniform, boundary index)
      : t_(t), uniform_(uniform), index_(index), cells_(points(t) - 1) {
    const ptrdiff_t least_reach = sizeof(Real) == sizeof(double) ? 56 : 28;
    reach_ = index == periodic ? std::max(least_reach, cells_) : 0;
    length_ = cells_ + 2 * reach_;
    knots_ = length_ + 1;
    at_once_ = std::min(functions_at_once, functions(t));
  }

  static constexpr ptrdiff_t groups() { return 1; }
  ptrdiff_t factor_elements() const { return 5 * knots_; }
  ptrdiff_t work_elements() const { return (1 + 2 * at_once_) * knots_; }

  int32_t factor(ptrdiff_t, Real* factors, Real*) const {
    const system m = system_at(factors);
    each_place(length_, [&](ptrdiff_t i, ptrdiff_t cell) {
      m.w[i] = uniform_ ? Real(1) : t_.x[cell + 1] - t_.x[cell];
      m.r[i] = uniform_ ? uniform_rate(t_) : 1 / m.w[i];
    });
    for (ptrdiff_t i = 1; i < length_; ++i) {
      m.dl[i - 1] = m.w[i];
      m.d[i] = 2 * (m.w[i - 1] + m.w[i]);
      m.du[i] = m.w[i - 1];
    }
    const auto conditions = end_conditions(index_, cells_);
    const ptrdiff_t last = length_ - 1;
    const auto left = end_row(conditions[0], m.w[0], m.w[last > 0]);
    const auto right = end_row(conditions[1], m.w[last], m.w[last - (last > 0)]);
    m.d[0] = left.diagonal;
    m.du[0] = left.neighbour;
    m.dl[last] = right.neighbour;
    m.d[length_] = right.diagonal;
    if (settled_by_choice()) m.dl[0] = m.du[1] = 0;
    return linalg::factor<Real>({knots_, m.dl, m.d, m.du}) == 0 ? DF_STATUS_OK : DF_STATUS_SOLVER_FAILED;
  }

  // Functions j ... j + count - 1, up to functions_at_once.
  void construct(ptrdiff_t, Real* factors, Real* work, ptrdiff_t j, ptrdiff_t count) const {
    const system m = system_at(factors);
    Real *const values = work + knots_, *const s = values + at_once_ * knots_;
    for (ptrdiff_t k = 0; k < count; ++k)
      right_side(m, function_of(t_, j + k), work, values + k * knots_, s + k * knots_);
    linalg::solve<Real>({knots_, m.dl, m.d, m.du}, s, knots_, count);
    for (ptrdiff_t k = 0; k < count; ++k)
      natural_kernels_now<Real>().cells(values + k * knots_ + reach_, s + k * knots_ + reach_, m.r + reach_,
                                        cells_, false, t_.coeff_rows[j + k]);
  }

 private:
  // Widths, of a uniform partition 1; reciprocals in the unit of x; the diagonals.
  struct system {
    Real *w, *r, *dl, *d, *du;
  };
  system system_at(Real* p) const { return {p, p + knots_, p + 2 * knots_, p + 3 * knots_, p + 4 * knots_}; }

  // f(i, the cell or knot of the period at i).
  template <class Function>
  void each_place(ptrdiff_t count, Function&& f) const {
    ptrdiff_t place = reach_ == 0 ? 0 : cells_ - 1 - (reach_ - 1) % cells_;
    for (ptrdiff_t i = 0; i < count; ++i, ++place) {
      if (index_ == periodic && place == cells_) place = 0;
      f(i, place);
    }
  }

  // Divided differences d, values, and the right side s.
  void right_side(const system& m, const samples<Real>& y, Real* d, Real* values, Real* s) const {
    each_place(length_ + 1, [&](ptrdiff_t i, ptrdiff_t knot) { values[i] = y[knot]; });
    for (ptrdiff_t i = 0; i < length_; ++i) d[i] = (values[i + 1] - values[i]) * m.r[i];
    for (ptrdiff_t i = 1; i < length_; ++i) s[i] = 3 * (m.w[i] * d[i - 1] + m.w[i - 1] * d[i]);
    const auto conditions = end_conditions(index_, cells_);
    const ptrdiff_t last = length_ - 1, one = last > 0;
    const Real unit = uniform_ ? uniform_step(t_) : Real(1);
    s[0] = end_value(conditions[0], {m.w[0], m.w[one], d[0], d[one], -unit * m.w[0]}, t_.bc, 0);
    s[length_] = end_value(conditions[1],
                           {m.w[last], m.w[last - one], d[last], d[last - one], unit * m.w[last]}, t_.bc, 1);
    if (settled_by_choice()) s[1] = 0;
  }

  // Three points without a knot at the middle one do not determine its slope: it is taken to be 0.
  bool settled_by_choice() const { return cells_ == 2 && index_ == not_a_knot; }

  const task<Real>& t_;
  const bool uniform_;
  const boundary index_;
  const ptrdiff_t cells_;
  ptrdiff_t reach_, length_, knots_, at_once_;
};

}  // namespace tmk::fitting
