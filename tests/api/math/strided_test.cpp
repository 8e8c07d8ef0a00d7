// SPDX-License-Identifier: Apache-2.0
// Arrays whose elements do not follow one another, and single values: the same results and reports as of
// plain arrays, wherever the elements lie.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <tmk/math.hpp>
#include <vector>

namespace tmk {
namespace {

template <class T>
std::vector<T> sample(std::size_t n, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> uniform(0.25, 3);
  std::vector<T> x(n);
  for (T& v : x) {
    if constexpr (std::is_floating_point_v<T>)
      v = static_cast<T>(uniform(random));
    else
      v = T(static_cast<typename T::value_type>(uniform(random)),
            static_cast<typename T::value_type>(uniform(random)));
  }
  return x;
}

template <class T>
bool same_bits(const std::vector<T>& x, const std::vector<T>& y) {
  return x.size() == y.size() && (x.empty() || std::memcmp(x.data(), y.data(), x.size() * sizeof(T)) == 0);
}

// More than a stage holds, and no multiple of anything.
constexpr std::size_t length = 5003;

template <class T, class Function>
void expect_values_like_arrays(const char* name, Function f) {
  const auto x = sample<T>(length, 1);
  const T value = sample<T>(1, 2)[0];
  const std::vector<T> filled(length, value);
  std::vector<T> want(length), got(length);
  f(x, filled, want);
  f(x, value, got);
  EXPECT_TRUE(same_bits(got, want)) << name;
  f(filled, x, want);
  f(value, x, got);
  EXPECT_TRUE(same_bits(got, want)) << name;
  got = x;
  f(value, got, got);
  EXPECT_TRUE(same_bits(got, want)) << name << " in place";
}

TEST(one_value, is_like_an_array_of_it) {
  expect_values_like_arrays<double>("sub", sub);
  expect_values_like_arrays<float>("div", div);
  expect_values_like_arrays<float>("fmax", fmax);
  expect_values_like_arrays<double>("pow", pow);
  expect_values_like_arrays<std::complex<double>>("mul", mul);
  std::vector<float> x{1, -2, 3}, y(3);
  fmax(x, 0, y);  // a value of another type converts
  EXPECT_EQ(y, (std::vector<float>{1, 0, 3}));
}

TEST(one_value, of_bad_elements_is_told) {
  auto x = sample<double>(length, 3);
  x[17] = x[length - 1] = 0;
  std::vector<double> y(length);
  error_scope scope([](math_error& e) {
    EXPECT_EQ(e.a1, 2.0);
    e.result = static_cast<double>(e.index);
  });
  div(2.0, x, y);
  EXPECT_EQ(y[17], 17);
  EXPECT_EQ(y[length - 1], length - 1.0);
}

// The elements of a matrix, spread with gaps.
struct spread {
  std::vector<double> memory;
  matrix_view<double> view;
};
spread spread_out(std::size_t rows, std::size_t cols, std::ptrdiff_t row, std::ptrdiff_t col) {
  spread s{std::vector<double>(40000, -7), {nullptr, 0, 0}};
  s.view = matrix_view<double>(s.memory.data() + 20000, rows, cols, row, col);
  return s;
}

TEST(strided, views_are_taken_row_by_row) {
  const struct {
    std::size_t rows, cols;
    std::ptrdiff_t row, col;
  } shapes[] = {{37, 21, 30, 1}, {37, 21, 1, 40}, {37, 21, -30, 1}, {21, 37, 3, -100},
                {1, 900, 0, 5},  {900, 1, 7, 0},  {0, 21, 30, 1},   {1, 1, 0, 0}};
  for (const auto& s : shapes)
    for (const int threads : {1, 3}) {
      const parallel_scope parts(threads);
      const auto a = sample<double>(s.rows * s.cols, 4), b = sample<double>(a.size(), 5);
      auto x = spread_out(s.rows, s.cols, s.row, s.col);
      for (std::size_t i = 0; i < a.size(); ++i) x.view(i / s.cols, i % s.cols) = a[i];
      const matrix_view<const double> second(b.data(), s.rows, s.cols);
      std::vector<double> plain(a.size()), want(a.size());
      pow(a, b, want);
      pow(x.view, second, matrix_view<double>(plain.data(), s.rows, s.cols));
      EXPECT_TRUE(same_bits(plain, want)) << s.rows << " x " << s.cols;
      pow(x.view, second, x.view);
      std::size_t outside = x.memory.size();
      for (const double v : x.memory) outside -= v != -7;
      EXPECT_EQ(outside, x.memory.size() - a.size());
      for (std::size_t i = 0; i < a.size(); ++i) EXPECT_EQ(x.view(i / s.cols, i % s.cols), want[i]);
    }
}

TEST(strided, parts_of_complex_numbers) {
  std::vector<std::complex<float>> z(length);
  const auto a = sample<float>(length, 6);
  for (std::size_t i = 0; i < length; ++i) z[i] = {a[i], 0};
  std::vector<float> want(length), cosine(length);
  ln(a, want);
  ln(real_parts(z), imaginary_parts(z));  // among one another, but apart
  for (std::size_t i = 0; i < length; ++i) ASSERT_EQ(z[i], std::complex<float>(a[i], want[i])) << i;
  sin_cos(a, want, cosine);
  sin_cos(real_parts(z), imaginary_parts(z), real_parts(z));
  EXPECT_EQ(z[77], std::complex<float>(cosine[77], want[77]));
}

TEST(strided, repairs_reach_the_element) {
  std::vector<std::complex<double>> z(length, {2, 9});
  z[4999] = {0, 9};
  error_scope scope([](math_error& e) {
    EXPECT_EQ(e.index, 4999);
    EXPECT_EQ(e.a1, 0.0);
    e.result = 123;
  });
  inv(real_parts(z), real_parts(z));
  EXPECT_EQ(z[4999], std::complex<double>(123, 9));
  EXPECT_EQ(z[4998], std::complex<double>(0.5, 9));
}

}  // namespace
}  // namespace tmk
