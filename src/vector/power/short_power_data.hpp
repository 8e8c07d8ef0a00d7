// Made by tools/tables/vector/power/short_power.sollya.
#pragma once

namespace tmk::short_power_data {

// 16 cells from the number below; |f| <= 3.001e-2.
constexpr double few_lower_end = 0x1.6555555555555p-1;
constexpr double few_reciprocal[] = {
    0x1.66cp0,
    0x1.57cp0,
    0x1.4ap0,
    0x1.3dp0,
    0x1.314p0,
    0x1.264p0,
    0x1.1cp0,
    0x1.128p0,
    0x1.09cp0,
    0x1p0,
    0x1.e68p-1,
    0x1.cb8p-1,
    0x1.b3p-1,
    0x1.9dp-1,
    0x1.89p-1,
    0x1.77p-1,
};
constexpr double few_logarithm[] = {
    -0x1.f284e140a49dp-2,
    -0x1.b36bcc39a3cbp-2,
    -0x1.771d2ba7efb3cp-2,
    -0x1.3bbd3a0a1dcfbp-2,
    -0x1.03f09858c55fbp-2,
    -0x1.9b70ba539dfaep-3,
    -0x1.32ae9e278ae1ap-3,
    -0x1.9c501cdf75872p-4,
    -0x1.b9c2c532b0a91p-5,
    0x0p0,
    0x1.2de4403ffd4b3p-4,
    0x1.3fa651e276158p-3,
    0x1.e18b00e13123dp-3,
    0x1.3d712bf9c9defp-2,
    0x1.86c5f36dea3dcp-2,
    0x1.cc0908e19b7bdp-2,
};
// Relative error 2^-38.2.
constexpr double few_log2_series[] = {
    0x1.71547652bd5d7p0,
    -0x1.71547652d4abdp-1,
    0x1.ec709772afd36p-2,
    -0x1.71546e29dd9efp-2,
    0x1.27bfcf6ccc78ap-2,
    -0x1.ed02b65b9581p-3,
};

// 128 cells from the number below; |f| <= 4.31e-3.
constexpr double many_lower_end = 0x1.68aaaaaaaaaabp-1;
struct alignas(16) log2_row {
  double reciprocal, logarithm;
};
constexpr log2_row many_rows[] = {
    {0x1.6a8p0, -0x1.00f0cdb224e65p-1},
    {0x1.688p0, -0x1.f9b53e2dc34c4p-2},
    {0x1.668p0, -0x1.f17d3d01407afp-2},
    {0x1.648p0, -0x1.e939768714a32p-2},
    {0x1.628p0, -0x1.e0e9c8d782cbdp-2},
    {0x1.60cp0, -0x1.d99a321c8611ap-2},
    {0x1.5ecp0, -0x1.d133d582c6025p-2},
    {0x1.5dp0, -0x1.c9d02f6ca47b4p-2},
    {0x1.5bp0, -0x1.c152a6c24cae6p-2},
    {0x1.594p0, -0x1.b9da820a5cdafp-2},
    {0x1.578p0, -0x1.b258a5ca28608p-2},
    {0x1.55cp0, -0x1.aaccf8987c9afp-2},
    {0x1.53cp0, -0x1.a221310a5206ap-2},
    {0x1.52p0, -0x1.9a802391e232fp-2},
    {0x1.504p0, -0x1.92d4f2b51f21ap-2},
    {0x1.4ecp0, -0x1.8c3a104cb24f5p-2},
    {0x1.4dp0, -0x1.847bc33d8618ep-2},
    {0x1.4b4p0, -0x1.7cb30443645bep-2},
    {0x1.498p0, -0x1.74dfb70a66388p-2},
    {0x1.48p0, -0x1.6e221cd9d0cdep-2},
    {0x1.464p0, -0x1.663ae87756c83p-2},
    {0x1.44cp0, -0x1.5f6c138136489p-2},
    {0x1.43p0, -0x1.577091b3378cbp-2},
    {0x1.418p0, -0x1.509028ff8e0a2p-2},
    {0x1.4p0, -0x1.49a784bcd1b8bp-2},
    {0x1.3e8p0, -0x1.42b6911cf5465p-2},
    {0x1.3ccp0, -0x1.3a92d95242102p-2},
    {0x1.3b4p0, -0x1.338f9f1f84ae5p-2},
    {0x1.39cp0, -0x1.2c83d4f8407ebp-2},
    {0x1.384p0, -0x1.256f65da15a61p-2},
    {0x1.36cp0, -0x1.1e523c74f1a4dp-2},
    {0x1.358p0, -0x1.185ddfa1a7edp-2},
    {0x1.34p0, -0x1.11307dad30b76p-2},
    {0x1.328p0, -0x1.09fa235ba202p-2},
    {0x1.31p0, -0x1.02baba24d0664p-2},
    {0x1.2fcp0, -0x1.f9532288fcf69p-3},
    {0x1.2e4p0, -0x1.eab2a23a5b83ep-3},
    {0x1.2ccp0, -0x1.dbff80c90499ap-3},
    {0x1.2b8p0, -0x1.cfb1321b8c4p-3},
    {0x1.2ap0, -0x1.c0db6cdd94deep-3},
    {0x1.28cp0, -0x1.b46ffc300341bp-3},
    {0x1.278p0, -0x1.a7f71fb7bab9dp-3},
    {0x1.26p0, -0x1.98edd077e70dfp-3},
    {0x1.24cp0, -0x1.8c5706326506ap-3},
    {0x1.238p0, -0x1.7fb27199df16dp-3},
    {0x1.224p0, -0x1.72fff456ac70dp-3},
    {0x1.21p0, -0x1.663f6fac91316p-3},
    {0x1.1fcp0, -0x1.5970c478fff4ap-3},
    {0x1.1e8p0, -0x1.4c93d33151b24p-3},
    {0x1.1d4p0, -0x1.3fa87be0f3a1bp-3},
    {0x1.1cp0, -0x1.32ae9e278ae1ap-3},
    {0x1.1acp0, -0x1.25a619370d9dcp-3},
    {0x1.198p0, -0x1.188ecbd1d16bep-3},
    {0x1.184p0, -0x1.0b6894488e95fp-3},
    {0x1.17p0, -0x1.fc66a0f0b00a5p-4},
    {0x1.16p0, -0x1.e72ec117fa5b2p-4},
    {0x1.14cp0, -0x1.cc8d5e467b71p-4},
    {0x1.138p0, -0x1.b1cd1ecae66e7p-4},
    {0x1.128p0, -0x1.9c501cdf75872p-4},
    {0x1.114p0, -0x1.81579a73e83c6p-4},
    {0x1.1p0, -0x1.663f6fac91316p-4},
    {0x1.0fp0, -0x1.507b836033bb7p-4},
    {0x1.0ep0, -0x1.3aa2fdd27f1c3p-4},
    {0x1.0ccp0, -0x1.1f3723b4ae6dbp-4},
    {0x1.0bcp0, -0x1.092fb594145c1p-4},
    {0x1.0a8p0, -0x1.db1175160f3bp-5},
    {0x1.098p0, -0x1.aea3316095f72p-5},
    {0x1.088p0, -0x1.820a01ac754cbp-5},
    {0x1.074p0, -0x1.4a0dab45740fap-5},
    {0x1.064p0, -0x1.1d12b6c687ec6p-5},
    {0x1.054p0, -0x1.dfd78881399f1p-6},
    {0x1.044p0, -0x1.8530faa3c087bp-6},
    {0x1.034p0, -0x1.2a3115322f9e6p-6},
    {0x1.024p0, -0x1.9dae4ec6b8b2ep-7},
    {0x1.014p0, -0x1.cc89f97d67594p-8},
    {0x1p0, 0x0p0},
    {0x1.fc8p-1, 0x1.4445f7cbc8fd2p-7},
    {0x1.f9p-1, 0x1.4564a62192834p-6},
    {0x1.f5p-1, 0x1.00ae7f502c1c4p-5},
    {0x1.f1p-1, 0x1.5f6b8a11c3c61p-5},
    {0x1.ed8p-1, 0x1.b2f19cdaa46dcp-5},
    {0x1.e98p-1, 0x1.09905f797047cp-4},
    {0x1.e6p-1, 0x1.33f7cde14cf5ap-4},
    {0x1.e28p-1, 0x1.5eadb217198a3p-4},
    {0x1.dfp-1, 0x1.89b33091d6fe8p-4},
    {0x1.db8p-1, 0x1.b5097437cb58ep-4},
    {0x1.d8p-1, 0x1.e0b1ae8f2fd56p-4},
    {0x1.d48p-1, 0x1.06568bf8576b3p-3},
    {0x1.d18p-1, 0x1.195195c7d125bp-3},
    {0x1.cep-1, 0x1.2f9e32d5bfdd1p-3},
    {0x1.cbp-1, 0x1.42ddd2ba1b4a9p-3},
    {0x1.c78p-1, 0x1.597b967789d12p-3},
    {0x1.c48p-1, 0x1.6d01c335dc9b5p-3},
    {0x1.c18p-1, 0x1.80a92f5218accp-3},
    {0x1.be8p-1, 0x1.94724cca657bep-3},
    {0x1.bb8p-1, 0x1.a85d8feb202f7p-3},
    {0x1.b88p-1, 0x1.bc6b6f5ee1c9bp-3},
    {0x1.b58p-1, 0x1.d09c643f117fp-3},
    {0x1.b28p-1, 0x1.e4f0ea2509008p-3},
    {0x1.af8p-1, 0x1.f9697f3bd0ccfp-3},
    {0x1.adp-1, 0x1.054a474bf0eb7p-2},
    {0x1.aap-1, 0x1.0fa848044b351p-2},
    {0x1.a78p-1, 0x1.185a444fa0a7bp-2},
    {0x1.a48p-1, 0x1.22dadc2ab3497p-2},
    {0x1.a2p-1, 0x1.2baa0c34be1ecp-2},
    {0x1.9fp-1, 0x1.364e2511cc821p-2},
    {0x1.9c8p-1, 0x1.3f3b4f9b3e939p-2},
    {0x1.9ap-1, 0x1.48365e695d797p-2},
    {0x1.978p-1, 0x1.513f7cfcb68cep-2},
    {0x1.95p-1, 0x1.5a56d7a370dedp-2},
    {0x1.928p-1, 0x1.637c9b7e64dc2p-2},
    {0x1.9p-1, 0x1.6cb0f6865c8eap-2},
    {0x1.8d8p-1, 0x1.75f417917e02cp-2},
    {0x1.8bp-1, 0x1.7f462e58e1688p-2},
    {0x1.89p-1, 0x1.86c5f36dea3dcp-2},
    {0x1.868p-1, 0x1.903372e90bee4p-2},
    {0x1.84p-1, 0x1.99b072a96c6b2p-2},
    {0x1.82p-1, 0x1.a152f142981b4p-2},
    {0x1.7f8p-1, 0x1.aaec59dadadbep-2},
    {0x1.7d8p-1, 0x1.b2a5d6f51ff83p-2},
    {0x1.7bp-1, 0x1.bc5c5489254ccp-2},
    {0x1.79p-1, 0x1.c42d5c4c688b4p-2},
    {0x1.77p-1, 0x1.cc0908e19b7bdp-2},
    {0x1.748p-1, 0x1.d5eac4d463d7ep-2},
    {0x1.728p-1, 0x1.dddecf870c4c1p-2},
    {0x1.708p-1, 0x1.e5dddf7e46e0ap-2},
    {0x1.6e8p-1, 0x1.ede8136f4cbf1p-2},
    {0x1.6c8p-1, 0x1.f5fd8a9063e35p-2},
};
// Relative error 2^-36.8.
constexpr double many_log2_series[] = {
    0x1.71547652aa86fp0,
    -0x1.715476528619bp-1,
    0x1.ec720524ea635p-2,
    -0x1.7155ddb43486ep-2,
};

// Steps of 1 / 8.
// Relative error 2^-33.5.
constexpr double exp2_series_8[] = {
    0x1.62e42fb9b551p-1,
    0x1.ebfbe06a27451p-3,
    0x1.c6be27d71e741p-5,
    0x1.3b26b96985314p-7,
};

// Steps of 1 / 16.
// Relative error 2^-29.2.
constexpr double exp2_series_16[] = {
    0x1.62e43001bc49fp-1,
    0x1.ebfff4532d9d7p-3,
    0x1.c6ac6aa3135cap-5,
};

// Steps of 1 / 128.
// Relative error 2^-30.2.
constexpr double exp2_series_128[] = {
    0x1.62e4453e11037p-1,
    0x1.ebfbdff30dd5cp-3,
};

// 2^(j/16).
constexpr double sixteenth_powers[] = {
    0x1p0,
    0x1.0b5586cf9890fp0,
    0x1.172b83c7d517bp0,
    0x1.2387a6e756238p0,
    0x1.306fe0a31b715p0,
    0x1.3dea64c123422p0,
    0x1.4bfdad5362a27p0,
    0x1.5ab07dd485429p0,
    0x1.6a09e667f3bcdp0,
    0x1.7a11473eb0187p0,
    0x1.8ace5422aa0dbp0,
    0x1.9c49182a3f09p0,
    0x1.ae89f995ad3adp0,
    0x1.c199bdd85529cp0,
    0x1.d5818dcfba487p0,
    0x1.ea4afa2a490dap0,
};

// 8 cells from the number below; |f| <= 5.701e-2.
constexpr float single_lower_end = 0x1.6aaaaap-1f;
constexpr float single_reciprocal[] = {
    0x1.5a4p0f,
    0x1.3f4p0f,
    0x1.28p0f,
    0x1.144p0f,
    0x1p0f,
    0x1.cf8p-1f,
    0x1.a08p-1f,
    0x1.7ap-1f,
};
constexpr float single_logarithm[] = {
    -0x1.be2058p-2f,
    -0x1.463016p-2f,
    -0x1.acf5e2p-3f,
    -0x1.c1ddcap-4f,
    0x0p0f,
    0x1.260a6p-3f,
    0x1.30f9a4p-2f,
    0x1.c04386p-2f,
};
// Relative error 2^-21.8.
constexpr float single_log2_series[] = {
    0x1.71547p0f,
    -0x1.71545ep-1f,
    0x1.ed6668p-2f,
    -0x1.724d2ep-2f,
};

// Steps of 1.
// Relative error 2^-13.3.
constexpr float single_exp2_series[] = {
    0x1.62f5fap-1f,
    0x1.f00c4cp-3f,
    0x1.c2a254p-5f,
};

}  // namespace tmk::short_power_data
