// SPDX-License-Identifier: Apache-2.0
// Quadratic splines with knots between the points (Subbotin, Proc. Steklov Inst. Math. 88, 1967; Stechkin and
// Subbotin, Splines in Numerical Mathematics, 1976).
//
// The unknowns are the slopes g at the knots: in a piece the slope is linear, so its integral from point to
// point, over the right part of one piece and the left part of the next, is a condition on three of them.
// With a[i] the distance from point i to knot i+1, b[i] that from knot i+1 to point i+1, and p[i], q[i] =
// 1 - p[i] the shares of piece i right and left of its point,
//   a[i] p[i] g[i] + (a[i] (1 + q[i]) + b[i] (1 + p[i+1])) g[i+1] + b[i] q[i+1] g[i+2] = 2 (y[i+1] - y[i])
// which is diagonally dominant for knots anywhere between their points. The outer knots are no bounds, and
// are in the system at the outer points: p[0] = 1, q[nx-1] = 1.
#include "fitting/construction/quadratic.hpp"
#include "fitting/subbotin_knots.hpp"
#include "linalg/tridiagonal.hpp"
#include "platform/scratch.hpp"

namespace tmk::fitting {

namespace {

// Piece i of the system: its width, the share right of the point, and that to the left.
template <class Real>
struct piece_parts {
  Real width, right_share, left_share;
};

template <class Real>
class subbotin_spline {
 public:
  subbotin_spline(const task<Real>& t, bool uniform, boundary index)
      : t_(t),
        n_(points(t)),
        step_(uniform ? uniform_step(t) : Real(0)),
        uniform_(uniform),
        bends_{index == second_first || index == second_second,
               index == first_second || index == second_second},
        knots_(subbotin_knots_of(t)) {}

  int32_t construct(const ThreadingService* service) const {
    const ptrdiff_t order = n_ + 1, threads = quadratic_threads(t_, service);
    const scratch<Real> memory(static_cast<size_t>(order * (3 + quadratic_group * threads)));
    if (!memory) return DF_STATUS_NO_MEMORY;
    Real* d = memory.get();
    const linalg::tridiagonals<Real> system{order, d + order, d, d + 2 * order};
    build(system);
    if (linalg::factor(system) != 0) return DF_STATUS_SOLVER_FAILED;
    for_quadratic_groups(t_, service, threads, [&](ptrdiff_t first, ptrdiff_t end, int32_t thread) {
      Real* b = d + order * (3 + quadratic_group * thread);
      for (ptrdiff_t j = first; j < end; ++j) right_side(function_of(t_, j), b + (j - first) * order);
      linalg::solve<Real>({order, system.dl, system.d, system.du}, b, order, end - first);
      for (ptrdiff_t j = first; j < end; ++j)
        pieces(function_of(t_, j), b + (j - first) * order, t_.coeff_rows[j]);
    });
    return DF_STATUS_OK;
  }

 private:
  Real x(ptrdiff_t i) const { return uniform_ ? t_.x[0] + static_cast<Real>(i) * step_ : t_.x[i]; }
  Real before_knot(ptrdiff_t i) const { return i < n_ - 1 ? knots_[i + 1] - x(i) : Real(0); }  // a[i]
  Real after_knot(ptrdiff_t i) const { return i >= 0 ? x(i + 1) - knots_[i + 1] : Real(0); }   // b[i]

  piece_parts<Real> parts(ptrdiff_t i) const {
    const Real left = after_knot(i - 1), right = before_knot(i), width = left + right;
    return {width, right / width, left / width};
  }

  void build(const linalg::tridiagonals<Real>& m) const {
    piece_parts<Real> here = parts(0);
    m.d[0] = 1;
    m.du[0] = bends_[0] ? Real(-1) : Real(0);
    for (ptrdiff_t i = 0; i < n_ - 1; ++i) {
      const piece_parts<Real> next = parts(i + 1);
      const Real a = before_knot(i), b = after_knot(i);
      m.dl[i] = a * here.right_share;
      m.d[i + 1] = a * (1 + here.left_share) + b * (1 + next.right_share);
      m.du[i + 1] = b * next.left_share;
      here = next;
    }
    m.dl[n_ - 1] = bends_[1] ? Real(-1) : Real(0);
    m.d[n_] = 1;
  }

  void right_side(const samples<Real>& y, Real* b) const {
    b[0] = bends_[0] ? -t_.bc[0] * parts(0).width : t_.bc[0];
    for (ptrdiff_t i = 0; i < n_ - 1; ++i) b[i + 1] = 2 * (y[i + 1] - y[i]);
    b[n_] = bends_[1] ? t_.bc[1] * parts(n_ - 1).width : t_.bc[1];
  }

  void pieces(const samples<Real>& y, const Real* g, Real* c) const {
    for (ptrdiff_t i = 0; i < n_; ++i, c += 3) {
      const auto [width, right_share, left_share] = parts(i);
      c[0] = y[i];
      c[1] = right_share * g[i] + left_share * g[i + 1];
      c[2] = (g[i + 1] - g[i]) / (2 * width);
    }
  }

  const task<Real>& t_;
  const ptrdiff_t n_;
  const Real step_;
  const bool uniform_, bends_[2];
  const subbotin_knots<Real> knots_;
};

struct subbotin_family {
  // Variants exist for derivatives at the ends alone.
  static constexpr bool has_variant(int index) {
    return index % boundaries >= first_first && index % boundaries <= second_second;
  }

  template <class Real, int Index>
  static int32_t variant(const task<Real>& t, const ThreadingService* service) {
    constexpr bool uniform = Index / boundaries % 2 == 1;
    return subbotin_spline<Real>(t, uniform, static_cast<boundary>(Index % boundaries)).construct(service);
  }

  template <class Real, int Index>
  static constexpr quadratic_variant<Real>* variant_or_null() {
    if constexpr (has_variant(Index))
      return &variant<Real, Index>;
    else
      return nullptr;
  }
};

// 56 variants: grid of the knots, layout, grid of the points, boundary.
template <class Real, int... Index>
constexpr auto all_subbotin_variants(std::integer_sequence<int, Index...>) {
  return std::array{subbotin_family::variant_or_null<Real, Index>()...};
}
template <class Real>
constexpr auto subbotin_variants =
    all_subbotin_variants<Real>(std::make_integer_sequence<int, 8 * boundaries>());

}  // namespace

template <class Real>
quadratic_variant<Real>* subbotin_variant(const task<Real>& t) {
  const int knots = (t.ic_type & DF_IC_KNOTS_UNIFORM) != 0 ? 4 : 0;
  const int index = (knots + grid_index(t)) * boundaries + boundary_of(t.bc_type);
  return subbotin_variants<Real>[static_cast<size_t>(index)];
}

template quadratic_variant<double>* subbotin_variant(const task<double>&);
template quadratic_variant<float>* subbotin_variant(const task<float>&);

}  // namespace tmk::fitting
