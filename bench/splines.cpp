// SPDX-License-Identifier: Apache-2.0
// tmk-bench-splines: construction, evaluation and integration of splines compared with what a program would
// otherwise take, in one process on one thread. The peers are compiled for AVX2, as is this program.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <type_traits>

#include "runner.hpp"
#include "splines_peers.hpp"
#include "tmk/abi/df.h"

using namespace tmk::bench;

namespace {

// The C interface by the type of its numbers.
template <class Real>
struct kernels;
#define TMK_KERNELS(letter, Real)                                                   \
  template <>                                                                       \
  struct kernels<Real> {                                                            \
    static constexpr auto new_task = tmk_df_kernel_##letter##NewTask1D;             \
    static constexpr auto edit = tmk_df_kernel_##letter##EditPPSpline1D;            \
    static constexpr auto natural = tmk_df_kernel_##letter##DFNaturalCubicSpline1D; \
    static constexpr auto akima = tmk_df_kernel_##letter##DFAkimaCubicSpline1D;     \
    static constexpr auto hyman = tmk_df_kernel_##letter##DFHymanCubicSpline1D;     \
    static constexpr auto interpolate = tmk_df_kernel_##letter##DFInterpolate1D;    \
    static constexpr auto integrate = tmk_df_kernel_##letter##DFIntegrate1D;        \
  };
TMK_KERNELS(d, double)
TMK_KERNELS(s, float)
#undef TMK_KERNELS

enum class sites_are { sorted, random, uniform };
const char* const site_names[] = {"sorted", "random", "uniform"};

// Functions over a partition whose cells differ in width by a factor up to 50, or are equal, their task, and
// the same as doubles for the peers.
template <class Real>
struct problem {
  size_t points, functions;
  bool uniform;
  std::vector<double> x, y, sites;
  std::vector<Real> own_x, own_y, own_sites, coefficients, results;
  std::vector<Real> ends{0, 0};
  DFTask* task = nullptr;

  problem(size_t n, size_t ny, bool equal, family f) : points(n), functions(ny), uniform(equal) {
    std::mt19937_64 engine(7);
    std::uniform_real_distribution<> unit(0, 1);
    double at = 0;
    for (size_t i = 0; i < n; ++i) {
      x.push_back(at);
      at += uniform ? 1.0 : std::exp(4 * unit(engine) - 2);
    }
    for (double& v : x) v /= x.back();
    for (size_t i = 0; i < n * ny; ++i) y.push_back(std::sin(20 * x[i % n]) + 0.1 * unit(engine));
    own_x =
        uniform ? std::vector<Real>{Real(x.front()), Real(x.back())} : std::vector<Real>(x.begin(), x.end());
    own_y.assign(y.begin(), y.end());
    coefficients.resize(4 * (n - 1) * ny);
    expect_success(kernels<Real>::new_task(&task, int64_t(n), own_x.data(),
                                           uniform ? DF_PARTITION_UNIFORM : DF_PARTITION_NON_UNIFORM,
                                           int64_t(ny), own_y.data(), DF_ROWS, 0));
    const bool natural = f == family::natural;
    expect_success(kernels<Real>::edit(
        task, DF_ORDER_CUBIC, DF_TYPE_STANDARD, natural ? DF_BC_SECOND_LEFT + DF_BC_SECOND_RIGHT : DF_BC_NONE,
        natural ? ends.data() : nullptr, DF_IC_NONE, nullptr, coefficients.data(), DF_ROWS));
  }
  ~problem() { tmk_df_kernel_DeleteTask(&task); }
  problem(const problem&) = delete;
  problem& operator=(const problem&) = delete;

  void draw_sites(size_t count, sites_are order, size_t results_per_site) {
    std::mt19937_64 engine(8);
    std::uniform_real_distribution<> inside(0, 1);
    for (size_t i = 0; i < count; ++i)
      sites.push_back(order == sites_are::uniform ? double(i) / double(count - 1) : inside(engine));
    if (order != sites_are::random) std::ranges::sort(sites);
    own_sites.assign(sites.begin(), sites.end());
    results.resize(count * functions * results_per_site);
  }
  void construct(family f) const {
    constexpr decltype(kernels<Real>::natural) constructors[] = {kernels<Real>::natural, kernels<Real>::akima,
                                                                 kernels<Real>::hyman};
    expect_success(constructors[int(f)](task, 0, 0, tmk_threading_serial()));
  }
  void evaluate(sites_are order, bool three) {
    static const int32_t orders[] = {1, 1, 1};
    const Real two[] = {own_sites.front(), own_sites.back()};
    const bool equal = order == sites_are::uniform;
    const int64_t hint = equal                        ? DF_SITES_UNIFORM
                         : order == sites_are::sorted ? DF_SITES_SORTED
                                                      : DF_SITES_UNKNOWN;
    expect_success(kernels<Real>::interpolate(
        task, DF_INTERPOLATE_VALUES, 0, int64_t(own_sites.size()), equal ? two : own_sites.data(), hint,
        three ? 3 : 1, 0, orders, nullptr, results.data(), DF_FUNCTION_SITE_DERIVATIVE, nullptr, nullptr,
        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, tmk_threading_serial()));
  }
};

std::string shape_of(size_t n, size_t ny, bool uniform, const char* real) {
  return std::string(" points=") + std::to_string(n) + " functions=" + std::to_string(ny) +
         (uniform ? " uniform grid " : " ") + real;
}

template <class Real>
constexpr const char* real_name = std::is_same_v<Real, double> ? "double" : "float";

// The values that the peer of function j takes.
template <class Real>
std::vector<double> function_of(const problem<Real>& d, size_t j) {
  const auto at = d.y.begin() + static_cast<ptrdiff_t>(j * d.points);
  return {at, at + static_cast<ptrdiff_t>(d.points)};
}

const char* const family_names[] = {"natural", "akima", "hyman"};

template <class Real>
void add_construction(std::vector<group>& groups, family f, size_t n, size_t ny, bool uniform) {
  groups.push_back(
      {std::string("construct ") + family_names[int(f)] + shape_of(n, ny, uniform, real_name<Real>),
       int64_t(n * ny), [=] {
         const auto d = std::make_shared<problem<Real>>(n, ny, uniform, f);
         std::vector<subject> all = by_tier([=] { d->construct(f); });
         std::vector<std::vector<double>> y;
         for (size_t j = 0; j < ny; ++j) y.push_back(function_of(*d, j));
         for (const peer_spline& p : peers_of(f, n, uniform))
           all.push_back({p.name, [=] {
                            for (const auto& one : y) p.fit(d->x, one);
                          }});
         return all;
       }});
}

template <class Real>
void add_evaluation(std::vector<group>& groups, size_t n, size_t ny, bool uniform, sites_are order,
                    size_t sites, bool three) {
  const family f = family::natural;
  groups.push_back({std::string(three ? "value and 2 derivatives" : "values") + " at " +
                        site_names[int(order)] + " sites" + shape_of(n, ny, uniform, real_name<Real>) +
                        (sites < n ? " sites=" + std::to_string(sites) : ""),
                    int64_t(sites * ny), [=] {
                      const auto d = std::make_shared<problem<Real>>(n, ny, uniform, f);
                      d->construct(f);
                      d->draw_sites(sites, order, three ? 3 : 1);
                      std::vector<subject> all = by_tier([=] { d->evaluate(order, three); });
                      const auto r = std::make_shared<std::vector<double>>(3 * sites);
                      for (const peer_spline& p : peers_of(f, n, uniform)) {
                        const auto& evaluate = three ? p.evaluate_three : p.evaluate;
                        if (!evaluate) continue;
                        p.fit(d->x, function_of(*d, 0));
                        all.push_back({p.name, [=] {
                                         for (size_t j = 0; j < ny; ++j) evaluate(d->sites, r->data());
                                       }});
                      }
                      // The price of the derivatives: our own values alone, by the best tier.
                      if (three) {
                        subject alone = by_tier([=] { d->evaluate(order, false); }).back();
                        all.push_back({"values alone", alone.run});
                      }
                      return all;
                    }});
}

// Pairs of limits with ascending left ones, each over `cells` cells.
void add_integrals(std::vector<group>& groups, size_t n, size_t pairs, size_t cells) {
  groups.push_back({"integrals over " + std::to_string(cells) + " cells" + shape_of(n, 1, false, "double"),
                    int64_t(pairs), [=] {
                      const auto d = std::make_shared<problem<double>>(n, 1, false, family::natural);
                      d->construct(family::natural);
                      d->draw_sites(pairs, sites_are::sorted, 1);
                      const auto from = std::make_shared<std::vector<double>>(),
                                 to = std::make_shared<std::vector<double>>();
                      const double span = double(cells) / double(n);
                      for (const double t : d->sites) {
                        from->push_back(t * (1 - span));
                        to->push_back(t * (1 - span) + span);
                      }
                      std::vector<subject> all = by_tier([=] {
                        expect_success(tmk_df_kernel_dDFIntegrate1D(
                            d->task, 0, int64_t(pairs), from->data(), DF_SITES_SORTED, to->data(),
                            DF_SITES_SORTED, nullptr, nullptr, d->results.data(), 0, nullptr, nullptr,
                            nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, tmk_threading_serial()));
                      });
                      if (cells > 100) return all;  // their time grows with the span
                      for (const peer_spline& p : peers_of(family::natural, n, false)) {
                        if (p.name == "ALGLIB")
                          continue;  // integrates from the first point: 1e4 cells a pair
                        p.fit(d->x, d->y);
                        all.push_back({p.name, [=] {
                                         for (size_t i = 0; i < pairs; ++i)
                                           d->results[i] = p.integrate((*from)[i], (*to)[i]);
                                       }});
                      }
                      return all;
                    }});
}

std::vector<group> all_groups() {
  std::vector<group> groups;
  for (const family f : {family::natural, family::akima, family::monotone}) {
    for (const size_t n : {1'000, 10'000, 100'000, 1'000'000}) {
      for (const bool uniform : {false, true}) {
        add_construction<double>(groups, f, n, 1, uniform);
        add_construction<float>(groups, f, n, 1, uniform);
      }
    }
    for (const size_t n : {1'000, 10'000}) {
      add_construction<double>(groups, f, n, 64, false);
      add_construction<float>(groups, f, n, 64, false);
    }
  }
  for (const sites_are order : {sites_are::sorted, sites_are::random, sites_are::uniform}) {
    for (const size_t n : {1'000, 10'000, 100'000, 1'000'000})
      for (const bool uniform : {false, true}) {
        add_evaluation<double>(groups, n, 1, uniform, order, 1'000'000, false);
        add_evaluation<float>(groups, n, 1, uniform, order, 1'000'000, false);
      }
    add_evaluation<double>(groups, 10'000, 64, false, order, 20'000, false);
    add_evaluation<double>(groups, 10'000, 1, false, order, 1'000'000, true);
    add_evaluation<double>(groups, 10'000, 1, true, order, 1'000'000, true);
  }
  // Few ascending sites among many points.
  for (const size_t sites : {12'500, 50'000, 99'999})
    add_evaluation<double>(groups, 100'000, 1, false, sites_are::sorted, sites, false);
  for (const size_t cells : {1, 10, 1'000, 5'000}) add_integrals(groups, 10'000, 100'000, cells);
  return groups;
}

}  // namespace

int main(int argc, char** argv) {
  const options wish = start(argc, argv, "values at random sites points=10000");
  run_groups(all_groups(), wish,
             page_heading(wish, R"(<!-- Made by `./dev bench splines --markdown`: do not edit. -->
# Performance of splines

%s.

Nanoseconds per point and function (construction), site and function (evaluation) or pair of limits
(integrals) on one thread, median of %d repetitions in random order in one process.
%s
Cells of a grid that is not uniform differ in width up to 50 times. Storage for coefficients is ready where
the library lets its user provide it. The peers work in double throughout, compared with floats too; they
evaluate site by site, GSL with its accelerator. "Values alone" is tmk's own time without the derivatives.
Hyman's filter has no like among the peers: Steffen's and Fritsch and Carlson's monotone cubics are listed
with it.
)"));
}
