// Made by tools/tables/vector/logarithm/wide.sollya.
#pragma once

namespace tmk::wide_log_data {

constexpr float float_reciprocal[] = {
    0x1.6p0,
    0x1.2p0,
    0x1p0,
    0x1.ap-1,
};
constexpr float float_ln_high[] = {
    -0x1.4618p-2,
    -0x1.e27p-4,
    0,
    0x1.a94p-3,
};
constexpr float float_ln_low[] = {
    -0x1.78438cp-19,
    -0x1.db8abcp-22,
    0,
    -0x1.2c3752p-19,
};
constexpr float float_ln_two[] = {
    0x1.62e4p-1,
    0x1.7f7d1cp-20,
};
constexpr float float_ln_scale[] = {
    0x1p0,
    0,
};
// Relative error of the polynomial: 2^-32.015625.
constexpr float float_ln_ha[] = {
    0x1.555556p-2,
    -0x1.000002p-2,
    0x1.9991eep-3,
    -0x1.554bf8p-3,
    0x1.29e2f6p-3,
    -0x1.053f5cp-3,
};
// Relative error of the polynomial: 2^-28.65625.
constexpr float float_ln_la[] = {
    -0x1p-1,
    0x1.555556p-2,
    -0x1.fff8ep-3,
    0x1.9991e8p-3,
    -0x1.5b02bep-3,
    0x1.29e4aap-3,
};
// Relative error of the polynomial: 2^-11.95703125.
constexpr float float_ln_ep[] = {
    -0x1.0101aap-1,
    0x1.5736fp-2,
};
constexpr float float_log2_high[] = {
    -0x1.d674p-2,
    -0x1.5cp-3,
    0,
    0x1.32cp-2,
};
constexpr float float_log2_low[] = {
    -0x1.3e032ep-18,
    -0x1.a39fbep-19,
    0,
    -0x1.1c8f12p-22,
};
constexpr float float_log2_two[] = {
    0x1p0,
    0,
};
constexpr float float_log2_scale[] = {
    0x1.715476p0,
    0x1.4ae0cp-26,
};
// Relative error of the polynomial: 2^-32.328125.
constexpr float float_log2_ha[] = {
    0x1.ec70ap-2,
    -0x1.71547ap-2,
    0x1.276ff6p-2,
    -0x1.ec6116p-3,
    0x1.ae452ep-3,
    -0x1.79579p-3,
};
// Relative error of the polynomial: 2^-29.3671875.
constexpr float float_log2_la[] = {
    -0x1.715478p-1,
    0x1.ec70a4p-2,
    -0x1.714bf6p-2,
    0x1.276c2p-2,
    -0x1.f5fa14p-3,
    0x1.afc6cep-3,
};
// Relative error of the polynomial: 2^-11.95703125.
constexpr float float_log2_ep[] = {
    -0x1.72c83p-1,
    0x1.ef2768p-2,
};
constexpr float float_log10_high[] = {
    -0x1.1b4p-3,
    -0x1.a3p-5,
    0,
    0x1.716p-4,
};
constexpr float float_log10_low[] = {
    0x1.8e136cp-19,
    -0x1.53ac14p-18,
    0,
    -0x1.798e4cp-19,
};
constexpr float float_log10_two[] = {
    0x1.344p-2,
    0x1.3509f8p-18,
};
constexpr float float_log10_scale[] = {
    0x1.bcb7b2p-2,
    -0x1.5b235ep-27,
};
// Relative error of the polynomial: 2^-32.546875.
constexpr float float_log10_ha[] = {
    0x1.287a78p-3,
    -0x1.bcb7b6p-4,
    0x1.63bd12p-4,
    -0x1.2870a4p-4,
    0x1.0339e4p-4,
    -0x1.c6975ep-5,
};
// Relative error of the polynomial: 2^-28.875.
constexpr float float_log10_la[] = {
    -0x1.bcb7b2p-3,
    0x1.287a78p-3,
    -0x1.bcb024p-4,
    0x1.63bd2ep-4,
    -0x1.2daedap-4,
    0x1.0331dep-4,
};
// Relative error of the polynomial: 2^-11.95703125.
constexpr float float_log10_ep[] = {
    -0x1.be774cp-3,
    0x1.2a1cc6p-3,
};
constexpr double double_reciprocal[] = {
    0x1.6p0,
    0x1.2p0,
    0x1p0,
    0x1.ap-1,
};
constexpr double double_ln_high[] = {
    -0x1.4618cp-2,
    -0x1.e27p-4,
    0,
    0x1.a93fp-3,
};
constexpr double double_ln_low[] = {
    0x1.ef1d09ec17a42p-25,
    -0x1.db8abcb97a7aap-22,
    0,
    -0x1.61ba930e486a1p-22,
};
constexpr double double_ln_two[] = {
    0x1.62e42fefa38p-1,
    0x1.ef35793c7673p-45,
};
constexpr double double_ln_scale[] = {
    0x1p0,
    0,
};
// Relative error of the polynomial: 2^-60.8125.
constexpr double double_ln_ha[] = {
    0x1.5555555555555p-2,
    -0x1.fffffffffff93p-3,
    0x1.9999999999d97p-3,
    -0x1.5555555584fa7p-3,
    0x1.249249243942bp-3,
    -0x1.ffffff41b8605p-4,
    0x1.c71c71f0a738bp-4,
    -0x1.999a3c4685b26p-4,
    0x1.745d576a01c36p-4,
    -0x1.5511db4b6d0cbp-4,
    0x1.3ae57d28d5089p-4,
    -0x1.31f162334a512p-4,
    0x1.1c5a3ed501375p-4,
};
// Relative error of the polynomial: 2^-53.71875.
constexpr double double_ln_la[] = {
    -0x1.ffffffffffff6p-2,
    0x1.555555555553p-2,
    -0x1.000000000ae06p-2,
    0x1.99999999bf795p-3,
    -0x1.5555551668a0ap-3,
    0x1.249248d130feep-3,
    -0x1.000042c2dc15dp-3,
    0x1.c71d0a9d41eb4p-4,
    -0x1.99599909c97adp-4,
    0x1.741a4a43f9b46p-4,
    -0x1.636b8b460accap-4,
    0x1.48de5363c1daap-4,
};
// Relative error of the polynomial: 2^-28.9375.
constexpr double double_ln_ep[] = {
    -0x1.00000082b8304p-1,
    0x1.55555761dc31cp-2,
    -0x1.fff6d38341e73p-3,
    0x1.998f28f6a13e5p-3,
    -0x1.5b6bcb22f87bp-3,
    0x1.2a70e45067c0cp-3,
};
constexpr double double_log2_high[] = {
    -0x1.d6754p-2,
    -0x1.5c018p-3,
    0,
    0x1.32cp-2,
};
constexpr double double_log2_low[] = {
    0x1.fcd15f101c142p-26,
    -0x1.1cfdeb43cfdp-22,
    0,
    -0x1.1c8f11979a5dbp-22,
};
constexpr double double_log2_two[] = {
    0x1p0,
    0,
};
constexpr double double_log2_scale[] = {
    0x1.71547652b82fep0,
    0x1.777d0ffda0d24p-56,
};
// Relative error of the polynomial: 2^-60.828125.
constexpr double double_log2_ha[] = {
    0x1.ec709dc3a03fdp-2,
    -0x1.71547652b82afp-2,
    0x1.2776c50ef9eb1p-2,
    -0x1.ec709dc3e530bp-3,
    0x1.a61762a739348p-3,
    -0x1.715475c93a82bp-3,
    0x1.484b13eb94a43p-3,
    -0x1.27773a854c831p-3,
    0x1.0c9ab71f38328p-3,
    -0x1.ec0f3702ae4afp-4,
    0x1.c64af7e6bf906p-4,
    -0x1.b96305948cce7p-4,
    0x1.9a5dc89d3ee27p-4,
};
// Relative error of the polynomial: 2^-53.71875.
constexpr double double_log2_la[] = {
    -0x1.71547652b82f7p-1,
    0x1.ec709dc3a03c7p-2,
    -0x1.71547652c7cd6p-2,
    0x1.2776c50f152b8p-2,
    -0x1.ec709d690ef9bp-3,
    0x1.a617622f35d85p-3,
    -0x1.7154d6845a41ep-3,
    0x1.484b8228d32a7p-3,
    -0x1.2748a1ea8ed34p-3,
    0x1.0c6a51c84986p-3,
    -0x1.0060ed9037959p-3,
    0x1.da7559f77f87ep-4,
};
// Relative error of the polynomial: 2^-28.9375.
constexpr double double_log2_ep[] = {
    -0x1.7154770f4ece4p-1,
    0x1.ec70a0b85bb22p-2,
    -0x1.714dd83f660d1p-2,
    0x1.276f3d28a17bdp-2,
    -0x1.f538ffbffac77p-3,
    0x1.ae8f30133d246p-3,
};
constexpr double double_log10_high[] = {
    -0x1.1b3e8p-3,
    -0x1.a30ap-5,
    0,
    0x1.715dp-4,
};
constexpr double double_log10_low[] = {
    0x1.c26d610a8889ap-24,
    -0x1.3ac13dfd38503p-22,
    0,
    0x1.9c6cf5f75b3ep-25,
};
constexpr double double_log10_two[] = {
    0x1.34413509f8p-2,
    -0x1.80433b83b532ap-44,
};
constexpr double double_log10_scale[] = {
    0x1.bcb7b1526e50ep-2,
    0x1.95355baaafad3p-57,
};
// Relative error of the polynomial: 2^-60.921875.
constexpr double double_log10_ha[] = {
    0x1.287a7636f435fp-3,
    -0x1.bcb7b1526e4afp-4,
    0x1.63c6277524d6ep-4,
    -0x1.287a76371db58p-4,
    0x1.fc3fa6162e57fp-5,
    -0x1.bcb7b0ace4cc6p-5,
    0x1.8b4df19e23bedp-5,
    -0x1.63c6b4e318201p-5,
    0x1.436f27a4aa654p-5,
    -0x1.283fd28572961p-5,
    0x1.116479361929bp-5,
    -0x1.09bdbce1d7c4bp-5,
    0x1.f2d208cb31ddcp-6,
};
// Relative error of the polynomial: 2^-53.703125.
constexpr double double_log10_la[] = {
    -0x1.bcb7b1526e506p-3,
    0x1.287a7636f433fp-3,
    -0x1.bcb7b15280e7bp-4,
    0x1.63c62775458ddp-4,
    -0x1.287a7600b9df1p-4,
    0x1.fc3fa585544b2p-5,
    -0x1.bcb824cf108c5p-5,
    0x1.8b4e7711997d4p-5,
    -0x1.638eaf5512f25p-5,
    0x1.43347570fa2a9p-5,
    -0x1.34b3ed7d98fc7p-5,
    0x1.1da313eed4c5dp-5,
};
// Relative error of the polynomial: 2^-28.9375.
constexpr double double_log10_ep[] = {
    -0x1.bcb7b2358390cp-3,
    0x1.287a77fe8d58ep-3,
    -0x1.bcafb973ad967p-4,
    0x1.63bd1608f1eadp-4,
    -0x1.2dc41f821e123p-4,
    0x1.0338f8b362c52p-4,
};

}  // namespace tmk::wide_log_data
