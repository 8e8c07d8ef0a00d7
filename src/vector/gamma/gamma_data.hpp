// Made by tools/tables/vector/gamma/gamma.sollya.
#pragma once

namespace tmk::gamma_data {

// To a double's last place and beyond.
constexpr double half_log_two_pi_high = 0x1.d67f1c864beb5p-1;
constexpr double half_log_two_pi_low = -0x1.65b5a1b7ff5dfp-55;
constexpr double twelfth_high = 0x1.5555555555555p-4;
constexpr double twelfth_low = 0x1.5555555555555p-58;
// Error 2^-61.5.
constexpr double stirling_ha[] = {
    -0x1.6c16c16c16ab2p-9,
    0x1.a01a0199bdbdfp-11,
    -0x1.38136e60a079p-11,
    0x1.b93d61b27a65dp-11,
    -0x1.f1925788c5303p-10,
    0x1.57403d6c70d9dp-8,
};
// Error 2^-76.1.
constexpr double sine_ha_first_high = -0x1.a51a6625307d3p0;
constexpr double sine_ha_first_low = -0x1.187416b8d6a6ep-55;
constexpr double sine_ha_second_high = 0x1.9f9cb402bc46cp-1;
constexpr double sine_ha_second_low = 0x1.48f2d17652761p-55;
constexpr double sine_ha[] = {
    -0x1.86a8e4720db67p-3,
    0x1.ac6805cf350d2p-6,
    -0x1.33816aa461f4ap-9,
    0x1.374719fb91b23p-13,
    -0x1.d424995d46135p-18,
    0x1.0fc9a4d0e7dc7p-22,
    -0x1.f5f393355ef0ap-28,
    0x1.73d44275f3caep-33,
};

// Next to 1 and 2, up to 1/16.
constexpr double one_ha_slope_high = -0x1.2788cfc6fb619p-1;
constexpr double one_ha_slope_low = 0x1.6cb90701fbfabp-58;
// Error 2^-58.6.
constexpr double one_ha[] = {
    0x1.a51a6625307d3p-1,
    -0x1.9a4d55beab2d7p-2,
    0x1.151322ac7dff4p-2,
    -0x1.a8b9c17aa6089p-3,
    0x1.5b40cb086011dp-3,
    -0x1.2703a1dcf7087p-3,
    0x1.010b50fe4e9e3p-3,
    -0x1.c806715243d9dp-4,
    0x1.99aa315b3f7cp-4,
    -0x1.748966994a499p-4,
    0x1.9b92311d9d946p-4,
    -0x1.3e12d597f6c7fp-4,
    -0x1.46fb111d98f54p0,
};
constexpr double two_ha_slope_high = 0x1.b0ee6072093cep-2;
constexpr double two_ha_slope_low = 0x1.6cb90701fbfabp-58;
// Error 2^-58.6.
constexpr double two_ha[] = {
    0x1.4a34cc4a60fa6p-2,
    -0x1.13e001a557607p-4,
    0x1.51322ac7dff37p-6,
    -0x1.e404fc21886f3p-8,
    0x1.7add6cc2e5406p-9,
    -0x1.38ac5caad22d3p-10,
    0x1.0b50fae3ade6dp-11,
    -0x1.d3f55eea1c018p-13,
    0x1.0a3a6c516080bp-16,
    -0x1.95b25f2eab685p-15,
    0x1.18d183b0a437p-6,
    0x1.2e50e938e8aafp-12,
    -0x1.593652c505f68p0,
};

// To 2^-30 and beyond, with logarithms to the base 2.
constexpr double log2_e = 0x1.71547652b82fep0;
constexpr double ln2 = 0x1.62e42fefa39efp-1;
constexpr double half_log2_two_pi = 0x1.536439a4c6efcp0;
// Error 2^-36.2.
constexpr double stirling_short[] = {
    0x1.ec709dbce31dbp-4,
    -0x1.06a08d9c1008fp-8,
    0x1.27036470853bap-10,
};
// Error 2^-41.6.
constexpr double sine_short[] = {
    -0x1.a51a66252f8cp0,
    0x1.9f9cb400a6fb8p-1,
    -0x1.86a8e2f1c5439p-3,
    0x1.ac673a7db226ap-6,
    -0x1.3350a182de438p-9,
    0x1.2c70816ac70dcp-13,
};

// Next to 1 and 2, up to 1/16.
constexpr double one_short_slope = -0x1.2788cfc6fb619p-1;
// Error 2^-39.9.
constexpr double one_short[] = {
    0x1.a51a66252fae8p-1,
    -0x1.9a4d55cb371bdp-2,
    0x1.151322d4d661cp-2,
    -0x1.a8b8f8df12285p-3,
    0x1.5b3f7baa832f9p-3,
    -0x1.28944c5480562p-3,
    0x1.02dad18357752p-3,
};
constexpr double two_short_slope = 0x1.b0ee6072093cep-2;
// Error 2^-48.9.
constexpr double two_short[] = {
    0x1.4a34cc4a60fap-2,
    -0x1.13e001a571024p-4,
    0x1.51322ac8797b7p-6,
    -0x1.e404ef51341ddp-8,
    0x1.7add59968dd92p-9,
    -0x1.3912d621bcccap-10,
    0x1.0babdd1203caap-11,
};

}  // namespace tmk::gamma_data
