// SPDX-License-Identifier: Apache-2.0
// tmk-costs: prints src/vector/registry/costs.inc, the relative cost per element of the kernel in each slot.
//   Time is the least of many calls with arrays that stay in the first cache, arguments drawn evenly from the
//   function's usual range, baseline tier. The unit is such that dExp at level HA costs 26.45.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <random>
#include <string_view>
#include <type_traits>

#include "oracle/domains.hpp"
#include "tools/common/kernels.hpp"

using namespace tmk::tools;

namespace {

using costs = std::array<double, 3>;

// Figures that the interface fixes. Gather and scatter have a marker there, not a measurement.
struct fixed_row {
  std::string_view name;
  costs value;
};
constexpr fixed_row fixed_rows[] = {
    {"sAdd", {1.82, 1.82, 1.82}},          {"sInv", {3.59, 9.95, 2.97}},
    {"sSin", {10.93, 18.58, 8.43}},        {"dSin", {35.90, 35.90, 32.00}},
    {"dExp", {17.45, 26.45, 13.02}},       {"dPow", {78.34, 85.52, 78.34}},
    {"cSin", {1343.47, 1343.47, 1343.47}}, {"zDiv", {210.08, 210.08, 36.22}},
    {"dExpm1", {90.44, 158.31, 90.44}},
};
constexpr costs gather_scatter = {1111, 1111, 1111};

template <class Real>
struct workload {
  static constexpr std::int32_t size = 512;
  using element = std::conditional_t<sizeof(Real) == sizeof(float), tmk_complex8, tmk_complex16>;

  explicit workload(const vector_function& f) : function(f) {
    std::mt19937_64 generate(1);
    for (int argument : {0, 1}) {
      const auto [low, high] = tmk::accuracy::find_domain(f.letter, f.stem, argument).core;
      std::uniform_real_distribution<double> draw(low, high);
      for (Real& x : argument == 0 ? a : b) x = static_cast<Real>(draw(generate));
    }
  }

  void run(VtmKernel kernel) {
    switch (function.shape) {
      case call_shape::binary:
        return call(kernel, a, b, r);
      case call_shape::two_results:
        return call(kernel, a, r, r + size);
      case call_shape::linear_fraction:
        return call(kernel, a, b, b[0], b[1], b[2], b[3], r);
      case call_shape::scalar_exponent:
        if (function.is_complex()) return call(kernel, a, element{b[0], b[1]}, r);
        return call(kernel, a, b[0], r);
      default:
        return call(kernel, a, r);
    }
  }

  template <class... Arguments>
  static void call(VtmKernel kernel, Arguments... arguments) {
    reinterpret_cast<void (*)(std::int32_t, Arguments...)>(kernel)(size, arguments...);
  }

  const vector_function& function;
  Real a[2 * size], b[2 * size], r[2 * size];
};

// Nanoseconds per element. A shared kernel is measured once, so that its slots show one figure.
template <class Real>
costs measure(const vector_function& f) {
  using clock = std::chrono::steady_clock;
  workload<Real> work(f);
  costs result{};
  for (const kernel& k : distinct_kernels(f, {TMK_TIER_W7}, {0, 1, 2})) {
    double least = 1e9;
    const auto end = clock::now() + std::chrono::milliseconds(40);
    do {
      const auto start = clock::now();
      work.run(k.address);
      least = std::min(least, std::chrono::duration<double, std::nano>(clock::now() - start).count());
    } while (clock::now() < end);
    for (const kernel_use& use : k.uses) result[use.slot] = least / work.size;
  }
  return result;
}

costs measure(const vector_function& f) { return f.is_single() ? measure<float>(f) : measure<double>(f); }

}  // namespace

int main() {
  tmk_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
  const auto functions = functions_with_value();
  const auto named = [&](std::string_view name) {
    return std::ranges::find(functions, name, &vector_function::name);
  };
  const double unit = measure(*named("dExp"))[TMK_SLOT_HA] / 26.45;

  std::puts("// Relative costs per element in the slots LA, HA, EP. Made by ./dev costs.");
  constexpr std::string_view names[] = {
#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) #letter #stem,
#include "vector/registry/functions.def"
  };
  for (std::string_view name : names) {
    costs row = gather_scatter;
    if (const auto fixed = std::ranges::find(fixed_rows, name, &fixed_row::name);
        fixed != std::end(fixed_rows))
      row = fixed->value;
    else if (const auto f = named(name); f != functions.end())
      for (row = measure(*f); double& cost : row) cost /= unit;
    std::printf("TMK_COST(%.*s, %.2ff, %.2ff, %.2ff)\n", static_cast<int>(name.size()), name.data(), row[0],
                row[1], row[2]);
  }
}
