// SPDX-License-Identifier: Apache-2.0
// A kernel's description: the mathematics of one function at one level, which the walks of walk.hpp turn into
// a kernel over arrays.
//
//   template <class Real, level Level>
//   struct sine : description<Real> {
//     static batch<Real> fast(const batch<Real>& x);                  // most elements, a register of them
//     // Lanes that fast() cannot serve.
//     static lane_mask<Real> flagged(const batch<Real>& x, const batch<Real>& y);
//     // The slow path, one element: any, with its status; or only those that are settled without the
//     // reference, which takes the others.
//     static int32_t rare(const Real* a, Real* r);
//     static std::optional<int32_t> shortcut(const Real* a, Real* r);
//   };
//   TMK_KERNELS(s, Sin, unary, LHE, sine)
//   TMK_KERNELS(d, Sin, unary, LHE, sine)
//
// fast() and flagged() take a register of each argument, flagged() then those of the results; fast() returns
// a pack where there are two. A complex argument or result is a complex_value, or parts_in_turn where `value`
// says so: then a flagged lane means its element, and rare() takes any. Scalar arguments are members:
// the description is made from them. Without flagged() every lane is fast; without rare() and
// shortcut() the function's reference in extended precision takes the lanes that are not. It takes some 300
// nanoseconds.
#pragma once

#include "platform/controls.hpp"
#include "vector/walk/elements.hpp"

TMK_TIER_OPEN

enum class level { la, ha, ep };

// What most descriptions have in common; each names only what differs.
template <class Real>
struct description {
  using real = Real;
  using value = batch<Real>;
  static constexpr auto controls = control_class::a;
  static constexpr auto sse = sse_control::by_mode;
  static constexpr int group = 4 * lanes<Real>;  // elements whose flags are looked at together
  static constexpr Real filler = Real(0.75);     // in unused lanes; harmless for fast()

  // Takes less time than results need to get to memory: large ones are stored past the caches.
  static constexpr bool streams = false;
  // Whole groups only; a group with a flagged element, and what is left at the end, go through rare() element
  // by element. (Registers that are filled in part are an overhead for formulas of many steps.)
  static constexpr bool by_blocks = false;
  // NaN among the arguments is the answer, quieted. So it is of every function of one real argument.
  static constexpr bool nan_in_nan_out = true;
};

// The description of a family for a precision and a level. A family may have kernels of one precision only,
// or one kernel for all levels.
template <template <class, level> class Family, class Real, level Level>
Family<Real, Level> family_member();
template <template <level> class Family, class Real, level Level>
Family<Level> family_member();
template <template <class> class Family, class Real, level Level>
Family<Real> family_member();
template <class Kernel, class Real, level Level>
Kernel family_member();

TMK_TIER_CLOSE
