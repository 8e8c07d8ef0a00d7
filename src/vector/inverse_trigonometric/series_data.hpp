// Made by tools/tables/vector/inverse_trigonometric/series.sollya.
#pragma once

#include "platform/tier.hpp"

TMK_TIER_OPEN
namespace {

enum class angle_unit { radians, half_turns, ln10_radians };

// The unit and the right angle as sums of two numbers; with the first words of arctan(k/8) and a few
// multiples of the right angle, sums are exact. unit_below t < unit arctan(t) for 0 < t <= 0.079.
template <class Real, angle_unit Unit>
struct angles;

// Coefficients of p by use, lowest first.
template <class Real, angle_unit Unit>
struct arcsine_series;
template <class Real, angle_unit Unit>
struct arctangent_series;

template <>
struct angles<float, angle_unit::radians> {
  static constexpr float unit = 0x1p0f;
  static constexpr float unit_low = 0x0p0f;
  static constexpr float unit_below = 0x1.feef54p-1f;
  static constexpr float unit_rest = 0x1.10acp-9f;
  static constexpr float right = 0x1.921fb6p0f;
  static constexpr float right_high = 0x1.921fb4p0f;
  static constexpr float right_low = 0x1.4442d2p-24f;
  // arctan(k/8), and two sums for it.
  static constexpr float arctan[] = {
      0x0p0f, 0x1.fd5baap-4f, 0x1.f5b76p-3f, 0x1.6f6194p-2f,
      0x1.dac67p-2f, 0x1.1e00bap-1f, 0x1.4978fap-1f, 0x1.700a7cp-1f};
  static constexpr float arctan_error[] = {
      0x0p0f, -0x1.54f424p-30f, -0x1.b4dfc8p-29f, 0x1.e4defp-30f,
      0x1.586ed4p-28f, 0x1.7bdfd6p-26f, 0x1.934f7p-28f, 0x1.5e118cp-27f};
  static constexpr float arctan_high[] = {
      0x0p0f, 0x1.fd5bcp-4f, 0x1.f5b76p-3f, 0x1.6f619p-2f,
      0x1.dac67p-2f, 0x1.1e00b8p-1f, 0x1.4978f8p-1f, 0x1.700a8p-1f};
  static constexpr float arctan_low[] = {
      0x0p0f, -0x1.6553dp-24f, -0x1.b4dfc8p-29f, 0x1.07937cp-24f,
      0x1.586ed4p-28f, 0x1.5ef7f6p-24f, 0x1.1934f8p-24f, -0x1.d43dcep-24f};
};
template <>
struct arcsine_series<float, angle_unit::radians> {
  // Relative error 2^-31.7.
  static constexpr float ha[] = {
      0x1.55554cp-3f, 0x1.33389ep-4f, 0x1.6caab6p-5f, 0x1.04af34p-5f,
      0x1.d7924cp-7f, 0x1.33d432p-5f};
  // Relative error 2^-27.6.
  static constexpr float la[] = {
      0x1.5555c8p-3f, 0x1.330206p-4f, 0x1.747b72p-5f, 0x1.8c415ap-6f,
      0x1.5959aap-5f};
  // Relative error 2^-14.7.
  static constexpr float ep[] = {
      0x1.5209cep-3f, 0x1.823f5p-4f};
};
template <>
struct arctangent_series<float, angle_unit::radians> {
  // Relative error 2^-29.5.
  static constexpr float ha[] = {
      -0x1.5554b6p-2f, 0x1.9712d4p-3f};
  // Relative error 2^-19.5.
  static constexpr float ep[] = {
      -0x1.544752p-2f};
  // The same for |t| <= 1.
  // Relative error 2^-25.8.
  static constexpr float whole_la[] = {
      -0x1.5554dcp-2f, 0x1.9978eep-3f, -0x1.230abp-3f, 0x1.b4dfdcp-4f,
      -0x1.3553f4p-4f, 0x1.61f756p-5f, -0x1.0c23fep-6f, 0x1.7ec1c4p-9f};
  // arctan(t) = t p(z), |t| <= 1. Relative error 2^-15.
  static constexpr float whole_ep[] = {
      0x1.fffc12p-1f, -0x1.53a956p-2f, 0x1.7b5204p-3f, -0x1.78871ep-4f,
      0x1.86f8d6p-6f};
};

template <>
struct angles<float, angle_unit::half_turns> {
  static constexpr float unit = 0x1.45f306p-2f;
  static constexpr float unit_low = 0x1.b9391p-27f;
  static constexpr float unit_below = 0x1.45457p-2f;
  static constexpr float unit_rest = 0x1.5b2dbap-11f;
  static constexpr float right = 0x1p-1f;
  static constexpr float right_high = 0x1p-1f;
  static constexpr float right_low = 0x0p0f;
  // arctan(k/8), and two sums for it.
  static constexpr float arctan[] = {
      0x0p0f, 0x1.444476p-5f, 0x1.3f670cp-4f, 0x1.d3c3a4p-4f,
      0x1.2e4052p-3f, 0x1.6c267p-3f, 0x1.a37f5cp-3f, 0x1.d49ab4p-3f};
  static constexpr float arctan_error[] = {
      0x0p0f, -0x1.f11132p-30f, -0x1.284718p-29f, 0x1.05e756p-29f,
      -0x1.31067cp-30f, -0x1.22407cp-28f, 0x1.31067cp-29f, -0x1.4dd392p-29f};
  static constexpr float arctan_high[] = {
      0x0p0f, 0x1.44448p-5f, 0x1.3f67p-4f, 0x1.d3c3cp-4f,
      0x1.2e406p-3f, 0x1.6c266p-3f, 0x1.a37f6p-3f, 0x1.d49acp-3f};
  static constexpr float arctan_low[] = {
      0x0p0f, -0x1.5f1114p-26f, 0x1.6d7b8ep-25f, -0x1.b7d0c6p-24f,
      -0x1.c4c41ap-24f, 0x1.eddbf8p-24f, -0x1.d9df3p-26f, -0x1.8a6e9cp-24f};
};
template <>
struct arcsine_series<float, angle_unit::half_turns> {
  // Relative error 2^-31.7.
  static constexpr float ha[] = {
      0x1.b29954p-5f, 0x1.872a08p-6f, 0x1.d05edp-7f, 0x1.4b767p-7f,
      0x1.2f42f4p-8f, 0x1.85fd46p-7f};
  // Relative error 2^-27.6.
  static constexpr float la[] = {
      0x1.b299f2p-5f, 0x1.86e4a2p-6f, 0x1.da4aa4p-7f, 0x1.f83e04p-8f,
      0x1.b7ef3ep-7f};
  // Relative error 2^-14.7.
  static constexpr float ep[] = {
      0x1.ae675ap-5f, 0x1.ebc914p-6f};
};
template <>
struct arctangent_series<float, angle_unit::half_turns> {
  // Relative error 2^-29.5.
  static constexpr float ha[] = {
      -0x1.b29894p-4f, 0x1.0326f4p-4f};
  // Relative error 2^-19.5.
  static constexpr float ep[] = {
      -0x1.b14192p-4f};
  // arctan(t) = t p(z), |t| <= 1. Relative error 2^-15.
  static constexpr float whole_ep[] = {
      0x1.45f086p-2f, -0x1.b07856p-4f, 0x1.e2f692p-5f, -0x1.df6742p-6f,
      0x1.f1ca04p-8f};
};

template <>
struct angles<float, angle_unit::ln10_radians> {
  static constexpr float unit = 0x1.bcb7b2p-2f;
  static constexpr float unit_low = -0x1.5b235ep-27f;
  static constexpr float unit_below = 0x1.bbcadap-2f;
  static constexpr float unit_rest = 0x1.d9aea4p-11f;
  static constexpr float right = 0x1.5d47c4p-1f;
  static constexpr float right_high = 0x1.5d47c8p-1f;
  static constexpr float right_low = -0x1.9a6822p-24f;
  // arctan(k/8), and two sums for it.
  static constexpr float arctan[] = {
      0x0p0f, 0x1.ba6c3cp-5f, 0x1.b3c906p-4f, 0x1.3f1a6ep-3f,
      0x1.9c626cp-3f, 0x1.f0d67cp-3f, 0x1.1e2d1ep-2f, 0x1.3fad24p-2f};
  static constexpr float arctan_error[] = {
      0x0p0f, -0x1.94a682p-32f, -0x1.458a2ep-30f, -0x1.e1cc32p-28f,
      -0x1.d11a46p-30f, 0x1.0304f4p-28f, -0x1.7bea1ap-29f, -0x1.eb91e8p-27f};
  static constexpr float arctan_high[] = {
      0x0p0f, 0x1.ba6cp-5f, 0x1.b3c9p-4f, 0x1.3f1a6p-3f,
      0x1.9c626p-3f, 0x1.f0d68p-3f, 0x1.1e2d2p-2f, 0x1.3fad2p-2f};
  static constexpr float arctan_low[] = {
      0x0p0f, 0x1.de6b5ap-24f, 0x1.6ba75ep-26f, 0x1.a1e33cp-24f,
      0x1.78bb96p-24f, -0x1.bf3ec2p-26f, -0x1.17bea2p-25f, 0x1.851b86p-25f};
};
template <>
struct arctangent_series<float, angle_unit::ln10_radians> {
  // Relative error 2^-29.5.
  static constexpr float ha[] = {
      -0x1.2879ecp-3f, 0x1.6194a2p-4f};
  // Relative error 2^-19.5.
  static constexpr float ep[] = {
      -0x1.278feep-3f};
  // arctan(t) = t p(z), |t| <= 1. Relative error 2^-15.
  static constexpr float whole_ep[] = {
      0x1.bcb448p-2f, -0x1.2706c2p-3f, 0x1.497992p-4f, -0x1.470d34p-5f,
      0x1.5399b8p-7f};
};

template <>
struct angles<double, angle_unit::radians> {
  static constexpr double unit = 0x1p0;
  static constexpr double unit_low = 0x0p0;
  static constexpr double unit_below = 0x1.feef5398bcb33p-1;
  static constexpr double unit_rest = 0x1.10ac67434cdp-9;
  static constexpr double right = 0x1.921fb54442d18p0;
  static constexpr double right_high = 0x1.921fb54442d18p0;
  static constexpr double right_low = 0x1.1a62633145c07p-54;
  // arctan(k/8), and two sums for it.
  static constexpr double arctan[] = {
      0x0p0, 0x1.fd5ba9aac2f6ep-4, 0x1.f5b75f92c80ddp-3, 0x1.6f61941e4def1p-2,
      0x1.dac670561bb4fp-2, 0x1.1e00babdefeb4p-1, 0x1.4978fa3269ee1p-1, 0x1.700a7c5784634p-1};
  static constexpr double arctan_error[] = {
      0x0p0, -0x1.cd37686760c17p-59, 0x1.8ab6e3cf7afbdp-57, -0x1.c63aae6f6e918p-56,
      0x1.a2b7f222f65e2p-56, -0x1.928df287a668fp-58, 0x1.2419a87f2a458p-56, -0x1.8c34d25aadef6p-56};
  static constexpr double arctan_high[] = {
      0x0p0, 0x1.fd5ba9aac2f6p-4, 0x1.f5b75f92c80ep-3, 0x1.6f61941e4defp-2,
      0x1.dac670561bb5p-2, 0x1.1e00babdefeb4p-1, 0x1.4978fa3269eep-1, 0x1.700a7c5784634p-1};
  static constexpr double arctan_low[] = {
      0x0p0, 0x1.b8cb225e627dp-53, -0x1.4ea9238610a08p-54, 0x1.1ce2a8c848b74p-55,
      -0x1.2ea406ee84d0fp-55, -0x1.928df287a668fp-58, 0x1.2483350fe548bp-53, -0x1.8c34d25aadef6p-56};
};
template <>
struct arcsine_series<double, angle_unit::radians> {
  // Relative error 2^-59.9.
  static constexpr double ha[] = {
      0x1.5555555555577p-3, 0x1.333333332e133p-4, 0x1.6db6db721247bp-5, 0x1.f1c71a95002fbp-6,
      0x1.6e8bdedebf9dfp-6, 0x1.1c49f077d5bc9p-6, 0x1.ca1f8af1f098dp-7, 0x1.75859dad06999p-7,
      0x1.613c1e6ecfe5ep-7, 0x1.e5fbe88ea2a8fp-9, 0x1.639a894ddcd96p-6, -0x1.57fad0de2d51bp-6,
      0x1.0b45e9f6fe1ddp-5};
  // Relative error 2^-55.9.
  static constexpr double la[] = {
      0x1.555555555539p-3, 0x1.333333336e80fp-4, 0x1.6db6db427a4f8p-5, 0x1.f1c72c38fb342p-6,
      0x1.6e89f440197a7p-6, 0x1.1c6be1a687736p-6, 0x1.c6fdc1aaa53bbp-7, 0x1.8ec2fca603cdcp-7,
      0x1.abcf5cd7caf27p-8, 0x1.3ff4a990abe65p-6, -0x1.09d3283392f12p-6, 0x1.056d6c8133f47p-5};
  // Relative error 2^-27.6.
  static constexpr double ep[] = {
      0x1.5555c88342cbp-3, 0x1.3301e4681bb6ap-4, 0x1.747e4a38c1a3p-5, 0x1.8c283c04a0393p-6,
      0x1.596d28a9d0fafp-5};
};
template <>
struct arctangent_series<double, angle_unit::radians> {
  // Relative error 2^-58.5.
  static constexpr double ha[] = {
      -0x1.5555555555417p-2, 0x1.9999999838639p-3, -0x1.2492452a02104p-3, 0x1.c7126c477cf5ep-4,
      -0x1.6e9ff82a6c7dbp-4};
  // Relative error 2^-29.5.
  static constexpr double ep[] = {
      -0x1.5554b5a4f5e22p-2, 0x1.971251ade231ep-3};
};

template <>
struct angles<double, angle_unit::half_turns> {
  static constexpr double unit = 0x1.45f306dc9c883p-2;
  static constexpr double unit_low = -0x1.6b01ec5417056p-56;
  static constexpr double unit_below = 0x1.45456fff95cadp-2;
  static constexpr double unit_rest = 0x1.5b2dba0d7ab4ap-11;
  static constexpr double right = 0x1p-1;
  static constexpr double right_high = 0x1p-1;
  static constexpr double right_low = 0x0p0;
  // arctan(k/8), and two sums for it.
  static constexpr double arctan[] = {
      0x0p0, 0x1.4444750777668p-5, 0x1.3f670b6bdc73dp-4, 0x1.d3c3a482f3ab5p-4,
      0x1.2e4051d9df308p-3, 0x1.6c266f6edfc1ep-3, 0x1.a37f5c4c419efp-3, 0x1.d49ab3ac8b1bbp-3};
  static constexpr double arctan_error[] = {
      0x0p0, 0x1.b7f9255cb1f1ep-59, 0x1.bbe87e7941244p-60, -0x1.16f02508c9309p-60,
      0x1.995a23db6b8d4p-57, 0x1.f0066ff5b8be7p-58, 0x1.9a97709251caep-58, 0x1.41af9789432fbp-57};
  static constexpr double arctan_high[] = {
      0x0p0, 0x1.444475077768p-5, 0x1.3f670b6bdc74p-4, 0x1.d3c3a482f3acp-4,
      0x1.2e4051d9df31p-3, 0x1.6c266f6edfc2p-3, 0x1.a37f5c4c419fp-3, 0x1.d49ab3ac8b1cp-3};
  static constexpr double arctan_low[] = {
      0x0p0, -0x1.79201b6a8d384p-53, -0x1.7220bc0c35f6ep-55, -0x1.622de04a11926p-53,
      -0x1.e66a5dc249473p-53, -0x1.c1ff320148e83p-55, -0x1.995a23db6b8d4p-56, -0x1.2be506876bcdp-53};
};
template <>
struct arcsine_series<double, angle_unit::half_turns> {
  // Relative error 2^-59.8.
  static constexpr double ha[] = {
      0x1.b2995e7b7b62fp-5, 0x1.8723a1d5820d6p-6, 0x1.d1a452f799d7bp-7, 0x1.3ce52908fe72ep-7,
      0x1.d2b38ad426abbp-8, 0x1.69f7bb4c0f7fdp-8, 0x1.23a6ae625e017p-8, 0x1.db921c1a04a1bp-9,
      0x1.c1d0f6cafa4a8p-9, 0x1.34ef1a17190c9p-10, 0x1.c50796ac80adbp-8, -0x1.b651f9eaf927p-8,
      0x1.5468647e8b244p-7};
  // Relative error 2^-55.9.
  static constexpr double la[] = {
      0x1.b2995e7b7b3c3p-5, 0x1.8723a1d5d4169p-6, 0x1.d1a452bafeff5p-7, 0x1.3ce534446c317p-7,
      0x1.d2b11a076af3dp-8, 0x1.6a22f52e4740ap-8, 0x1.21a81fb088cc9p-8, 0x1.fbb71f0b60b25p-9,
      0x1.105e17a16a40cp-9, 0x1.975c5ec5dd45cp-8, -0x1.526e17afe337dp-8, 0x1.4cd9b999c0e47p-7};
  // Relative error 2^-27.6.
  static constexpr double ep[] = {
      0x1.b299f12221855p-5, 0x1.86e4d9fe96b5ep-6, 0x1.da45f216779b4p-7, 0x1.f86729012f1f2p-8,
      0x1.b7cf807f6aa02p-7};
};
template <>
struct arctangent_series<double, angle_unit::half_turns> {
  // Relative error 2^-58.5.
  static constexpr double ha[] = {
      -0x1.b2995e7b7b46ep-4, 0x1.04c26be2cf7f9p-4, -0x1.7483707d51885p-5, 0x1.21b532ecd759cp-5,
      -0x1.d2cd0f5eaddf1p-6};
  // Relative error 2^-29.5.
  static constexpr double ep[] = {
      -0x1.b2989328f980ap-4, 0x1.0326597f41666p-4};
};

template <>
struct angles<double, angle_unit::ln10_radians> {
  static constexpr double unit = 0x1.bcb7b1526e50ep-2;
  static constexpr double unit_low = 0x1.95355baaafad3p-57;
  static constexpr double unit_below = 0x1.bbcad9fcd38bbp-2;
  static constexpr double unit_rest = 0x1.d9aeab358a665p-11;
  static constexpr double right = 0x1.5d47c4cb2fba1p-1;
  static constexpr double right_high = 0x1.5d47c4cb2fbap-1;
  static constexpr double right_low = 0x1.61dae462401cdp-54;
  // arctan(k/8), and two sums for it.
  static constexpr double arctan[] = {
      0x0p0, 0x1.ba6c3bcd6b2fap-5, 0x1.b3c905ae9d74bp-4, 0x1.3f1a6d0f19e76p-3,
      0x1.9c626bc5dcb74p-3, 0x1.f0d67c81827a5p-3, 0x1.1e2d1dd082bcep-2, 0x1.3fad230a370c7p-2};
  static constexpr double arctan_error[] = {
      0x0p0, 0x1.bfe7d16f7042dp-62, 0x1.87f7b804a3c3ep-58, -0x1.de9d37b25cfa1p-57,
      -0x1.3725a8fb00034p-57, 0x1.31e69d511c11p-57, -0x1.416ec57bff897p-56, 0x1.36fa6d2fc01fep-58};
  static constexpr double arctan_high[] = {
      0x0p0, 0x1.ba6c3bcd6b3p-5, 0x1.b3c905ae9d74p-4, 0x1.3f1a6d0f19e7p-3,
      0x1.9c626bc5dcb7p-3, 0x1.f0d67c81827ap-3, 0x1.1e2d1dd082bdp-2, 0x1.3fad230a370c8p-2};
  static constexpr double arctan_low[] = {
      0x0p0, -0x1.7c80305d211f8p-55, 0x1.6c3fbdc0251e2p-53, 0x1.62162c84da306p-53,
      0x1.d91b4ae09fff9p-54, 0x1.531e69d511c11p-53, -0x1.282dd8af7ff13p-53, -0x1.d920b25a07fcp-55};
};
template <>
struct arctangent_series<double, angle_unit::ln10_radians> {
  // Relative error 2^-58.5.
  static constexpr double ha[] = {
      -0x1.287a7636f424ap-3, 0x1.63c62773f2128p-4, -0x1.fc3f9f2b05a53p-5, 0x1.8b453e2b6e5dfp-5,
      -0x1.3e72288daa091p-5};
  // Relative error 2^-29.5.
  static constexpr double ep[] = {
      -0x1.2879eb82b697cp-3, 0x1.6193eedc5ab9bp-4};
};

}  // namespace
TMK_TIER_CLOSE
