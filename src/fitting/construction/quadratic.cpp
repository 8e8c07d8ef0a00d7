// SPDX-License-Identifier: Apache-2.0
// Quadratic splines. With knots at the points one condition fixes them, here the slope at the left end,
// bc[0]; each cell then gives the slope at which the next one begins (de Boor, A Practical Guide to Splines,
// ch. VI):
//   s[0] = bc[0],  s[i+1] = 2 d[i] - s[i]
// An error in the condition runs through all cells without fading; knots between the points have no such
// weakness.
#include "fitting/construction/quadratic.hpp"

#include <array>

namespace tmk::fitting {

namespace {

template <class Real, bool Uniform>
void standard_cells(const task<Real>& t, const samples<Real>& y, Real* c) {
  const Real rate = Uniform ? uniform_rate(t) : Real(0);
  Real s = t.bc[0];
  for (ptrdiff_t i = 0; i < points(t) - 1; ++i, c += 3) {
    const Real r = Uniform ? rate : 1 / (t.x[i + 1] - t.x[i]);
    const Real d = (y[i + 1] - y[i]) * r;
    c[0] = y[i];
    c[1] = s;
    c[2] = (d - s) * r;
    s = 2 * d - s;
  }
}

struct standard_family {
  // Four variants: layout, grid.
  template <class Real, int Index>
  static int32_t variant(const task<Real>& t, const ThreadingService* service) {
    for_quadratic_groups(t, service, quadratic_threads(t, service),
                         [&t](ptrdiff_t first, ptrdiff_t end, int32_t /*thread*/) {
                           for (ptrdiff_t j = first; j < end; ++j)
                             standard_cells<Real, Index % 2 == 1>(t, function_of(t, j), t.coeff_rows[j]);
                         });
    return DF_STATUS_OK;
  }
};

struct quadratic_family {
  template <class Real>
  static int32_t check(const task<Real>& t, int64_t /*method*/) {
    if (!is_storage_hint(t.yhint)) return DF_STATUS_BAD_YHINT;
    if (t.s_type == DF_TYPE_STANDARD)
      return first_status({{t.bc_type != DF_BC_QUADRATIC_VALUE, DF_STATUS_BAD_BC_TYPE},
                           {t.bc == nullptr, DF_STATUS_NULL_BC}});
    if (t.s_type != DF_TYPE_SUBBOTIN) return DF_STATUS_BAD_METHOD;
    const boundary index = boundary_of(t.bc_type);
    return first_status({{(t.ic_type & DF_IC_KNOTS) == 0, DF_STATUS_BAD_IC_TYPE},
                         {index == no_boundary || index == not_set, DF_STATUS_BAD_BC_TYPE},
                         {lacks_boundary_values(t), DF_STATUS_NULL_BC},
                         {t.ic == nullptr, DF_STATUS_NULL_IC}});
  }

  // The boundary conditions without a variant have no check of their own: they are refused last.
  template <class Real>
  static int32_t construct(const task<Real>& t, int64_t /*method*/, const ThreadingService* service) {
    quadratic_variant<Real>* variant =
        t.s_type == DF_TYPE_SUBBOTIN ? subbotin_variant(t)
                                     : variants<standard_family, Real, 4>[static_cast<size_t>(grid_index(t))];
    return variant != nullptr ? variant(t, service) : DF_STATUS_BAD_BC_TYPE;
  }
};

}  // namespace

}  // namespace tmk::fitting

TMK_DF_CONSTRUCTOR(QuadraticSpline, quadratic_family)
