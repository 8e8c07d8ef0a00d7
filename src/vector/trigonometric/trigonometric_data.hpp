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
constexpr double line_double_la[] = {-0x1.5555555555555p-3, 0x1.11111111110c2p-7, -0x1.a01a01a0144fcp-13, 0x1.71de3a52596a2p-19, -0x1.ae6454af86001p-26, 0x1.6123c2f1939c3p-33, -0x1.ae40bb5f3ffbap-41, 0x1.87e4248985b38p-49};
// Relative error 2^-27.1.
constexpr double line_double_ep[] = {-0x1.55554a7c3b69ap-3, 0x1.110e9a8b708e1p-7, -0x1.9f650476b97e8p-13, 0x1.5d1c2e693b136p-19};
// Relative error 2^-27.
constexpr float line_single_la[] = {-0x1.55554ap-3f, 0x1.110e8cp-7f, -0x1.9f62e8p-13f, 0x1.5d0362p-19f};
// Relative error 2^-12.7.
constexpr float line_single_ep[] = {-0x1.54292ap-3f, 0x1.f463d8p-8f};

// 2^(16 i + first_exponent - 52) / pi mod 2 in four parts, row i for arguments from 2^(16 i + first_exponent) on.
constexpr int first_exponent = 12;
alignas(32) constexpr double inverse_pi_rows[64][4] = {
    {0x1.45f306dc9c883p-42, -0x1.6b01ec5417056p-96, -0x1.6447e493ad4cep-150, 0x1.e21c820ff28b2p-204},
    {0x1.45f306dc9c883p-26, -0x1.6b01ec5417056p-80, -0x1.6447e493ad4cep-134, 0x1.e21c820ff28b2p-188},
    {0x1.45f306dc9c883p-10, -0x1.6b01ec5417056p-64, -0x1.6447e493ad4cep-118, 0x1.e21c820ff28b2p-172},
    {-0x1.067c91b1bbeadp-1, -0x1.80f62a0b82b2dp-55, 0x1.dc0db6295993cp-109, 0x1.0e4107f9458ebp-163},
    {-0x1.236377d5ac07bp-2, -0x1.505c1596447e5p-58, 0x1.b14acc9e21c82p-112, 0x1.fe5163abdebbcp-169},
    {-0x1.bbead603d8a83p-1, 0x1.f534ddc0db629p-57, 0x1.664f10e4107f9p-111, 0x1.163abdebbc562p-165},
    {0x1.29fc2757d1f53p-1, 0x1.377036d8a5665p-55, -0x1.de37df00d74e3p-112, 0x1.7bd778ac36e49p-166},
    {0x1.3abe8fa9a6eep-4, 0x1.b6c52b3278872p-58, 0x1.07f9458eaf7afp-115, -0x1.d4f246dc8e2dfp-172},
    {-0x1.70565911f924fp-4, 0x1.2b3278872084p-58, -0x1.ae9c5421443aap-113, 0x1.b7246e3a424ddp-169},
    {0x1.34ddc0db6295ap-1, -0x1.b0ef1bef806bap-55, -0x1.c5421443a9e49p-109, 0x1.2371d2126e97p-164},
    {0x1.c0db6295993c4p-1, 0x1.c820ff28b1d5fp-56, -0x1.443a9e48db91cp-113, -0x1.6f6c8b47fe6dbp-167},
    {-0x1.3ad4cd8778df8p-2, 0x1.fe5163abdebbcp-57, 0x1.586dc91b8e909p-111, 0x1.ba5c00c925dd4p-166},
    {0x1.993c439041fe5p-1, 0x1.63abdebbc561bp-57, 0x1.c91b8e909374cp-111, -0x1.ff9b6d115f62ep-165},
    {0x1.0e4107f9458ebp-3, -0x1.0a21d4f246dc9p-60, 0x1.d2126e9700325p-116, -0x1.a22bec5cdbc6p-170},
    {0x1.07f9458eaf7afp-3, -0x1.d4f246dc8e2dfp-60, 0x1.374b801924bbbp-115, -0x1.f62e6de301e21p-169},
    {-0x1.ae9c5421443aap-1, 0x1.b7246e3a424ddp-57, 0x1.700324977504fp-112, -0x1.cdbc603c429c7p-166},
    {-0x1.508510ea79237p-3, 0x1.b8e909374b802p-59, -0x1.b6d115f62e6dep-113, -0x1.80f10a71a76b3p-168},
    {-0x1.443a9e48db91cp-1, -0x1.6f6c8b47fe6dbp-55, -0x1.115f62e6de302p-109, 0x1.deb1cb129a73fp-165},
    {0x1.61b7246e3a425p-1, -0x1.168ffcdb688bp-56, 0x1.3a32439fc3bd6p-110, 0x1.cb129a73ee882p-165},
    {-0x1.b7238b7b645a4p-2, 0x1.924bba8274648p-63, 0x1.cfe1deb1cb12ap-117, -0x1.63045df7282b4p-171},
    {-0x1.c5bdb22d1ff9bp-1, -0x1.b4457d8b9b78cp-55, -0x1.e214e34ed658cp-113, -0x1.177dca0ad144cp-169},
    {-0x1.b22d1ff9b6d11p-1, -0x1.7d8b9b78c0788p-55, -0x1.4e34ed658c117p-109, -0x1.f7282b4512edfp-163},
    {-0x1.1ff9b6d115f63p-1, 0x1.921cfe1deb1cbp-57, 0x1.29a73ee88235fp-113, 0x1.4baed1213a672p-167},
    {-0x1.b6d115f62e6dep-1, -0x1.80f10a71a76b3p-56, 0x1.cfba208d7d4bbp-111, -0x1.2edec598e3f65p-167},
    {-0x1.15f62e6de301ep-1, -0x1.0a71a76b2c609p-56, 0x1.1046bea5d7689p-110, 0x1.3a671c09ad17ep-167},
    {0x1.d1921cfe1deb2p-1, -0x1.a76b2c608bbeep-56, -0x1.415a28976f62dp-110, 0x1.c7026b45f7e41p-165},
    {-0x1.e301e214e34edp-1, -0x1.963045df7282bp-55, -0x1.144bb7b16639p-109, 0x1.35a2fbf209cc9p-164},
    {-0x1.e214e34ed658cp-1, -0x1.177dca0ad144cp-57, 0x1.213a671c09ad1p-111, 0x1.f7e413991d63ap-165},
    {-0x1.c69dacb1822fp-2, 0x1.1afa975da2427p-56, 0x1.338e04d68befdp-110, -0x1.f633714e33e56p-164},
    {0x1.29a73ee88235fp-1, 0x1.4baed1213a672p-55, -0x1.fb29741037d8dp-110, 0x1.1d639835339f5p-165},
    {-0x1.822efb9415a29p-2, 0x1.a24274ce38136p-56, -0x1.741037d8cdc54p-110, 0x1.cc1a99cfa4e42p-164},
    {0x1.046bea5d76891p-2, -0x1.8b31c7eca5d04p-56, -0x1.bec66e29c67cbp-113, 0x1.9cfa4e422fc5ep-168},
    {0x1.f52ebb4484e9ap-1, -0x1.c7eca5d040df6p-56, -0x1.9b8a719f2b318p-111, -0x1.6c6f740e8840ep-166},
    {-0x1.44bb7b16638fep-1, 0x1.ad17df904e647p-55, 0x1.639835339f49dp-109, -0x1.ee81d1081b5f1p-163},
    {0x1.09d338e04d68cp-2, -0x1.037d8cdc538dp-58, 0x1.a99cfa4e422fcp-112, 0x1.77bf250763ff1p-166},
    {0x1.9c7026b45f7e4p-1, 0x1.3991d63983534p-57, -0x1.82d8dee81d108p-111, -0x1.b5f13801da001p-167},
    {0x1.35a2fbf209cc9p-4, -0x1.4e33e566305b2p-60, 0x1.08bf177bf2507p-114, 0x1.8ffc4bffef02dp-168},
    {0x1.7df904e64758ep-3, 0x1.835339f49c846p-57, -0x1.d1081b5f13802p-115, 0x1.2fffbc0b301fep-170},
    {-0x1.bec66e29c67cbp-1, 0x1.9cfa4e422fc5ep-56, -0x1.036be27003b4p-112, -0x1.0fd33f8086877p-172},
    {0x1.91d639835339fp-1, 0x1.272117e2ef7e5p-55, -0x1.7c4e007680022p-109, 0x1.6603fbcbc462dp-167},
    {-0x1.c67cacc60b638p-1, 0x1.17e2ef7e4a0ecp-55, 0x1.ff897ffde0598p-109, 0x1.fde5e2316b415p-166},
    {-0x1.598c16c6f740fp-2, 0x1.defc941d8ffc5p-56, -0x1.00043f4cfe022p-110, 0x1.788c5ad05369p-164},
    {0x1.f49c845f8bbep-1, -0x1.b5f13801da001p-55, 0x1.e05980fef2f12p-109, -0x1.d297d64b824b2p-163},
    {0x1.08bf177bf2507p-2, 0x1.8ffc4bffef02dp-56, -0x1.fc04343b9d298p-111, 0x1.4da3eda6cfd9ep-166},
    {-0x1.d1081b5f13802p-3, 0x1.2fffbc0b301fep-58, -0x1.a1dce94beb25cp-114, -0x1.25930261b069fp-170},
    {0x1.f9283b1ff898p-1, -0x1.0fd33f8086877p-60, -0x1.d297d64b824b2p-115, -0x1.8130d834f648bp-169},
    {0x1.d8ffc4bffef03p-4, -0x1.9fc04343b9d29p-59, -0x1.f592e092c9813p-113, -0x1.b069ec9161738p-170},
    {-0x1.da00087e99fcp-7, -0x1.0d0ee74a5f593p-61, 0x1.f6d367ecf27cbp-117, 0x1.36e9e8c7ecd3dp-174},
    {-0x1.0fd33f8086877p-12, -0x1.d297d64b824b2p-67, -0x1.8130d834f648bp-121, -0x1.738132c3402bap-178},
    {-0x1.fa67f010d0ee7p-1, -0x1.297d64b824b26p-55, -0x1.30d834f648b0cp-113, 0x1.8fd9a797fa8b6p-167},
    {0x1.fde5e2316b415p-6, -0x1.2e092c98130d8p-61, -0x1.a7b24585ce04dp-116, 0x1.3cbfd45aea4f7p-170},
    {-0x1.a1dce94beb25cp-2, -0x1.25930261b069fp-58, 0x1.b74f463f669e6p-113, -0x1.5d28ad8453814p-173},
    {0x1.8b5a0a6d1f6d3p-1, 0x1.9fb3c9f2c26ddp-55, 0x1.e8c7ecd3cbfd4p-110, 0x1.6ba93dd63f5f3p-164},
    {-0x1.f592e092c9813p-1, -0x1.b069ec9161738p-58, -0x1.32c3402ba515bp-114, -0x1.14e050683a131p-171},
    {0x1.1f6d367ecf27dp-1, -0x1.3d922c2e70266p-55, 0x1.e5fea2d7527bbp-109, -0x1.c0a0d0742617cp-164},
    {0x1.367ecf27cb09bp-1, 0x1.d3d18fd9a798p-55, -0x1.5d28ad8453814p-109, -0x1.a0e84c2f8c608p-165},
    {-0x1.30d834f648b0cp-1, 0x1.8fd9a797fa8b6p-55, -0x1.5b08a7028341dp-110, -0x1.30be31821d6b6p-167},
    {-0x1.a7b24585ce04dp-4, 0x1.3cbfd45aea4f7p-58, 0x1.63f5f2f8bd9e8p-112, 0x1.ce7de294a4baap-167},
    {0x1.b74f463f669e6p-1, -0x1.5d28ad8453814p-61, -0x1.a0e84c2f8c608p-117, -0x1.d6b5b45650128p-171},
    {-0x1.738132c3402bap-2, -0x1.456c229c0a0dp-56, -0x1.d0985f18c10ebp-110, -0x1.6b68aca025027p-164},
    {-0x1.32c3402ba515bp-2, -0x1.14e050683a131p-59, 0x1.0739f78a5292fp-113, -0x1.65012813b81cbp-167},
    {-0x1.a015d28ad8454p-1, 0x1.faf97c5ecf41dp-55, -0x1.821d6b5b4565p-111, -0x1.2813b81ca8bdfp-167},
    {-0x1.d28ad84538142p-1, 0x1.7c5ecf41ce7dep-55, 0x1.4a525d4d7f6bfp-110, 0x1.88fc6ae842b02p-164},
    {0x1.27bac7ebe5f18p-1, -0x1.30be31821d6b6p-55, 0x1.2ea6bfb5fb12p-109, -0x1.ca8bdea7f33eep-163},
};
// The same for singles: 2^(16 i + first_exponent - 23) / pi mod 2, products with 24 bits being exact.
constexpr double single_inverse_pi_0[] = {0x1.45f306ep-13, 0x1.7cc1b72p-3, 0x1.b72722p-3, 0x1.c882a54p-1, -0x1.5ac07b2p-1, -0x1.ec5417p-3, -0x1.05c1596p-1, -0x1.596447ep-1};
constexpr double single_inverse_pi_1[] = {-0x1.b1bbeadp-44, 0x1.c882a54p-33, 0x1.529fc27p-32, -0x1.ec5417p-35, 0x1.5f47d4dp-30, -0x1.596447ep-33, -0x1.11f924fp-31, -0x1.24eb533p-31};
constexpr double single_inverse_pi_2[] = {-0x1.80f62a0b82b2dp-74, -0x1.ec54170565912p-67, 0x1.5f47d4d377037p-62, -0x1.596447e493ad5p-65, 0x1.bb81b6c52b328p-61, -0x1.24eb53361de38p-63, 0x1.2b3278872084p-61, -0x1.8778df7c035d4p-61};

}  // namespace tmk::trigonometric_data
