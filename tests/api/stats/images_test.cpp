// SPDX-License-Identifier: Apache-2.0
// Images of moments: they come back, and damaged or impossible ones are refused.
#include <gtest/gtest.h>

#include "api/stats/samples.hpp"

namespace tmk {
namespace {

TEST(stats, images_come_back_and_damaged_ones_are_refused) {
  const std::vector<double> x = gaussian_values(600, 10);
  for (const bool cross_product : {false, true})
    for (const nan_policy policy : {nan_policy::propagate, nan_policy::omit, nan_policy::raise}) {
      moments m(3, {cross_product, policy});
      EXPECT_EQ(moments::from_bytes(m.to_bytes()).to_bytes(), m.to_bytes());
      m.add(matrix_view<const double>(x.data(), 200, 3));
      moments same = moments::from_bytes(m.to_bytes());
      EXPECT_EQ(same.to_bytes(), m.to_bytes());
      same.merge(m);
      EXPECT_EQ(same.count()[0], 400);
    }
  moments m(3);
  m.add(matrix_view<const double>(x.data(), 200, 3));
  const auto image = m.to_bytes();
  EXPECT_EQ(std::to_integer<int>(image[8]), 2);  // version
  for (std::size_t k = 0; k < image.size(); ++k) {
    auto bad = image;
    bad[k] ^= std::byte{static_cast<unsigned char>(1u << k % 8)};
    EXPECT_THROW((void)moments::from_bytes(bad), error) << k;
    EXPECT_THROW((void)moments::from_bytes(std::span(image).first(k)), error) << k;
  }
  auto longer = image;
  longer.push_back(std::byte{0});
  EXPECT_THROW((void)moments::from_bytes(longer), error);
}

// With the hash made good again, the content itself is looked at.
TEST(stats, impossible_images_are_refused) {
  moments m(2);
  m.add(matrix_view<const double>(gaussian_values(40, 11).data(), 20, 2));
  struct row {
    std::size_t place;
    std::uint64_t word;
  };
  constexpr std::uint64_t minus_one = 0xbff0000000000000, not_a_number = 0x7ff8000000000000;
  const row rows[] = {
      {16, 0},                       // no columns
      {16, std::uint64_t{1} << 62},  // more columns than memory
      {24, ~std::uint64_t{0}},       // a count of -1
      {32, not_a_number},            // a weight
      {32, minus_one},
      {24, (std::uint64_t{1} << 53) + 1},  // a count whose sums would overflow
      {40, 0x7fe0000000000000},            // a mean weight above the sum
      {40, 0x3fe0000000000000},            // or below the sum over the count
      {64, minus_one},                     // a sum of squares
      {88, 0x7fe0000000000000},            // a minimum above the maximum
      {184, 21},                           // more complete rows than values
      {240, minus_one},                    // a diagonal
  };
  for (const row& r : rows) {
    auto image = m.to_bytes();
    put_word(image, r.place, r.word);
    mend_hash(image);
    EXPECT_THROW((void)moments::from_bytes(image), error) << r.place;
  }
}

}  // namespace
}  // namespace tmk
