// SPDX-License-Identifier: Apache-2.0
// A batch of elements: arguments drawn from the function's domain, and a kernel's results for them.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>
#include <random>
#include <span>
#include <type_traits>
#include <vector>

#include "oracle/domains.hpp"
#include "oracle/oracle.hpp"
#include "tools/common/kernels.hpp"

namespace tmk::accuracy {

using tools::call_shape;
using tools::vector_function;

// Error of a result in ulp: of its worse part, or of its modulus where that is what the function promises.
inline double result_error(const vector_function& f, const exact_result& exact,
                           const std::array<double, 2>& got) {
  return f.promises_modulus() ? modulus_ulp_error(exact, got)
                              : std::max(ulp_error(exact[0], got[0]), ulp_error(exact[1], got[1]));
}

// The arguments that a line of numbers lists; nothing if there are too many or too few.
inline std::optional<arguments> listed_arguments(const vector_function& f, std::vector<double> values) {
  const bool is_complex = f.is_complex() && f.shape != call_shape::real_argument;
  const bool has_two = f.shape == call_shape::binary || f.shape == call_shape::scalar_exponent;
  if (values.size() != (has_two ? 2u : 1u) * (is_complex ? 2u : 1u)) return std::nullopt;
  values.resize(4);
  return is_complex ? arguments{{values[0], values[1]}, {values[2], values[3]}}
                    : arguments{values[0], values[1]};
}

template <class Real>
using bits_of = std::conditional_t<sizeof(Real) == sizeof(float), std::int32_t, std::int64_t>;

// Places of the numbers in their order, consecutive numbers having consecutive places; zeros share place 0.
template <class Real>
bits_of<Real> place_of(Real x) {
  const auto magnitude = std::bit_cast<bits_of<Real>>(std::abs(x));
  return std::signbit(x) ? -magnitude : magnitude;
}

template <class Real>
Real at_place(bits_of<Real> place) {
  const Real magnitude = std::bit_cast<Real>(std::abs(place));
  return place < 0 ? -magnitude : magnitude;
}

// Draws arguments from a domain; see domains.hpp for what is drawn.
template <class Real>
class sampler {
 public:
  explicit sampler(const domain& d) : domain_(d), low_(inside(d.full.low)), high_(inside(d.full.high)) {}

  template <class Generator>
  double operator()(Generator& generate) const {
    switch (generate() % 8) {
      case 0:
        return near(multiple(generate), generate);
      case 1:
        return near(point(generate), generate);
      case 2:
      case 3:
      case 4:
        return inside(std::uniform_real_distribution(domain_.core.low, domain_.core.high)(generate));
      default:
        return at_place<Real>(std::uniform_int_distribution(place_of(low_), place_of(high_))(generate));
    }
  }

 private:
  static constexpr int farthest = sizeof(Real) == sizeof(float) ? 16 : 45;  // log2 of places from a point

  Real inside(double x) const {
    constexpr double largest = std::numeric_limits<Real>::max();
    return static_cast<Real>(
        std::clamp(x, std::max(domain_.full.low, -largest), std::min(domain_.full.high, largest)));
  }

  // Near points are drawn more often than far ones: the distance's logarithm is what is drawn evenly.
  template <class Generator>
  Real near(double x, Generator& generate) const {
    const int shift = static_cast<int>(generate() % (farthest + 1));
    const auto distance = static_cast<bits_of<Real>>(generate() % ((std::uint64_t{1} << shift) + 1));
    const auto place = place_of(inside(x)) + (generate() % 2 ? distance : -distance);
    return at_place<Real>(std::clamp(place, place_of(low_), place_of(high_)));
  }

  template <class Generator>
  double point(Generator& generate) const {
    const double points[] = {0, 0.5, 1, 2, low_, high_, domain_.core.low, domain_.core.high};
    const auto choice = generate() % (std::size(points) + domain_.points.size());
    const double x = choice < std::size(points) ? points[choice] : domain_.points[choice - std::size(points)];
    return generate() % 4 == 0 ? -x : x;
  }

  template <class Generator>
  double multiple(Generator& generate) const {
    if (domain_.period == 0) return point(generate);
    return domain_.period *
           static_cast<double>(static_cast<std::int64_t>(generate()) >> (40 + generate() % 24));
  }

  const domain& domain_;
  Real low_, high_;
};

template <class Real, std::int32_t Size = 1024>
class batch {
 public:
  static constexpr std::int32_t size = Size;

  batch(const vector_function& f, std::uint64_t seed) : function_(f) {
    std::mt19937_64 generate(seed);
    const sampler<Real> draw_first(find_domain(f.letter, f.stem, 0)),
        draw_second(find_domain(f.letter, f.stem, 1));
    const auto draw = [&](const sampler<Real>& one_part) {
      const double re = one_part(generate);
      if (!has_complex_argument()) return std::complex<double>(re, 0);
      if (generate() % 8 == 0) return near(std::polar(1.0, re), generate);  // near the unit circle
      return std::complex<double>(re, one_part(generate));
    };
    arguments scalars;
    scalars.b = exponent(generate, draw(draw_second));
    for (double* scalar : {&scalars.scalea, &scalars.shifta, &scalars.scaleb, &scalars.shiftb})
      *scalar = draw_second(generate);
    for (std::int32_t i = 0; i < size; ++i) {
      inputs_[i] = scalars;
      inputs_[i].a = draw(draw_first);
      if (f.shape != call_shape::scalar_exponent) inputs_[i].b = draw(draw_second);
      if (f.shape == call_shape::binary && f.is_complex() && generate() % 4 == 0)
        inputs_[i].b = cancelling(inputs_[i].a, generate);
      store(a_, i, inputs_[i].a, has_complex_argument());
      store(b_, i, inputs_[i].b, has_complex_argument());
    }
  }

  // Given arguments, as many as have room; the scalars of the first serve all.
  batch(const vector_function& f, std::span<const arguments> inputs)
      : function_(f), count_(static_cast<std::int32_t>(std::min<std::size_t>(inputs.size(), size))) {
    for (std::int32_t i = 0; i < count_; ++i) {
      inputs_[i] = inputs[static_cast<std::size_t>(i)];
      store(a_, i, inputs_[i].a, has_complex_argument());
      store(b_, i, inputs_[i].b, has_complex_argument());
    }
  }

  std::span<const arguments> inputs() const { return {inputs_, static_cast<std::size_t>(count_)}; }

  void run(VtmKernel kernel) {
    const arguments& x = inputs_[0];
    const auto real = [](double v) { return static_cast<Real>(v); };
    switch (function_.shape) {
      case call_shape::binary:
        return call(kernel, a_, b_, r_);
      case call_shape::two_results:
        return call(kernel, a_, r_, r_ + size);
      case call_shape::linear_fraction:
        return call(kernel, a_, b_, real(x.scalea), real(x.shifta), real(x.scaleb), real(x.shiftb), r_);
      case call_shape::scalar_exponent: {
        using complex = std::conditional_t<sizeof(Real) == sizeof(float), tmk_complex8, tmk_complex16>;
        if (function_.is_complex()) return call(kernel, a_, complex{real(x.b.real()), real(x.b.imag())}, r_);
        return call(kernel, a_, real(x.b.real()), r_);
      }
      default:
        return call(kernel, a_, r_);
    }
  }

  // The parts of the result as the oracle orders them.
  std::array<double, 2> result(std::int32_t i) const {
    if (function_.shape == call_shape::two_results) return {r_[i], r_[size + i]};
    if (function_.is_complex() && function_.shape != call_shape::real_result)
      return {r_[2 * i], r_[2 * i + 1]};
    return {r_[i], 0};
  }

 private:
  // Half of the batches take an exponent that calls for a kernel of its own.
  template <class Generator>
  static std::complex<double> exponent(Generator& generate, std::complex<double> drawn) {
    constexpr double special[] = {-1, -0.5, -1.0f / 3, 0.5, 2.0f / 3, 1.5, 2, 3};
    return generate() % 2 ? drawn : special[generate() % std::size(special)];
  }

  // Complex numbers at distances from z whose logarithms are drawn evenly, up to half the digits.
  template <class Generator>
  static std::complex<double> near(std::complex<double> z, Generator& generate) {
    const auto part = [&](double x) -> double {
      const auto distance = static_cast<bits_of<Real>>(
          generate() % ((std::uint64_t{1} << generate() % (std::numeric_limits<Real>::digits / 2)) + 1));
      return at_place<Real>(place_of(static_cast<Real>(x)) + (generate() % 2 ? distance : -distance));
    };
    return {part(z.real()), part(z.imag())};
  }

  // b near a multiple of a, its conjugate, i a or i conj(a): a part of the product or of the quotient nearly
  // vanishes.
  template <class Generator>
  static std::complex<double> cancelling(std::complex<double> a, Generator& generate) {
    const auto mirrored = generate() % 2 ? a : std::conj(a);
    const auto turned = generate() % 2 ? mirrored : std::complex<double>(-mirrored.imag(), mirrored.real());
    const double size = 1 + 0.125 * static_cast<double>(generate() % 8);
    return std::abs(a) > 0x1p100 || !(std::abs(a) > 0x1p-100) ? turned : near(size * turned, generate);
  }

  static void store(Real* array, std::int32_t i, std::complex<double> x, bool complex) {
    if (!complex) {
      array[i] = static_cast<Real>(x.real());
    } else {
      array[2 * i] = static_cast<Real>(x.real());
      array[2 * i + 1] = static_cast<Real>(x.imag());
    }
  }

  bool has_complex_argument() const {
    return function_.is_complex() && function_.shape != call_shape::real_argument;
  }

  template <class... Arguments>
  void call(VtmKernel kernel, Arguments... arguments) const {
    reinterpret_cast<void (*)(std::int32_t, Arguments...)>(kernel)(count_, arguments...);
  }

  const vector_function& function_;
  std::int32_t count_ = size;
  arguments inputs_[size];
  Real a_[2 * size], b_[2 * size], r_[2 * size];
};

}  // namespace tmk::accuracy
