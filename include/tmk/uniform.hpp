// SPDX-License-Identifier: Apache-2.0
// tmk::uniform: evenly spaced points, and (with <tmk/random.hpp>) an array filled with uniform variates.
#pragma once

#include <cstddef>
#include <span>

namespace tmk {

class stream;
namespace distribution {
struct uniform;
}

/// `size` points from first to last at equal steps.
struct uniform_grid {
  double first, last;
  std::size_t size;
};

namespace detail {

struct uniform_call {
  constexpr uniform_grid operator()(double first, double last, std::size_t size) const {
    return {first, last, size};
  }

  // Defined in <tmk/random.hpp>.
  void operator()(stream& g, std::span<double> r) const;
  void operator()(stream& g, std::span<float> r) const;
  void operator()(stream& g, std::span<double> r, const distribution::uniform& law) const;
  void operator()(stream& g, std::span<float> r, const distribution::uniform& law) const;
};

}  // namespace detail

inline constexpr detail::uniform_call uniform;

}  // namespace tmk
