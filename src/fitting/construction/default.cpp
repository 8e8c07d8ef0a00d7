// SPDX-License-Identifier: Apache-2.0
// Default cubics: the caller gives the second derivatives M at the inner points (ic), and no system is
// solved. Inner cells have M at both ends; the first cell has M[1] and the boundary condition, and the last
// cell likewise.
#include "fitting/construction/constructor.hpp"

namespace tmk::fitting {

namespace {

// A cell at an end: width h and its reciprocal, divided difference d; M at its inner knot, the boundary value
// at the outer one.
template <class Real>
struct outer_cell {
  Real h, r, d, bend, value;
};

// Powers 1 to 3 of the cell.
template <class Real>
struct powers {
  Real c1, c2, c3;
};

template <class Real>
powers<Real> through(const outer_cell<Real>& e, Real c2, Real c3) {
  return {e.d - (c3 * e.h + c2) * e.h, c2, c3};
}

// First cells. Without a knot the cubic of the second cell continues to the left: `next` is its c3.
template <class Real>
struct first_cell {
  static powers<Real> not_a_knot(const outer_cell<Real>& e, Real next) {
    return through(e, e.bend / 2 - 3 * e.h * next, next);
  }
  static powers<Real> free(const outer_cell<Real>& e, Real) { return through(e, Real(0), e.bend * e.r / 6); }
  static powers<Real> slope(const outer_cell<Real>& e, Real) {
    const Real c3 = (e.value - e.d) * e.r * e.r / 2 + e.bend * e.r / 4;
    return {e.value, e.bend / 2 - 3 * c3 * e.h, c3};
  }
  static powers<Real> bend(const outer_cell<Real>& e, Real) {
    const Real c2 = e.value / 2;
    return through(e, c2, (e.bend / 2 - c2) * e.r / 3);
  }
};

// Last cells, with the c3 of the one before. A free end keeps half of the bend at its inner knot.
template <class Real>
struct last_cell {
  static powers<Real> not_a_knot(const outer_cell<Real>& e, Real next) {
    return through(e, e.bend / 2, next);
  }
  static powers<Real> free(const outer_cell<Real>& e, Real) {
    const Real c2 = e.bend / 2;
    return through(e, c2, -c2 * e.r / 6);
  }
  static powers<Real> slope(const outer_cell<Real>& e, Real) {
    const Real c2 = e.bend / 2;
    return through(e, c2, ((e.value - e.d) * e.r - c2) * e.r / 2);
  }
  static powers<Real> bend(const outer_cell<Real>& e, Real) {
    return through(e, e.bend / 2, (e.value - e.bend) * e.r / 6);
  }
};

template <class Real>
using cell_rule = powers<Real>(const outer_cell<Real>&, Real next);

template <class Real>
constexpr cell_rule<Real>* first_rules[boundaries] = {
    first_cell<Real>::not_a_knot, first_cell<Real>::free, first_cell<Real>::slope, first_cell<Real>::slope,
    first_cell<Real>::bend,       first_cell<Real>::bend, first_cell<Real>::bend};
template <class Real>
constexpr cell_rule<Real>* last_rules[boundaries] = {
    last_cell<Real>::not_a_knot, last_cell<Real>::free, last_cell<Real>::slope, last_cell<Real>::bend,
    last_cell<Real>::slope,      last_cell<Real>::bend, last_cell<Real>::bend};

template <class Real, bool Uniform, boundary Boundary>
struct default_spline {
  const task<Real>& t;
  ptrdiff_t n = points(t);
  Real step = Uniform ? uniform_step(t) : Real(0), rate = Uniform ? uniform_rate(t) : Real(0);

  Real width(ptrdiff_t i) const { return Uniform ? step : t.x[i + 1] - t.x[i]; }
  Real reciprocal(Real h) const { return Uniform ? rate : 1 / h; }
  Real bend(ptrdiff_t knot) const { return t.ic[knot - 1]; }

  // With three points the not-a-knot rules read the coefficients of the other cell before they are written.
  void construct(const samples<Real>& y, Real* c) const {
    for (ptrdiff_t i = 1; i + 2 < n; ++i) {
      const Real h = width(i), r = reciprocal(h), left = bend(i), right = bend(i + 1);
      const Real d = (y[i + 1] - y[i]) * r;
      put(c + 4 * i, y[i], {d - h * (right / 6 + left / 3), left / 2, (right - left) * r / 6});
    }
    // Where a period closes, both sides have the second derivative bc[0].
    put(c, y[0], first_rules<Real>[Boundary](outer(y, 0, 1, 0), c[4 + 3]));
    const ptrdiff_t last = n - 2;
    put(c + 4 * last, y[last],
        last_rules<Real>[Boundary](outer(y, last, last, Boundary == periodic ? 0 : 1),
                                   c[4 * (last - 1) + 3]));
  }

 private:
  outer_cell<Real> outer(const samples<Real>& y, ptrdiff_t i, ptrdiff_t inner_knot, int side) const {
    const Real h = width(i), r = reciprocal(h);
    const Real value = Boundary == not_a_knot || Boundary == free_end ? Real(0) : t.bc[side];
    return {h, r, (y[i + 1] - y[i]) * r, bend(inner_knot), value};
  }

  static void put(Real* c, Real y, const powers<Real>& p) {
    c[0] = y;
    c[1] = p.c1;
    c[2] = p.c2;
    c[3] = p.c3;
  }
};

struct default_family {
  // 28 variants: layout, grid, boundary.
  template <class Real, int Index>
  static int32_t variant(const task<Real>& t, int64_t /*method*/, const ThreadingService* /*service*/) {
    constexpr auto index = static_cast<boundary>(Index % boundaries);
    const default_spline<Real, Index / boundaries % 2 == 1, index> spline{t};
    for (ptrdiff_t j = 0; j < functions(t); ++j) {
      const samples<Real> y = function_of(t, j);
      if (index == periodic && !closes(y, spline.n)) return DF_STATUS_PERIODIC_MISMATCH;
      spline.construct(y, t.coeff_rows[j]);
    }
    return 0;
  }

  template <class Real>
  static int32_t check(const task<Real>& t, int64_t /*method*/) {
    if (const int32_t bad = check_cubic(t, 3, false)) return bad;
    // Of some types a periodic spline needs no values, but this family reads them.
    return first_status({{t.bc_type == DF_BC_PERIODIC && t.bc == nullptr, DF_STATUS_NULL_BC},
                         {t.ic == nullptr, DF_STATUS_NULL_IC}});
  }

  template <class Real>
  static int32_t construct(const task<Real>& t, int64_t method, const ThreadingService* service) {
    return variants<default_family, Real, 4 * boundaries>[boundary_index(t)](t, method, service);
  }
};

}  // namespace

}  // namespace tmk::fitting

TMK_DF_CONSTRUCTOR(DefaultCubicSpline, default_family)
