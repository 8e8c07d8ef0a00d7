// SPDX-License-Identifier: Apache-2.0
// The places of a ziggurat that the density may leave out: wedges, where a uniform height decides, and the
// tail, which is inverted rather than rejected. Few, so they are decided together on short arrays.
#include "random/distributions/ziggurat.hpp"

#include <cmath>

#include "random/distributions/compaction.hpp"
#include "random/distributions/kernel_calls.hpp"

namespace tmk::rng {

namespace {

// Arguments for the exponential of wedges and the inverse of tails, with the place in the block of each.
struct short_lists {
  int32_t wedges = 0, tails = 0;
  int32_t wedge_at[distribution_block], tail_at[distribution_block];
  double wedge[distribution_block], tail[distribution_block];

  void add_wedge(int32_t at, double x) {
    wedge_at[wedges] = at;
    wedge[wedges++] = -0.5 * x * x;
  }
  void add_tail(int32_t at, double uniform) {
    tail_at[tails] = at;
    tail[tails++] = uniform * (ziggurat_tail_probability / 2);
  }
  // Densities, and normal quantiles below the negative edge.
  void evaluate() {
    if (wedges > 0) run_kernel<double, TMK_SLOT_LA>(tmk_vtm_kernel_dExp_ttab, wedges, +wedge, +wedge);
    if (tails > 0) run_kernel<double, TMK_SLOT_LA>(tmk_vtm_kernel_dCdfNormInv_ttab, tails, +tail, +tail);
  }
};

double height_within(int layer, double density) {
  const double low = ziggurat_heights[layer], high = ziggurat_heights[layer + 1];
  return (density - low) / (high - low);
}

template <class Real>
using unit_of = typename ziggurat_unit<Real>::type;

// The escapes that begin a record, rather than being the second unit of one. `units` has room for the one
// that may have to be drawn.
template <class Real>
int32_t list_records(VtsStreamHandle stream, int32_t count, unit_of<Real>* units, int32_t found,
                     const int32_t* escapes, const Real* x, short_lists& lists) {
  using unit = ziggurat_unit<Real>;
  int32_t first = 0;  // not yet taken as a second unit
  for (int32_t k = 0; k < found; ++k) {
    const int32_t at = escapes[k];
    if (at < first) continue;
    first = at + 2;
    if (first > count) {
      const int32_t status = draw_units(stream, 1, units + count);
      if (status < 0) return status;
    }
    if (unit::layer(units[at]) == 0)
      lists.add_tail(at, unit::fraction(units[at + 1]));
    else
      lists.add_wedge(at, x[at]);
  }
  return VTS_STATUS_OK;
}

// In the order of both lists: second units go, and variates whose heights are above the density.
template <class Real>
int32_t settle_records(int32_t count, const unit_of<Real>* units, const short_lists& lists, Real* r) {
  using unit = ziggurat_unit<Real>;
  removal<Real> kept(r);
  for (int32_t wedge = 0, tail = 0; wedge < lists.wedges || tail < lists.tails;) {
    const bool is_tail =
        wedge == lists.wedges || (tail < lists.tails && lists.tail_at[tail] < lists.wedge_at[wedge]);
    const int32_t at = is_tail ? lists.tail_at[tail] : lists.wedge_at[wedge];
    bool above = false;
    if (is_tail)
      r[at] = static_cast<Real>(std::copysign(lists.tail[tail++], r[at]));
    else
      above = unit::fraction(units[at + 1]) >= height_within(unit::layer(units[at]), lists.wedge[wedge++]);
    kept.without(above ? at : at + 1, above ? 2 : 1);
  }
  return kept.finish(count);
}

}  // namespace

template <class Real>
int32_t ziggurat_candidates(VtsStreamHandle stream, int32_t count, Real* r) {
  alignas(64) unit_of<Real> units[distribution_block + 1];
  int32_t escapes[distribution_block];
  short_lists lists;
  int32_t status = draw_units(stream, count, units);
  if (status < 0) return status;
  const int32_t found = ziggurat_kernels_now<Real>().place_across(count, units, r, escapes);
  status = list_records<Real>(stream, count, units, found, escapes, r, lists);
  if (status < 0) return status;
  lists.evaluate();
  return settle_records<Real>(count, units, lists, r);
}

template int32_t ziggurat_candidates(VtsStreamHandle, int32_t, double*);
template int32_t ziggurat_candidates(VtsStreamHandle, int32_t, float*);

void settle_escapes(int32_t escapes, const int32_t* at, const uint64_t* units, double* x, double* u) {
  if (escapes == 0) return;
  constexpr double inner = ziggurat_layers[0].inner, width = ziggurat_layers[0].edge - inner;
  short_lists lists;
  for (int32_t k = 0; k < escapes; ++k) {
    const double place = x[at[k]];
    if (ziggurat_unit<double>::layer(units[at[k]]) == 0)
      lists.add_tail(at[k], std::fmax((std::fabs(place) - inner) / width, 0x1p-52));
    else
      lists.add_wedge(at[k], place);
  }
  lists.evaluate();
  for (int32_t k = 0; k < lists.wedges; ++k) {
    const int32_t i = lists.wedge_at[k];
    u[i] /= std::fmax(height_within(ziggurat_unit<double>::layer(units[i]), lists.wedge[k]), 0.0);
  }
  for (int32_t k = 0; k < lists.tails; ++k) {
    const int32_t i = lists.tail_at[k];
    x[i] = std::copysign(lists.tail[k], x[i]);
  }
}

}  // namespace tmk::rng
