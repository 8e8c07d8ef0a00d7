// Made by tools/tables/vector/trigonometric/trigonometric.sollya.
#pragma once

namespace tmk::trigonometric_data {

// pi in parts: whole ones for fused products, and such whose products with a number of steps are exact.
constexpr double double_pi[] = {0x1.921fb54442d18p1, 0x1.1a62633145c07p-53, -0x1.f1976b7ed8fbcp-109};
constexpr double double_pi_exact[] = {0x1.921fb548p1, -0x1.de973dc8p-30, -0x1.9d9cceb8p-61, -0x1.1fc8f8cbb5bf7p-92};
constexpr float float_pi[] = {0x1.921fb6p1f, -0x1.777a5cp-24f, -0x1.ee59dap-49f};
constexpr float float_pi_exact[] = {0x1.92p1f, 0x1.fb4p-11f, 0x1.444p-23f, 0x1.68c234p-38f};
constexpr double double_degree[] = {0x1.1df46a2529d39p-6, 0x1.5c1d8becdd291p-62};
constexpr float float_degree[] = {0x1.1df46ap-6f, 0x1.294e9cp-33f};

// Of the angles j pi/8 + offset: sine, cosine, offset.
constexpr double double_point_sine[] = {0x0p0, 0x1.87de2a6aeaed7p-2, 0x1.6a09e6b8d3bcdp-1, 0x1.d906bcf328c25p-1, 0x1p0, 0x1.d906bcf328c25p-1, 0x1.6a09e6b8d3bcdp-1, 0x1.87de2a6aeaed7p-2};
constexpr double double_point_cosine[] = {0x1p0, 0x1.d906bcf328c25p-1, 0x1.6a09e61713bcbp-1, 0x1.87de2a6aeaed7p-2, 0x0p0, -0x1.87de2a6aeaed7p-2, -0x1.6a09e61713bcbp-1, -0x1.d906bcf328c25p-1};
constexpr double double_point_offset[] = {0x0p0, 0x1.79cdca8e65514p-44, 0x1.c97f8302dde8ap-27, -0x1.79cdca8e65514p-44, 0x0p0, 0x1.79cdca8e65514p-44, -0x1.c97f8302dde8ap-27, -0x1.79cdca8e65514p-44};
constexpr float float_point_sine[] = {0x0p0f, 0x1.87e0b6p-2f, 0x1.6a7d46p-1f, 0x1.d90636p-1f, 0x1p0f, 0x1.d90636p-1f, 0x1.6a7d46p-1f, 0x1.87e0b6p-2f};
constexpr float float_point_cosine[] = {0x1p0f, 0x1.d90636p-1f, 0x1.699662p-1f, 0x1.87e0b6p-2f, 0x0p0f, -0x1.87e0b6p-2f, -0x1.699662p-1f, -0x1.d90636p-1f};
constexpr float float_point_offset[] = {0x0p0f, 0x1.60a276p-17f, 0x1.46875cp-10f, -0x1.60a276p-17f, 0x0p0f, 0x1.60a276p-17f, -0x1.46875cp-10f, -0x1.60a276p-17f};

// Up to pi/16.
// Relative error 2^-65.9.
constexpr double point_sine_double[] = {-0x1.5555555555555p-3, 0x1.1111111110cc3p-7, -0x1.a01a019b5de1ep-13, 0x1.71de16a41470ap-19, -0x1.ad8826c51710bp-26};
// Relative error 2^-66.8.
constexpr double point_cosine_double[] = {-0x1p-1, 0x1.55555555554e1p-5, -0x1.6c16c16b75288p-10, 0x1.a019f7ec9c146p-16, -0x1.27a69dfa709aep-22};
// Relative error 2^-31.
constexpr double point_sine_double_ep[] = {-0x1.5555432ecbd1ap-3, 0x1.10b4ec984aeefp-7};
// Relative error 2^-28.1.
constexpr double point_cosine_double_ep[] = {-0x1.ffffc05130029p-2, 0x1.54b3f36862db4p-5};
// Relative error 2^-30.9.
constexpr float point_sine_single[] = {-0x1.555544p-3f, 0x1.10b664p-7f};
// Relative error 2^-39.3.
constexpr float point_cosine_single[] = {-0x1p-1f, 0x1.555548p-5f, -0x1.6bab9ap-10f};
// Relative error 2^-18.8.
constexpr float point_sine_single_ep[] = {-0x1.54c57p-3f};
// Relative error 2^-16.4.
constexpr float point_cosine_single_ep[] = {-0x1.fe97fap-2f};

// Up to pi/2.
// Relative error 2^-35.
constexpr double line_single_ha[] = {-0x1.5555554503758p-3, 0x1.11110ba53711dp-7, -0x1.a017a30ea5b85p-13, 0x1.71696e16d84afp-19, -0x1.99c7de182dda7p-26};
// Relative error 2^-61.1.
constexpr double line_double_la[] = {-0x1.5555555555555p-3, 0x1.11111111110c2p-7, -0x1.a01a01a0144fcp-13, 0x1.71de3a5258fbap-19, -0x1.ae6454af7ccd3p-26, 0x1.6123c2f159b55p-33, -0x1.ae40bb5e32de9p-41, 0x1.87e4248ff6d67p-49};
// Relative error 2^-27.1.
constexpr double line_double_ep[] = {-0x1.55554a7c3b69ap-3, 0x1.110e9a8b708e1p-7, -0x1.9f650476b97e8p-13, 0x1.5d1c2e693b136p-19};
// Relative error 2^-27.
constexpr float line_single_la[] = {-0x1.55554ap-3f, 0x1.110e8cp-7f, -0x1.9f62e8p-13f, 0x1.5d0362p-19f};
// Relative error 2^-12.7.
constexpr float line_single_ep[] = {-0x1.54292ap-3f, 0x1.f463d8p-8f};

// 2^(16 i + first_exponent - 52) / pi mod 2 in four parts, row i for arguments from 2^(16 i + first_exponent) on.
constexpr int first_exponent = 11;
alignas(32) constexpr double inverse_pi_rows[64][4] = {
    {0x1.45f306dc9c883p-43, -0x1.6b01ec5417056p-97, -0x1.6447e493ad4cep-151, 0x1.e21c820ff28b2p-205},
    {0x1.45f306dc9c883p-27, -0x1.6b01ec5417056p-81, -0x1.6447e493ad4cep-135, 0x1.e21c820ff28b2p-189},
    {0x1.45f306dc9c883p-11, -0x1.6b01ec5417056p-65, -0x1.6447e493ad4cep-119, 0x1.e21c820ff28b2p-173},
    {0x1.7cc1b727220a9p-1, 0x1.3f84eafa3ea6ap-55, -0x1.11f924eb53362p-109, 0x1.0e4107f9458ebp-164},
    {0x1.b727220a94fe1p-1, 0x1.d5f47d4d37703p-56, 0x1.b6295993c439p-110, 0x1.07f9458eaf7afp-164},
    {-0x1.bbead603d8a83p-2, 0x1.f534ddc0db629p-58, 0x1.664f10e4107f9p-112, 0x1.163abdebbc562p-166},
    {-0x1.6b01ec5417056p-1, -0x1.6447e493ad4cep-55, 0x1.e21c820ff28b2p-109, -0x1.508510ea79237p-164},
    {-0x1.ec54170565912p-1, 0x1.b6c52b3278872p-59, 0x1.07f9458eaf7afp-116, -0x1.d4f246dc8e2dfp-173},
    {-0x1.70565911f924fp-5, 0x1.2b3278872084p-59, -0x1.ae9c5421443aap-114, 0x1.b7246e3a424ddp-170},
    {-0x1.65911f924eb53p-1, -0x1.b0ef1bef806bap-56, -0x1.c5421443a9e49p-110, 0x1.2371d2126e97p-165},
    {-0x1.1f924eb53361ep-1, 0x1.c820ff28b1d5fp-57, -0x1.443a9e48db91cp-114, -0x1.6f6c8b47fe6dbp-168},
    {0x1.b14acc9e21c82p-1, 0x1.fe5163abdebbcp-58, 0x1.586dc91b8e909p-112, 0x1.ba5c00c925dd4p-167},
    {-0x1.3361de37df00dp-1, -0x1.d38a84288753dp-55, 0x1.b92371d2126e9p-109, 0x1.c00c925dd413ap-163},
    {-0x1.de37df00d74e3p-1, 0x1.7bd778ac36e49p-55, -0x1.1c5bdb22d1ffap-110, 0x1.24bba82746487p-164},
    {0x1.07f9458eaf7afp-4, -0x1.d4f246dc8e2dfp-61, 0x1.374b801924bbbp-116, -0x1.f62e6de301e21p-170},
    {-0x1.ae9c5421443aap-2, 0x1.b7246e3a424ddp-58, 0x1.700324977504fp-113, -0x1.cdbc603c429c7p-167},
    {0x1.d5ef5de2b0db9p-1, 0x1.1b8e909374b8p-56, 0x1.924bba8274648p-112, 0x1.cfe1deb1cb12ap-166},
    {-0x1.443a9e48db91cp-2, -0x1.6f6c8b47fe6dbp-56, -0x1.115f62e6de302p-110, 0x1.deb1cb129a73fp-166},
    {-0x1.4f246dc8e2deep-1, 0x1.ba5c00c925dd4p-55, 0x1.3a32439fc3bd6p-111, 0x1.cb129a73ee882p-166},
    {-0x1.b7238b7b645a4p-3, 0x1.924bba8274648p-64, 0x1.cfe1deb1cb12ap-118, -0x1.63045df7282b4p-172},
    {-0x1.c5bdb22d1ff9bp-2, -0x1.b4457d8b9b78cp-56, -0x1.e214e34ed658cp-114, -0x1.177dca0ad144cp-170},
    {0x1.26e9700324977p-1, 0x1.413a32439fc3cp-55, -0x1.4e34ed658c117p-110, -0x1.f7282b4512edfp-164},
    {0x1.700324977504fp-1, -0x1.cdbc603c429c7p-55, 0x1.894d39f74411bp-109, -0x1.5a28976f62cc7p-167},
    {-0x1.b6d115f62e6dep-2, -0x1.80f10a71a76b3p-57, 0x1.cfba208d7d4bbp-112, -0x1.2edec598e3f65p-168},
    {-0x1.15f62e6de301ep-2, -0x1.0a71a76b2c609p-57, 0x1.1046bea5d7689p-111, 0x1.3a671c09ad17ep-168},
    {0x1.d1921cfe1deb2p-2, -0x1.a76b2c608bbeep-57, -0x1.415a28976f62dp-111, 0x1.c7026b45f7e41p-166},
    {0x1.0e7f0ef58e589p-1, 0x1.34e7dd1046beap-55, 0x1.75da24274ce38p-109, 0x1.35a2fbf209cc9p-165},
    {-0x1.e214e34ed658cp-2, -0x1.177dca0ad144cp-58, 0x1.213a671c09ad1p-112, 0x1.f7e413991d63ap-166},
    {0x1.8e5894d39f744p-1, 0x1.1afa975da2427p-57, 0x1.338e04d68befdp-111, -0x1.f633714e33e56p-165},
    {0x1.29a73ee88235fp-2, 0x1.4baed1213a672p-56, -0x1.fb29741037d8dp-111, 0x1.1d639835339f5p-166},
    {-0x1.822efb9415a29p-3, 0x1.a24274ce38136p-57, -0x1.741037d8cdc54p-111, 0x1.cc1a99cfa4e42p-165},
    {0x1.046bea5d76891p-3, -0x1.8b31c7eca5d04p-57, -0x1.bec66e29c67cbp-114, 0x1.9cfa4e422fc5ep-169},
    {-0x1.0568a25dbd8b3p-1, -0x1.c7eca5d040df6p-57, -0x1.9b8a719f2b318p-112, -0x1.6c6f740e8840ep-167},
    {-0x1.44bb7b16638fep-2, 0x1.ad17df904e647p-56, 0x1.639835339f49dp-110, -0x1.ee81d1081b5f1p-164},
    {-0x1.bd8b31c7eca5dp-1, -0x1.037d8cdc538dp-59, 0x1.a99cfa4e422fcp-113, 0x1.77bf250763ff1p-167},
    {0x1.9c7026b45f7e4p-2, 0x1.3991d63983534p-58, -0x1.82d8dee81d108p-112, -0x1.b5f13801da001p-168},
    {0x1.35a2fbf209cc9p-5, -0x1.4e33e566305b2p-61, 0x1.08bf177bf2507p-115, 0x1.8ffc4bffef02dp-169},
    {-0x1.d040df633714ep-1, -0x1.9f2b3182d8defp-56, 0x1.f8bbdf9283b2p-110, -0x1.da00087e99fcp-168},
    {-0x1.bec66e29c67cbp-2, 0x1.9cfa4e422fc5ep-57, -0x1.036be27003b4p-113, -0x1.0fd33f8086877p-173},
    {0x1.91d639835339fp-2, 0x1.272117e2ef7e5p-56, -0x1.7c4e007680022p-110, 0x1.6603fbcbc462dp-168},
    {-0x1.c67cacc60b638p-2, 0x1.17e2ef7e4a0ecp-56, 0x1.ff897ffde0598p-110, 0x1.fde5e2316b415p-167},
    {0x1.a99cfa4e422fcp-1, 0x1.77bf250763ff1p-55, 0x1.7ffde05980fefp-110, 0x1.788c5ad05369p-165},
    {0x1.f49c845f8bbep-2, -0x1.b5f13801da001p-56, 0x1.e05980fef2f12p-110, -0x1.d297d64b824b2p-164},
    {-0x1.bdd03a21036bep-1, -0x1.3801da00087eap-56, 0x1.80fef2f118b5ap-110, 0x1.4da3eda6cfd9ep-167},
    {-0x1.d1081b5f13802p-4, 0x1.2fffbc0b301fep-59, -0x1.a1dce94beb25cp-115, -0x1.25930261b069fp-171},
    {-0x1.036be27003b4p-1, -0x1.0fd33f8086877p-61, -0x1.d297d64b824b2p-116, -0x1.8130d834f648bp-170},
    {0x1.d8ffc4bffef03p-5, -0x1.9fc04343b9d29p-60, -0x1.f592e092c9813p-114, -0x1.b069ec9161738p-171},
    {-0x1.da00087e99fcp-8, -0x1.0d0ee74a5f593p-62, 0x1.f6d367ecf27cbp-118, 0x1.36e9e8c7ecd3dp-175},
    {-0x1.0fd33f8086877p-13, -0x1.d297d64b824b2p-68, -0x1.8130d834f648bp-122, -0x1.738132c3402bap-179},
    {-0x1.fa67f010d0ee7p-2, -0x1.297d64b824b26p-56, -0x1.30d834f648b0cp-114, 0x1.8fd9a797fa8b6p-168},
    {0x1.fde5e2316b415p-7, -0x1.2e092c98130d8p-62, -0x1.a7b24585ce04dp-117, 0x1.3cbfd45aea4f7p-171},
    {-0x1.a1dce94beb25cp-3, -0x1.25930261b069fp-59, 0x1.b74f463f669e6p-114, -0x1.5d28ad8453814p-174},
    {0x1.8b5a0a6d1f6d3p-2, 0x1.9fb3c9f2c26ddp-56, 0x1.e8c7ecd3cbfd4p-111, 0x1.6ba93dd63f5f3p-165},
    {0x1.05368fb69b3f6p-1, 0x1.e4f96136e9e8cp-55, 0x1.fb34f2ff516bbp-109, -0x1.b08a7028341d1p-163},
    {-0x1.704964c0986c2p-1, 0x1.6136e9e8c7ecdp-55, 0x1.e5fea2d7527bbp-110, -0x1.c0a0d0742617cp-165},
    {-0x1.64c0986c1a7b2p-1, -0x1.161738132c34p-55, -0x1.5d28ad8453814p-110, -0x1.a0e84c2f8c608p-166},
    {-0x1.30d834f648b0cp-2, 0x1.8fd9a797fa8b6p-56, -0x1.5b08a7028341dp-111, -0x1.30be31821d6b6p-168},
    {-0x1.a7b24585ce04dp-5, 0x1.3cbfd45aea4f7p-59, 0x1.63f5f2f8bd9e8p-113, 0x1.ce7de294a4baap-168},
    {0x1.b74f463f669e6p-2, -0x1.5d28ad8453814p-62, -0x1.a0e84c2f8c608p-118, -0x1.d6b5b45650128p-172},
    {-0x1.738132c3402bap-3, -0x1.456c229c0a0dp-57, -0x1.d0985f18c10ebp-111, -0x1.6b68aca025027p-165},
    {-0x1.32c3402ba515bp-3, -0x1.14e050683a131p-60, 0x1.0739f78a5292fp-114, -0x1.65012813b81cbp-168},
    {-0x1.a015d28ad8454p-2, 0x1.faf97c5ecf41dp-56, -0x1.821d6b5b4565p-112, -0x1.2813b81ca8bdfp-168},
    {0x1.16ba93dd63f5fp-1, 0x1.7c5ecf41ce7dep-56, 0x1.4a525d4d7f6bfp-111, 0x1.88fc6ae842b02p-165},
    {-0x1.6c229c0a0d074p-1, -0x1.30be31821d6b6p-56, 0x1.2ea6bfb5fb12p-110, -0x1.ca8bdea7f33eep-164},
};
// The same for singles: 2^(16 i + first_exponent - 23) / pi mod 2, products with 24 bits being exact.
constexpr double single_inverse_pi_0[] = {0x1.45f306ep-14, -0x1.d067c92p-1, 0x1.b72722p-4, 0x1.c882a54p-2, 0x1.529fc28p-1, -0x1.ec5417p-4, 0x1.7d1f534p-1, -0x1.596447ep-2};
constexpr double single_inverse_pi_1[] = {-0x1.b1bbeadp-45, 0x1.391054ap-31, 0x1.529fc27p-33, -0x1.ec5417p-36, -0x1.505c159p-30, -0x1.596447ep-34, 0x1.bb81b6cp-30, -0x1.24eb533p-32};
constexpr double single_inverse_pi_2[] = {-0x1.80f62a0b82b2dp-75, 0x1.fc2757d1f534ep-61, 0x1.5f47d4d377037p-63, -0x1.596447e493ad5p-66, -0x1.911f924eb5336p-60, -0x1.24eb53361de38p-64, 0x1.4acc9e21c821p-60, -0x1.8778df7c035d4p-62};

}  // namespace tmk::trigonometric_data
