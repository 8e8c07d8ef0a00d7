// Made by tools/tables/vector/roots/cube_roots.sollya.
#pragma once

namespace tmk::cube_root_data {

// x^(-1/3) is within a few percent where the bits of x, divided by -3, are added to this;
// 1 - x t^3 is from -0.10208117961883544921875 to 0.10198032855987548828125.
constexpr float single_estimate = 0x1.5287dap30f;
constexpr unsigned long long double_estimate = 6142603646958695350;

// In one step: LA and EP in single, EP in double. By the number of thirds.

// Relative error 2^-26.8.
constexpr float single_la_1[] = {
    0x1.555556p-2f,
    0x1.c71a6ep-3f,
    0x1.61f464p-3f,
    0x1.29fadp-3f,
    0x1.039e44p-3f,
};

// Relative error 2^-24.9.
constexpr float single_la_2[] = {
    0x1.555556p-1f,
    0x1.1c6ff6p-1f,
    0x1.f9a598p-2f,
    0x1.d4f11ap-2f,
    0x1.b79f3ep-2f,
};

// Relative error 2^-13.3.
constexpr float single_ep_1[] = {
    0x1.5643e8p-2f,
    0x1.ca398ep-3f,
};

// Relative error 2^-11.8.
constexpr float single_ep_2[] = {
    0x1.56aa8p-1f,
    0x1.1ee4dp-1f,
};

// Relative error 2^-26.8.
constexpr double double_ep_1[] = {
    0x1.555555d34b34ap-2,
    0x1.c71a6d49f5238p-3,
    0x1.61f4ea83e5a27p-3,
    0x1.29fb21b41ac9p-3,
    0x1.0375f99c35443p-3,
};

// The first of two steps.

// Relative error 2^-13.3.
constexpr float single_first[] = {
    0x1.5643e8p-2f,
    0x1.ca398ep-3f,
};

// Relative error 2^-17.9.
constexpr double double_first[] = {
    0x1.55546cce0ee0bp-2,
    0x1.c9717a07e4fe3p-3,
    0x1.655a406b48ad6p-3,
};

// The second, after an estimate cut to 8 bits of single and 17 of double, or on the baseline 6 and 13;
// LA in double cuts nothing.

// Relative error 2^-29.
constexpr float single_second_1[] = {
    0x1.555558p-2f,
    0x1.c7045cp-3f,
    0x1.6cd2a6p-3f,
};

// Relative error 2^-33.3.
constexpr float single_second_2[] = {
    0x1.555556p-1f,
    0x1.1c7126p-1f,
    0x1.f9dbf2p-2f,
    0x1.d99b84p-2f,
};

// Relative error 2^-32.5.
constexpr float single_baseline_second_1[] = {
    0x1.555556p-2f,
    0x1.c71b44p-3f,
    0x1.6241bap-3f,
    0x1.202d14p-3f,
    0x1.44d29cp-3f,
};

// Relative error 2^-30.4.
constexpr float single_baseline_second_2[] = {
    0x1.555556p-1f,
    0x1.1c70fep-1f,
    0x1.fa1bd8p-2f,
    0x1.c44b86p-2f,
    0x1.147bb2p-1f,
};

// Relative error 2^-62.5.
constexpr double double_second_1[] = {
    0x1.555555555552dp-2,
    0x1.c71c71c4dbf21p-3,
    0x1.61ff08720337ap-3,
};

// Relative error 2^-60.9.
constexpr double double_second_2[] = {
    0x1.5555555555515p-1,
    0x1.1c71c71aabe56p-1,
    0x1.f9b6407df7903p-2,
};

// Relative error 2^-61.5.
constexpr double double_baseline_second_1[] = {
    0x1.5555555555553p-2,
    0x1.c71c71c7873bcp-3,
    0x1.61f9a217e765cp-3,
    0x1.275db8c6ce703p-3,
};

// Relative error 2^-59.8.
constexpr double double_baseline_second_2[] = {
    0x1.5555555555551p-1,
    0x1.1c71c71ccd04fp-1,
    0x1.f9adbfd42487ep-2,
    0x1.d031b903053b7p-2,
};

// Relative error 2^-68.2.
constexpr double double_la_second_1[] = {
    0x1.5555555555555p-2,
    0x1.c71c71c82633dp-3,
    0x1.61f9b9abc505ap-3,
};

// Relative error 2^-66.6.
constexpr double double_la_second_2[] = {
    0x1.5555555555555p-1,
    0x1.1c71c71d42967p-1,
    0x1.f9addf9991659p-2,
};

}  // namespace tmk::cube_root_data
