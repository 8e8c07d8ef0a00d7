// Made by tools/tables/vector/exponential/wide.sollya.
#pragma once

#include "platform/tier.hpp"

TMK_TIER_OPEN
namespace {

enum class exp_base { e, two, ten };

// 2^(j/8) for j = 0..7, and what its rounding left, relative to it.
template <class Real>
struct eighth_powers;

// x = k step + r with k = x rate rounded; coefficients of q by use, lowest first.
template <class Real, exp_base Base>
struct exp_series;

template <>
struct eighth_powers<float> {
  static constexpr float value[] = {
      0x1p0f, 0x1.172b84p0f, 0x1.306fep0f, 0x1.4bfdaep0f,
      0x1.6a09e6p0f, 0x1.8ace54p0f, 0x1.ae89fap0f, 0x1.d5818ep0f};
  static constexpr float correction[] = {
      0x0p0f, -0x1.9c0c22p-27f, 0x1.125002p-25f, -0x1.0a355p-25f,
      0x1.26055cp-26f, 0x1.67a1cap-28f, -0x1.f9c304p-27f, -0x1.a5217cp-28f};
};

template <>
struct exp_series<float, exp_base::e> {
  static constexpr float rate = 0x1.715476p3f;
  static constexpr float step = 0x1.62e43p-4f;
  static constexpr float step_low = -0x1.05c61p-32f;
  static constexpr float slope = 0x1p0f;
  static constexpr float slope_low = 0x0p0f;
  // Relative error 2^-32.2.
  static constexpr float ha[] = {
      0x1.fffffap-2f, 0x1.555c7ap-3f, 0x1.55cb64p-5f};
  // Relative error 2^-35.
  static constexpr float minus_one[] = {
      0x1p-1f, 0x1.555556p-3f, 0x1.555a2p-5f, 0x1.10fa0ap-7f};
  // Relative error 2^-25.2.
  static constexpr float la[] = {
      0x1.000878p-1f, 0x1.55565cp-3f};
  // Relative error 2^-13.
  static constexpr float ep[] = {
      0x1.020588p-1f, 0x1.5540f4p-3f};
};

template <>
struct exp_series<float, exp_base::two> {
  static constexpr float rate = 0x1p3f;
  static constexpr float step = 0x1p-3f;
  static constexpr float step_low = 0x0p0f;
  static constexpr float slope = 0x1.62e43p-1f;
  static constexpr float slope_low = -0x1.05c61p-29f;
  // Relative error 2^-32.3.
  static constexpr float ha[] = {
      0x1.ebfbe4p-3f, 0x1.c6ba1p-5f, 0x1.3ae3bap-7f};
};

template <>
struct exp_series<float, exp_base::ten> {
  static constexpr float rate = 0x1.a934fp4f;
  static constexpr float step = 0x1.344136p-5f;
  static constexpr float step_low = -0x1.ec10cp-30f;
  static constexpr float slope = 0x1.26bb1cp1f;
  static constexpr float slope_low = -0x1.12aabap-25f;
  // Relative error 2^-32.4.
  static constexpr float ha[] = {
      0x1.53524cp1f, 0x1.0475ccp1f, 0x1.2be5c4p0f};
};

template <>
struct eighth_powers<double> {
  static constexpr double value[] = {
      0x1p0, 0x1.172b83c7d517bp0, 0x1.306fe0a31b715p0, 0x1.4bfdad5362a27p0,
      0x1.6a09e667f3bcdp0, 0x1.8ace5422aa0dbp0, 0x1.ae89f995ad3adp0, 0x1.d5818dcfba487p0};
  static constexpr double correction[] = {
      0x0p0, -0x1.01b15eaa59348p-55, 0x1.34d754db0abb6p-55, 0x1.690cebb7aafbp-56,
      -0x1.3b3efbf5e2228p-54, 0x1.db72fc1f0eab4p-55, 0x1.c1a7792cb3387p-55, 0x1.4a385a63d07a7p-56};
};

template <>
struct exp_series<double, exp_base::e> {
  static constexpr double rate = 0x1.71547652b82fep3;
  static constexpr double step = 0x1.62e42fefa39efp-4;
  static constexpr double step_low = 0x1.abc9e3b39803fp-59;
  static constexpr double slope = 0x1p0;
  static constexpr double slope_low = 0x0p0;
  // Relative error 2^-58.3.
  static constexpr double ha[] = {
      0x1.000000000010cp-1, 0x1.555555555512ap-3, 0x1.5555554803ecbp-5, 0x1.11111125f458p-7,
      0x1.6c1cbffe8b179p-10, 0x1.a01634f79d207p-13};
  // Relative error 2^-61.5.
  static constexpr double minus_one[] = {
      0x1p-1, 0x1.55555555555cep-3, 0x1.55555555554efp-5, 0x1.1111110b1cc99p-7,
      0x1.6c16c16e5591cp-10, 0x1.a01f58beb4952p-13, 0x1.a01bd8ac625b5p-16};
  // Relative error 2^-28.3.
  static constexpr double ep[] = {
      0x1.fffffb9471388p-2, 0x1.555490a4bf9cap-3, 0x1.5558f4b5f2a24p-5, 0x1.123a678e99168p-7,
      0x1.6a23584838568p-10};
};

template <>
struct exp_series<double, exp_base::two> {
  static constexpr double rate = 0x1p3;
  static constexpr double step = 0x1p-3;
  static constexpr double step_low = 0x0p0;
  static constexpr double slope = 0x1.62e42fefa39efp-1;
  static constexpr double slope_low = 0x1.abc9e3b39803fp-56;
  // Relative error 2^-58.3.
  static constexpr double ha[] = {
      0x1.ebfbdff82c792p-3, 0x1.c6b08d7049b34p-5, 0x1.3b2ab6ef5804ap-7, 0x1.5d87fe9356951p-10,
      0x1.430e64a61666fp-13, 0x1.ffc754156173dp-17};
};

template <>
struct exp_series<double, exp_base::ten> {
  static constexpr double rate = 0x1.a934f0979a371p4;
  static constexpr double step = 0x1.34413509f79ffp-5;
  static constexpr double step_low = -0x1.9dc1da994fd21p-62;
  static constexpr double slope = 0x1.26bb1bbb55516p1;
  static constexpr double slope_low = -0x1.f48ad494ea3e9p-53;
  // Relative error 2^-58.3.
  static constexpr double ha[] = {
      0x1.53524c73cebccp1, 0x1.0470591de2977p1, 0x1.2bd7609425a04p0, 0x1.1429ffe6ece7p-1,
      0x1.a7f46b849021p-3, 0x1.16e255a31fe4cp-4};
};

}  // namespace
TMK_TIER_CLOSE
