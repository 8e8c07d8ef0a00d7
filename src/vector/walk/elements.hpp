// SPDX-License-Identifier: Apache-2.0
// Elements of arrays in registers. A real element is a lane of one register; a complex one is a lane of two,
// its real and its imaginary part, or, in formulas that treat both parts alike, two lanes of one. A pack
// holds what belongs to the one or two arrays that a function reads, or to those that it writes: their
// pointers, their registers, or their results.
#pragma once

#include <algorithm>
#include <cstdint>

#include "simd/batch.hpp"
#include "tmk/abi/vtm.h"

TMK_TIER_OPEN

template <class Real>
struct complex_value {
  batch<Real> re, im;
};

// Complex elements as memory has them: a real part, its imaginary part, and so on.
template <class Real>
struct parts_in_turn {
  batch<Real> parts;
};

// The scalar type of an element's parts, and its registers.
template <class Element>
struct element {
  using real = Element;
  using value = batch<Element>;
};
template <>
struct element<tmk_complex8> {
  using real = float;
  using value = complex_value<float>;
};
template <>
struct element<tmk_complex16> {
  using real = double;
  using value = complex_value<double>;
};

template <class First, class Second = void>
struct pack {
  static constexpr int size = 2;
  First first;
  Second second;
  const Second& last() const { return second; }

  // f(first, second)
  template <class F>
  decltype(auto) apply(const F& f) const {
    return f(first, second);
  }
  // The pack of f(first) and f(second).
  template <class F>
  auto map(const F& f) const {
    return pack<decltype(f(first)), decltype(f(second))>{f(first), f(second)};
  }
  // The same where f gives pointers into the pack.
  template <class F>
  auto places(const F& f) {
    return pack<decltype(f(first)), decltype(f(second))>{f(first), f(second)};
  }
  // f(first, other.first), f(second, other.second)
  template <class Other, class F>
  void zip(Other& other, const F& f) const {
    f(first, other.first);
    f(second, other.second);
  }
};

template <class Only>
struct pack<Only, void> {
  static constexpr int size = 1;
  Only first;
  const Only& last() const { return first; }

  template <class F>
  decltype(auto) apply(const F& f) const {
    return f(first);
  }
  template <class F>
  auto map(const F& f) const {
    return pack<decltype(f(first))>{f(first)};
  }
  template <class F>
  auto places(const F& f) {
    return pack<decltype(f(first))>{f(first)};
  }
  template <class Other, class F>
  void zip(Other& other, const F& f) const {
    f(first, other.first);
  }
};

template <class First>
pack(First) -> pack<First>;
template <class First, class Second>
pack(First, Second) -> pack<First, Second>;

// What a kernel's formula returned, as a pack.
template <class Value>
pack<Value> as_pack(const Value& y) {
  return {y};
}
template <class First, class Second>
pack<First, Second> as_pack(const pack<First, Second>& y) {
  return y;
}

// Loads and stores of complex elements, as of real ones in simd/batch.hpp.
template <class Element>
requires(!std::same_as<typename element<Element>::real, Element>) typename element<Element>::value
    load(const Element* p) {
  using real = typename element<Element>::real;
  const auto [re, im] = load_deinterleaved(reinterpret_cast<const real*>(p));
  return {re, im};
}

template <class Element, class Real>
void store(Element* p, const complex_value<Real>& x) {
  store_interleaved(reinterpret_cast<Real*>(p), x.re, x.im);
}

template <class Element, class Real>
void stream(Element* p, const complex_value<Real>& x) {
  Real* parts = reinterpret_cast<Real*>(p);
  const auto [first, second] = interleave(x.re, x.im);
  stream(parts, first);
  stream(parts + lanes<Real>, second);
}

template <class Element, class Real>
requires(!std::same_as<Element, Real>) typename element<Element>::value
    load_partial(const Element* p, int count, Real filler) {
  const Real* parts = reinterpret_cast<const Real*>(p);
  const int first = std::min(2 * count, lanes<Real>);
  const auto [re, im] = deinterleave(load_partial(parts, first, filler),
                                     load_partial(parts + first, 2 * count - first, filler));
  return {re, im};
}

template <class Element, class Real>
void store_partial(Element* p, int count, const complex_value<Real>& x) {
  Real* parts = reinterpret_cast<Real*>(p);
  const int first = std::min(2 * count, lanes<Real>);
  const auto [low, high] = interleave(x.re, x.im);
  store_partial(parts, first, low);
  store_partial(parts + first, 2 * count - first, high);
}

// The same for parts that stay in turn.
template <class Element>
auto load_in_turn(const Element* p) {
  using real = typename element<Element>::real;
  return parts_in_turn<real>{load(reinterpret_cast<const real*>(p))};
}
template <class Element, class Real>
parts_in_turn<Real> load_in_turn_partial(const Element* p, int count, Real filler) {
  return {load_partial(reinterpret_cast<const Real*>(p), 2 * count, filler)};
}
template <class Element, class Real>
void store(Element* p, const parts_in_turn<Real>& x) {
  store(reinterpret_cast<Real*>(p), x.parts);
}
template <class Element, class Real>
void stream(Element* p, const parts_in_turn<Real>& x) {
  stream(reinterpret_cast<Real*>(p), x.parts);
}
template <class Element, class Real>
void store_partial(Element* p, int count, const parts_in_turn<Real>& x) {
  store_partial(reinterpret_cast<Real*>(p), 2 * count, x.parts);
}

// The elements of one value in memory.
template <class Element>
struct spilled {
  alignas(64) Element at[lanes<typename element<Element>::real>];
};
inline spilled<float> spill(const f32& x) {
  spilled<float> s;
  x.store_aligned(s.at);
  return s;
}
inline spilled<double> spill(const f64& x) {
  spilled<double> s;
  x.store_aligned(s.at);
  return s;
}
inline spilled<tmk_complex8> spill(const complex_value<float>& x) {
  spilled<tmk_complex8> s;
  store(s.at, x);
  return s;
}
inline spilled<tmk_complex16> spill(const complex_value<double>& x) {
  spilled<tmk_complex16> s;
  store(s.at, x);
  return s;
}
inline spilled<tmk_complex8> spill(const parts_in_turn<float>& x) {
  spilled<tmk_complex8> s;
  store(s.at, x);
  return s;
}
inline spilled<tmk_complex16> spill(const parts_in_turn<double>& x) {
  spilled<tmk_complex16> s;
  store(s.at, x);
  return s;
}

TMK_TIER_CLOSE
