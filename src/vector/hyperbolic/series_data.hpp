// Made by tools/tables/vector/hyperbolic/series.sollya.
#pragma once

namespace tmk::hyperbolic_data {

// Coefficients in r^2, for HA with |r| <= log(2) / 16, below that with |r| <= log(2) / 2.
template <class Real>
struct series;

template <>
struct series<float> {
  static constexpr float log2_high = 0x1.62ep-1f;
  static constexpr float log2_low = 0x1.0bfbe8p-15f;
  // Relative error 2^-38.7.
  static constexpr float ha_odd[] = {
      0x1.555556p-3f, 0x1.10fa9cp-7f};
  // Relative error 2^-39.9.
  static constexpr float ha_even[] = {
      0x1p-1f, 0x1.555a44p-5f};
  // Relative error 2^-26.2.
  static constexpr float la_odd[] = {
      0x1.5554bp-3f, 0x1.1227bap-7f};
  // Relative error 2^-33.2.
  static constexpr float la_even[] = {
      0x1p-1f, 0x1.5554e4p-5f, 0x1.6d5164p-10f};
  // Relative error 2^-15.6.
  static constexpr float ep_odd[] = {
      0x1.570952p-3f};
  // Relative error 2^-13.3.
  static constexpr float ep_even[] = {
      0x1.021fb4p-1f};
  // Relative error 2^-26.1.
  static constexpr float la_growth[] = {
      0x1.fffffep-2f, 0x1.5554bp-3f, 0x1.555718p-5f, 0x1.1227b8p-7f,
      0x1.6b7186p-10f};
};

template <>
struct series<double> {
  static constexpr double log2_high = 0x1.62e42fefa4p-1;
  static constexpr double log2_low = -0x1.8432a1b0e2634p-43;
  // Relative error 2^-61.5.
  static constexpr double ha_odd[] = {
      0x1.55555555555cep-3, 0x1.1111110b1cc8bp-7, 0x1.a01f58bf36194p-13};
  // Relative error 2^-58.3.
  static constexpr double ha_even[] = {
      0x1.000000000011p-1, 0x1.55555547ecc41p-5, 0x1.6c1cc3f099784p-10};
  // Relative error 2^-61.7.
  static constexpr double la_odd[] = {
      0x1.5555555555559p-3, 0x1.111111110f648p-7, 0x1.a01a01b00c235p-13, 0x1.71ddf7f2ac06ep-19,
      0x1.af5f687dce93bp-26};
  // Relative error 2^-58.
  static constexpr double la_even[] = {
      0x1.000000000000cp-1, 0x1.555555554fe11p-5, 0x1.6c16c18605aebp-10, 0x1.a01995b91168cp-16,
      0x1.28b0fde2f2b71p-22};
  // Relative error 2^-37.5.
  static constexpr double ep_odd[] = {
      0x1.555555738690dp-3, 0x1.1110b1b40979bp-7, 0x1.a17022c9ca078p-13};
  // Relative error 2^-34.3.
  static constexpr double ep_even[] = {
      0x1.0000004340c6ep-1, 0x1.55547fde8f8e2p-5, 0x1.6d96e26d6b182p-10};
  // Relative error 2^-55.5.
  static constexpr double la_growth[] = {
      0x1.0000000000005p-1, 0x1.555555555553ap-3, 0x1.55555555520e6p-5, 0x1.1111111118c58p-7,
      0x1.6c16c17f3dea1p-10, 0x1.a01a01768dc58p-13, 0x1.a019a66a94e89p-16, 0x1.71de840549c1ap-19,
      0x1.28a2cd8f9a0aep-22, 0x1.ae730e824cf46p-26};
};

}  // namespace tmk::hyperbolic_data
