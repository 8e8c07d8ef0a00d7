// Matrix and right sides of natural cubics, lanes over rows.
#include "fitting/construction/natural_loops.hpp"
#include "platform/simd.hpp"

TMK_TIER_OPEN
namespace {

// Of a register and of a range; a NaN among them need not be found.
template <class Real>
Real least_of(const batch<Real>& lanes_of_least, const Real* first, const Real* end) {
  Real lane[lanes<Real>];
  store(lane, lanes_of_least);
  Real least = lane[0];
  for (const Real v : lane) least = v < least ? v : least;
  for (; first < end; ++first) least = *first < least ? *first : least;
  return least;
}

template <class Real>
Real rows(const Real* w, int cells, Real* dl, Real* d, Real* du) {
  constexpr int width = lanes<Real>;
  batch<Real> least(w[0]);
  int k = 0;
  for (; k + width < cells; k += width) {
    const batch<Real> left = load(w + k), right = load(w + k + 1), sum = left + right;
    least = xsimd::min(least, left);
    store(dl + k, right);
    store(d + k + 1, sum + sum);
    store(du + k + 1, left);
  }
  for (; k + 1 < cells; ++k) {
    dl[k] = w[k + 1];
    d[k + 1] = 2 * (w[k] + w[k + 1]);
    du[k + 1] = w[k];
  }
  return least_of(least, w + std::max(cells - width, 0), w + cells);
}

// A row wants the slope of the cell behind it, which the next register would bring: it is computed twice.
template <class Real>
void right_sides(const Real* y, const Real* w, const Real* r, int cells, Real* slope, Real* b) {
  constexpr int width = lanes<Real>;
  const batch<Real> three(Real(3));
  int k = 0;
  for (; k + width < cells; k += width) {
    const batch<Real> middle = load(y + k + 1);
    const batch<Real> left = (middle - load(y + k)) * load(r + k);
    const batch<Real> right = (load(y + k + 2) - middle) * load(r + k + 1);
    store(slope + k, left);
    store(b + k + 1, three * (load(w + k + 1) * left + load(w + k) * right));
  }
  for (int i = k; i < cells; ++i) slope[i] = (y[i + 1] - y[i]) * r[i];
  for (; k + 1 < cells; ++k) b[k + 1] = 3 * (w[k + 1] * slope[k] + w[k] * slope[k + 1]);
}

}  // namespace
TMK_TIER_CLOSE

TMK_DEFINE_LOOPS(natural_doubles) = {{tmk::rows<double>, tmk::right_sides<double>}};
TMK_DEFINE_LOOPS(natural_singles) = {{tmk::rows<float>, tmk::right_sides<float>}};
