// SPDX-License-Identifier: Apache-2.0
// Natural cubics of many points, cut into panels.
//
// Off the diagonal a row of the system has half the weight that it has on it, so that a slope influences
// another one k knots away by at most 2^-k of itself, and commonly by 0.27^k. Panels are therefore solved
// separately. Each is extended by `reach` knots on either side, and at the outermost of these the divided
// difference takes the place of the slope: the panel itself changes by less than rounding. A group of panels
// is solved in the lanes of registers, where one recurrence would leave the processor waiting, and stays in
// cache. In a periodic spline the panels at the ends extend around the period.
//
// Slopes are as large as widths are small. Where widths grow two or three times from knot to knot, over many
// knots, a slope outside a panel has influence on those inside that is not below rounding. The factors bound
// that influence; where panels do not decouple, the whole system is solved.
#pragma once

#include <cmath>
#include <limits>

#include "fitting/construction/end_rows.hpp"
#include "fitting/construction/natural_kernels.hpp"
#include "fitting/construction/past_caches.hpp"
#include "fitting/task_view.hpp"

namespace tmk::fitting {

// What factor() returns of a partition that panels cannot solve. It is none of the statuses, which are 0 or
// negative.
constexpr int32_t needs_whole_system = 1;

template <class Real>
class natural_panels {
 public:
  static constexpr ptrdiff_t least_cells = 256, functions_at_once = 1;

  natural_panels(const task<Real>& t, bool uniform, boundary index)
      : t_(t), uniform_(uniform), index_(index), cells_(points(t) - 1) {
    constexpr ptrdiff_t group_cells = lanes * most_own;
    groups_ = (cells_ + group_cells - 1) / group_cells;
    least_own_ = cells_ / (groups_ * lanes);
    knots_ = least_own_ + 2 + 2 * reach;
    own_elements_ = (least_own_ + 2 + register_elements) / register_elements * register_elements;
    past_caches_ = passes_caches(t);
  }

  ptrdiff_t groups() const { return groups_; }
  // Elements of the factors of a group, and of the work on it.
  ptrdiff_t factor_elements() const { return (3 * knots_ + own_elements_) * lanes; }
  ptrdiff_t work_elements() const { return (2 * knots_ + 2 * own_elements_) * lanes; }

  int32_t factor(ptrdiff_t group, Real* factors, Real* work) {
    const group_arrays m = arrays_at(factors, work);
    Real* const w = m.y;
    fill_widths(group, w, m.s);
    for (ptrdiff_t k = 0; k < lanes; ++k) {
      m.e[k] = m.g[k] = 0;
      m.r[k] = 1 / w[k];
    }
    bool good = true;
    each_piece(
        group,
        [&](ptrdiff_t first, ptrdiff_t end) {
          good &= natural_kernels_now<Real>().factor(m, w, first, end, &least_width_);
        },
        [&](int side, ptrdiff_t at) {
          const ptrdiff_t outer = at - side * lanes, next = outer + (side == 0 ? lanes : -lanes);
          const auto row = end_row(end_conditions(index_, cells_)[side], w[outer], w[next]);
          const Real pivot = side == 0 ? row.diagonal : row.diagonal - row.neighbour * m.g[at - lanes];
          good &= pivot != 0;
          end_reciprocal_[side] = 1 / pivot;
          (side == 0 ? m.e : m.g)[at] = 0;
          (side == 0 ? m.g : m.e)[at] = row.neighbour / pivot;
        });
    // A pivot of zero in a panel need not be one of the whole system.
    if (!good) return needs_whole_system;
    bound_influence(group, m, w);
    if (!panels_decouple()) return needs_whole_system;
    if (uniform_) std::fill_n(m.r, knots_ * lanes, uniform_rate(t_));
    separate_own(m.r, factors + 3 * knots_ * lanes);
    return DF_STATUS_OK;
  }

  // The coefficients of function j in the panels of a group.
  void construct(ptrdiff_t group, Real* factors, Real* work, ptrdiff_t j, ptrdiff_t /*count*/) const {
    const auto& kernels = natural_kernels_now<Real>();
    const group_arrays m = arrays_at(factors, work);
    const samples<Real> y = function_of(t_, j);
    fill(group, m.y, m.s, cells_, y.stride == 1 ? y.first : nullptr, [&y](ptrdiff_t i) { return y[i]; });
    const ptrdiff_t last = (knots_ - 1) * lanes;
    for (ptrdiff_t k = 0; k < lanes; ++k) {
      m.s[k] = slope(m, k);
      m.s[last + k] = slope(m, last - lanes + k);
    }
    each_piece(
        group, [&](ptrdiff_t first, ptrdiff_t end) { kernels.forward(m, first, end); },
        [&](int side, ptrdiff_t at) {
          const ptrdiff_t outer = at - side * lanes, next = outer + (side == 0 ? lanes : -lanes);
          const Real width = uniform_    ? uniform_step(t_)
                             : side == 0 ? t_.x[1] - t_.x[0]
                                         : t_.x[cells_] - t_.x[cells_ - 1];
          const outer_cells<Real> cells = {end_width(side, 0), end_width(side, 1), slope(m, outer),
                                           slope(m, next), side == 0 ? -width : width};
          m.s[at] =
              end_value(end_conditions(index_, cells_)[side], cells, t_.bc, side) * end_reciprocal_[side];
          if (side == 1) m.s[at] -= m.e[at] * m.s[at - lanes];
        });

    kernels.backward(m, reach, knots_ - 1);
    const Real* const r = factors + 3 * knots_ * lanes;
    Real *const slopes = work + 2 * knots_ * lanes, *const values = slopes + own_elements_ * lanes;
    separate_own(m.s, slopes);
    if (y.stride != 1) separate_own(m.y, values);
    for (ptrdiff_t k = 0; k < lanes; ++k) {
      const ptrdiff_t panel = group * lanes + k, cell = own(panel), at = k * own_elements_;
      kernels.cells(y.stride == 1 ? y.first + cell : values + at, slopes + at, r + at, own_cells(panel),
                    past_caches_, t_.coeff_rows[j] + 4 * cell);
    }
    if (past_caches_) kernels.settle();
  }

 private:
  static constexpr ptrdiff_t lanes = panel_lanes<Real>;
  static constexpr ptrdiff_t most_own = 768, register_elements = 16;
  static constexpr ptrdiff_t reach = sizeof(Real) == sizeof(double) ? 48 : 24;
  using group_arrays = panel_group<Real>;

  group_arrays arrays_at(Real* factors, Real* work) const {
    const ptrdiff_t size = knots_ * lanes;
    return {knots_, factors, factors + size, factors + 2 * size, work, work + size};
  }

  // The first cell of a panel. The cells before it are its extension.
  ptrdiff_t own(ptrdiff_t panel) const {
    return static_cast<ptrdiff_t>(int64_t{cells_} * panel / (groups_ * lanes));
  }
  ptrdiff_t own_cells(ptrdiff_t panel) const { return own(panel + 1) - own(panel); }
  ptrdiff_t has_left_end(ptrdiff_t group) const { return group == 0 && index_ != periodic; }
  ptrdiff_t has_right_end(ptrdiff_t group) const { return group == groups_ - 1 && index_ != periodic; }

  ptrdiff_t first_of(ptrdiff_t group, ptrdiff_t lane) const { return own(group * lanes + lane) - reach; }

  // Interleaves what the panels have at knots or cells 0 ... last: read at `direct`, or by value(i) into
  // arrays in `spare`. Beyond an end without a period, the value at the end is repeated.
  template <class Value>
  void fill(ptrdiff_t group, Real* to, Real* spare, ptrdiff_t last, const Real* direct, Value&& value) const {
    const Real* from[lanes];
    for (ptrdiff_t k = 0; k < lanes; ++k, spare += knots_) {
      const ptrdiff_t first = first_of(group, k);
      const bool within = first >= 0 && first + knots_ - 1 <= last;
      from[k] = within && direct != nullptr ? direct + first : spare;
      if (from[k] != spare) continue;
      if (index_ == periodic) {
        for (ptrdiff_t i = 0; i < knots_; ++i) spare[i] = value(((first + i) % cells_ + cells_) % cells_);
        continue;
      }
      const ptrdiff_t before = std::max<ptrdiff_t>(-first, 0), end = std::min(last - first + 1, knots_);
      std::fill_n(spare, before, value(0));
      for (ptrdiff_t i = before; i < end; ++i) spare[i] = value(first + i);
      std::fill(spare + end, spare + knots_, value(last));
    }
    natural_kernels_now<Real>().interleave(from, knots_, to);
  }

  // Across the end of a period the difference of two points is not a width: one of them is a period off.
  void fill_widths(ptrdiff_t group, Real* w, Real* spare) const {
    const auto width = [x = t_.x](ptrdiff_t i) { return x[i + 1] - x[i]; };
    const bool crosses = first_of(group, 0) < 0 || first_of(group, lanes - 1) + knots_ - 1 > cells_;
    if (uniform_)
      std::fill_n(w, knots_ * lanes, Real(1));
    else if (crosses)
      fill(group, w, spare, cells_ - 1, nullptr, width);
    else {
      fill(group, spare, w, cells_, t_.x, width);
      natural_kernels_now<Real>().differences(spare, knots_ - 1, w);
    }
  }

  // What the panels have at their own knots, in an array for each panel.
  void separate_own(const Real* from, Real* to) const {
    Real* panel[lanes];
    for (ptrdiff_t k = 0; k < lanes; ++k) panel[k] = to + k * own_elements_;
    natural_kernels_now<Real>().separate(from + reach * lanes, least_own_ + 2, panel);
  }

  // run(first, end) for all rows but the first and the last, in pieces: end_at(side, element) follows where a
  // row belongs to an end of the partition.
  template <class Run, class EndAt>
  void each_piece(ptrdiff_t group, Run&& run, EndAt&& end_at) const {
    ptrdiff_t next = 1;
    const auto until = [&](int side, ptrdiff_t row, ptrdiff_t lane) {
      run(next, row + 1);
      end_at(side, row * lanes + lane);
      next = row + 1;
    };
    if (has_left_end(group)) until(0, reach, 0);
    if (has_right_end(group)) until(1, reach + own_cells(groups_ * lanes - 1), lanes - 1);
    run(next, knots_ - 1);
  }

  static Real slope(const group_arrays& m, ptrdiff_t at) { return (m.y[at + lanes] - m.y[at]) * m.r[at]; }

  // The n-th width from an end, in the unit of the system.
  Real end_width(int side, ptrdiff_t n) const {
    const ptrdiff_t i = side == 0 ? n : cells_ - 1 - n;
    return uniform_ ? Real(1) : t_.x[i + 1] - t_.x[i];
  }

  // Slopes are at most of the order of 1 / the least width, so an influence below rounding is one whose bound
  // is below that share of the least width. Points that do not ascend never decouple. More groups can only
  // raise the bound and lower the width.
  bool panels_decouple() const {
    return influence_ <= std::numeric_limits<Real>::epsilon() / 4 * least_width_;
  }

  // The influence of a slope beyond the extension of a panel is the product of the multipliers between the
  // two, times the width of the cell where it acts.
  void bound_influence(ptrdiff_t group, const group_arrays& m, const Real* w) {
    Real left[lanes], right[lanes];
    for (ptrdiff_t k = 0; k < lanes; ++k) {
      const ptrdiff_t end = (reach + own_cells(group * lanes + k)) * lanes + k, own = reach * lanes + k;
      left[k] = has_left_end(group) && k == 0 ? 0 : std::max(w[own - lanes], w[own]);
      right[k] = has_right_end(group) && k == lanes - 1 ? 0 : std::max(w[end - lanes], w[end]);
    }
    // From the row past the longest panel; the row more of a shorter one would only lower the bound.
    const ptrdiff_t first = reach + least_own_ + 1;
    for (ptrdiff_t i = 0; i < reach; ++i)
      for (ptrdiff_t k = 0; k < lanes; ++k) {
        left[k] *= m.e[(1 + i) * lanes + k];
        if (first + i < knots_ - 1) right[k] *= m.g[(first + i) * lanes + k];
      }
    for (ptrdiff_t k = 0; k < lanes; ++k)
      influence_ = std::max({influence_, std::fabs(left[k]), std::fabs(right[k])});
  }

  const task<Real>& t_;
  const bool uniform_;
  const boundary index_;
  const ptrdiff_t cells_;
  bool past_caches_;
  ptrdiff_t groups_, least_own_, knots_, own_elements_;
  Real end_reciprocal_[2] = {};
  Real least_width_ = std::numeric_limits<Real>::infinity(), influence_ = 0;
};

}  // namespace tmk::fitting
